#include "monitoring/WindowWatch.h"

#include <optional>
#include <unordered_set>
#include <utility>

#include "runtime/ErrorsIgnored.h"
#include "runtime/FirstFailure.h"
#include "runtime/Flagged.h"

namespace kestrelguard {

/// What one connection to the shell tells, passed on to the watch that has the connection.
class WindowWatch::Ear final : public ShellListener {
 public:
    explicit Ear(WindowWatch& watch) : m_watch(watch.weak_from_this()) {}

    void PassTo(WindowWatch& watch) noexcept { m_watch = watch.weak_from_this(); }
    void Deafen() noexcept { m_watch.reset(); }

    /// The other connection has told of a revocation that this one may tell again.
    void ExpectRepetition() noexcept { ++m_repetitions; }
    bool TakeRepetition() noexcept { return m_repetitions > 0 && m_repetitions-- > 0; }

    void WindowRegistered() override {
        if (const auto watch = m_watch.lock()) {
            watch->HearRegistered();
        }
    }
    void WindowRevoked() override {
        if (const auto watch = m_watch.lock()) {
            watch->HearRevoked(*this);
        }
    }

 private:
    std::weak_ptr<WindowWatch> m_watch;
    std::uint32_t m_repetitions = 0;
};

void WindowWatch::Heard::Add(const Heard& other) noexcept {
    registered += other.registered;
    revoked += other.revoked;
    perhapsRepeated += other.perhapsRepeated;
    loadAgain = loadAgain || other.loadAgain;
}

void WindowWatch::Succeed(WindowWatch& predecessor) noexcept {
    m_shell = std::exchange(predecessor.m_shell, Shell());
    if (m_shell.ear) {
        m_shell.ear->PassTo(*this);
    }
    m_heard.Add(predecessor.m_heard);
    m_heard.Add(predecessor.m_inWork);
    m_changes = std::exchange(predecessor.m_changes, WindowChanges());
    predecessor.Close();
}

void WindowWatch::FirstLook() {
    const auto self = shared_from_this();
    const Flagged busy(m_busy);
    ReadHandles handles;
    Rebuild(handles);
}

void WindowWatch::TellTo(WindowNews& news) noexcept {
    if (!m_closed) {
        m_news = &news;
    }
}

void WindowWatch::Fill(WindowList& list) noexcept {
    if (!m_closed) {
        m_list = &list;
    }
}

void WindowWatch::Close() noexcept {
    const auto self = shared_from_this();
    m_closed = true;
    m_news = nullptr;
    m_list = nullptr;
    m_sinks.Release();
    Park();
    for (const auto& window : m_changes.Known()) {
        if (!window->Answers()) {
            m_desktop->Park(window, nullptr);
        }
    }
    Shell shell = std::exchange(m_shell, Shell());
    LetGo(shell);
    // What these hold is let go with everything settled.
    const WindowChanges changes = std::exchange(m_changes, WindowChanges());
    const Windows listed = std::move(m_listed);
}

void WindowWatch::LetGo(Shell& shell) noexcept {
    // The end of the connection lets other calls in: by then nobody listens to it.
    if (shell.ear) {
        shell.ear->Deafen();
    }
    shell.connection.reset();
}

void WindowWatch::Park() noexcept {
    for (const KeyedSinks::Sink& sink : m_sinks.TakeResting()) {
        m_desktop->Park(sink.window, sink.listening);
    }
}

void WindowWatch::LoadBrowsers() {
    if (m_busy) {
        m_heard.loadAgain = true;
        return;
    }
    const auto self = shared_from_this();
    m_started = true;
    AllSteps(
        [this] {
            const Flagged busy(m_busy);
            ReadHandles handles;
            Rebuild(handles);
        },
        [this] { WorkOff(); });
}

void WindowWatch::Rebuild(ReadHandles& handles) {
    m_sinks.Release();
    if (!m_closed) {
        ConnectShell();
    }
    const auto shell = m_shell.connection;
    if (!m_closed && m_list != nullptr) {
        const Windows listed = std::exchange(m_listed, Windows());
        m_list->Clear();
    }
    if (m_closed) {
        return;
    }
    WatchWindows(*shell, handles);
    if (m_closed) {
        return;
    }
    if (m_wholeWalk) {
        // Those left over are not listed any more.
        Park();
    }
    if (m_list != nullptr) {
        m_changes.Note(m_listed, m_wholeWalk);
    }
}

void WindowWatch::ConnectShell() {
    Shell fresh{std::make_shared<Ear>(*this), nullptr};
    m_connecting = fresh.ear;
    try {
        fresh.connection = m_desktop->ConnectShell(fresh.ear);
    } catch (...) {
        // The old one goes on listening.
        fresh.ear->Deafen();
        m_connecting = nullptr;
        throw;
    }
    m_connecting = nullptr;
    if (!m_closed) {
        // The old connection has listened until this one stood: no announcement fell between the two.
        std::swap(m_shell, fresh);
    }
    LetGo(fresh);
}

void WindowWatch::WatchWindows(ShellConnection& shell, ReadHandles& handles) {
    const auto walk = shell.Walk();
    bool errorsIgnored = false;
    const auto step = [&errorsIgnored](auto&& action) {
        if (errorsIgnored) {
            return ErrorOf(action) == 0;
        }
        action();
        return true;
    };
    for (;;) {
        bool more = false;
        if (!m_closed) {
            m_wholeWalk = step([&] { more = walk->Next(); });
        }
        if (!more || m_closed) {
            return;
        }
        if (const DesktopWindowPtr known = KnownAs(walk->Identity()); known && !known->Answers()) {
            errorsIgnored = Keep(known) || errorsIgnored;
            continue;
        } else if (!known && !walk->Answers()) {
            m_desktop->RemindLater(m_shell.ear);
            continue;
        }
        DesktopWindowPtr window;
        if (!step([&] { window = walk->Window(); })) {
            continue;
        }
        std::shared_ptr<WindowSink> sink;
        if (!m_closed) {
            step([&] { sink = m_desktop->Listen(window); });
        }
        if (m_closed || !sink) {
            // Kept: a window that cannot be connected to ends the walk; those after it wait for the next one.
            m_wholeWalk = false;
            return;
        }
        std::wstring key;
        const bool keyBuilt = step([&] { key = m_sinks.KeyOf(handles.Of(window)); });
        if (m_closed) {
            return;
        }
        // From the first key on, what fails is left out and the next step runs.
        errorsIgnored = true;
        ErrorsIgnored(
            [&] {
                if (keyBuilt) {
                    m_sinks.Add({key, window, std::move(sink), handles.Of(window)});
                }
            },
            [&] { List(window); });
    }
}

void WindowWatch::List(const DesktopWindowPtr& window) {
    if (m_list != nullptr) {
        m_list->Add(window);
        m_listed.push_back(window);
    }
}

DesktopWindowPtr WindowWatch::KnownAs(const void* identity) const {
    const DesktopWindowPtr watched = m_sinks.WindowOf(identity);
    return watched ? watched : m_changes.WindowOf(identity);
}

bool WindowWatch::Keep(const DesktopWindowPtr& window) {
    const bool hasKey = m_sinks.Rests(window);
    ErrorsIgnored(
        [&] {
            if (hasKey) {
                m_sinks.Wake(window);
            }
        },
        [&] { List(window); });
    return hasKey;
}

DesktopWindowPtr WindowWatch::GetNewBrowser(ReadHandles& handles) {
    const auto shell = m_shell.connection;
    const std::vector<KeyedSinks::Sink> watched = m_sinks.All();
    // The scan of the sinks ends at one whose handle cannot be read, the same for every window.
    std::optional<std::unordered_set<std::int32_t>> watchedHandles;
    const auto readWatched = [&] {
        watchedHandles.emplace();
        for (const KeyedSinks::Sink& sink : watched) {
            const auto read = [&] {
                watchedHandles->insert(sink.window->Answers() ? handles.Of(sink.window) : sink.handle);
            };
            if (m_closed || ErrorOf(read) != 0) {
                return;
            }
        }
    };

    const auto walk = shell->Walk();
    while (!m_closed && walk->Next() && !m_closed) {
        const DesktopWindowPtr known = KnownAs(walk->Identity());
        if (known ? !known->Answers() : !walk->Answers()) {
            // Whether it is new shows when it answers.
            if (!known) {
                m_desktop->RemindLater(m_shell.ear);
            }
            continue;
        }
        DesktopWindowPtr window;
        if (ErrorOf([&] { window = walk->Window(); }) != 0) {
            // Not a browser: nothing that could be watched.
            continue;
        }
        if (m_closed || !window || watched.empty()) {
            return window;
        }
        if (!watchedHandles) {
            readWatched();
        }
        bool found = false;
        ErrorsIgnored([&] { found = watchedHandles->contains(handles.Of(window)); });
        if (!found) {
            return window;
        }
    }
    return nullptr;
}

void WindowWatch::HearRegistered() {
    ++m_heard.registered;
    WorkOff();
}

void WindowWatch::HearRevoked(Ear& ear) {
    ++m_heard.revoked;
    if (ear.TakeRepetition()) {
        ++m_heard.perhapsRepeated;
    } else if (m_connecting && m_shell.ear) {
        (&ear == m_connecting.get() ? m_shell.ear : m_connecting)->ExpectRepetition();
    }
    WorkOff();
}

void WindowWatch::WorkOff() {
    if (m_busy || !m_started) {
        return;
    }
    FirstFailure failure;
    while (!m_closed && m_heard.Anything()) {
        failure.Try([this] { WorkOffOnce(); });
        // Left over only after a failure: who went then is told after the next rebuild that succeeds.
        m_changes.Owe(std::exchange(m_inWork, Heard()).revoked);
    }
    failure.Try([this] { TellDue(); });
    failure.Rethrow();
}

void WindowWatch::WorkOffOnce() {
    m_inWork = std::exchange(m_heard, Heard());
    {
        const Flagged busy(m_busy);
        ReadHandles handles;
        DesktopWindowPtr found;
        if (m_inWork.registered > 0) {
            found = GetNewBrowser(handles);
        }
        const bool wasKnown = m_changes.Knows(found);
        if (!m_closed && (found || m_inWork.revoked > 0 || m_inWork.loadAgain)) {
            Rebuild(handles);
        }
        if (m_closed) {
            return;
        }
        const Heard done = std::exchange(m_inWork, Heard());
        if (done.registered > 0 || done.revoked > 0) {
            m_changes.MakeDue({done.revoked, done.perhapsRepeated, found, wasKnown});
        }
    }
    TellDue();
}

void WindowWatch::TellDue() {
    FirstFailure failure;
    while (m_news != nullptr && m_changes.AnythingDue()) {
        failure.Try([this] { m_changes.TellNext(*m_news); });
    }
    failure.Rethrow();
}

}  // namespace kestrelguard
