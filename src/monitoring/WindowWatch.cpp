#include "monitoring/WindowWatch.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "runtime/ErrorsIgnored.h"
#include "runtime/FirstFailure.h"
#include "runtime/Flagged.h"
#include "runtime/Numbers.h"

namespace kestrelguard {

namespace {

/// The counter after this one; the empty one counts as 0.
std::wstring Advanced(const std::wstring& counter) {
    return Decimal(CheckedAdd(RoundToInteger(LeadingNumber(counter)), 1));
}

/// Whether a window is this one.
auto Same(const DesktopWindowPtr& one) {
    return
        [identity = one->Identity()](const DesktopWindowPtr& other) { return other->Identity() == identity; };
}

}  // namespace

/// Handles that were read for one announcement: no window is asked twice for the same one.
class WindowWatch::ReadHandles {
 public:
    /// Throws RunTimeError when the window has to be asked and fails.
    std::int32_t Of(const DesktopWindowPtr& window) {
        const auto found = m_handles.find(window->Identity());
        if (found != m_handles.end()) {
            return found->second.handle;
        }
        const std::int32_t handle = window->Handle();
        m_handles.insert_or_assign(window->Identity(), Known{window, handle});
        return handle;
    }

 private:
    struct Known {
        DesktopWindowPtr keptAlive;
        std::int32_t handle;
    };

    std::unordered_map<const void*, Known> m_handles;
};

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
    m_known = std::exchange(predecessor.m_known, std::nullopt);
    m_came = std::move(predecessor.m_came);
    m_went = predecessor.m_went;
    m_owed = predecessor.m_owed;
    m_createdDue = std::move(predecessor.m_createdDue);
    m_destroyedDue = predecessor.m_destroyedDue;
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
    ReleaseSinks();
    Park();
    if (m_known) {
        for (const auto& window : *m_known) {
            if (!window->Answers()) {
                m_desktop->Park(window, nullptr);
            }
        }
    }
    Shell shell = std::exchange(m_shell, Shell());
    LetGo(shell);
    // Each of these is let go with everything settled.
    const auto known = std::exchange(m_known, std::nullopt);
    const Windows listed = std::move(m_listed);
    const Windows came = std::move(m_came);
    const auto due = std::move(m_createdDue);
}

void WindowWatch::LetGo(Shell& shell) noexcept {
    // The end of the connection lets other calls in: by then nobody listens to it.
    if (shell.ear) {
        shell.ear->Deafen();
    }
    shell.connection.reset();
}

void WindowWatch::ReleaseSinks() noexcept {
    // Each sink's end lets other calls in: they find the collection empty.
    const Sinks sinks = std::exchange(m_colBrowsers, Sinks());
    for (const Sink& sink : sinks) {
        if (!sink.window->Answers()) {
            m_resting.push_back(sink);
        }
    }
}

void WindowWatch::Park() noexcept {
    for (const Sink& sink : std::exchange(m_resting, {})) {
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
    ReleaseSinks();
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
        NoteChanges();
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
        const bool keyBuilt = step([&] { key = KeyOf(handles.Of(window)); });
        if (m_closed) {
            return;
        }
        // From the first key on, what fails is left out and the next step runs.
        errorsIgnored = true;
        ErrorsIgnored(
            [&] {
                if (keyBuilt) {
                    m_colBrowsers.Add(Sink{key, window, std::move(sink), handles.Of(window)}, key);
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
    for (const Sink& sink : m_resting) {
        if (sink.window->Identity() == identity) {
            return sink.window;
        }
    }
    for (const Sink& sink : m_colBrowsers) {
        if (sink.window->Identity() == identity) {
            return sink.window;
        }
    }
    if (m_known) {
        for (const auto& window : *m_known) {
            if (window->Identity() == identity) {
                return window;
            }
        }
    }
    return nullptr;
}

bool WindowWatch::Keep(const DesktopWindowPtr& window) {
    const auto resting = std::find_if(m_resting.begin(), m_resting.end(), [&](const Sink& sink) {
        return sink.window->Identity() == window->Identity();
    });
    const bool hasKey = resting != m_resting.end();
    ErrorsIgnored(
        [&] {
            if (hasKey) {
                Sink sink = std::move(*resting);
                m_resting.erase(resting);
                sink.key = KeyOf(sink.handle);
                m_colBrowsers.Add(sink, sink.key);
            }
        },
        [&] { List(window); });
    return hasKey;
}

std::wstring WindowWatch::KeyOf(std::int32_t handle) const {
    const std::wstring start = L"_" + Decimal(handle) + L"_";
    std::wstring counter;
    while (KeyExists(m_colBrowsers, start + counter)) {
        counter = Advanced(counter);
    }
    return start + counter;
}

bool WindowWatch::KeyExists(const Sinks& collection, const std::wstring& key) {
    return collection.Contains(key);
}

std::vector<std::wstring> WindowWatch::Keys() const {
    std::vector<std::wstring> keys;
    for (const Sink& sink : m_colBrowsers) {
        keys.push_back(sink.key);
    }
    return keys;
}

void WindowWatch::NoteChanges() {
    Windows known = m_listed;
    Identities now;
    for (const auto& window : m_listed) {
        now.insert(window->Identity());
    }
    if (m_known) {
        Identities before;
        for (const auto& window : *m_known) {
            before.insert(window->Identity());
            if (!m_wholeWalk && now.insert(window->Identity()).second) {
                // The walk did not get there: nobody knows whether it is still open.
                known.push_back(window);
            }
        }
        for (const auto& window : m_listed) {
            if (before.insert(window->Identity()).second) {
                m_came.push_back(window);
            }
        }
        m_went += static_cast<std::uint32_t>(
            std::count_if(before.begin(), before.end(), [&](const void* one) { return !now.contains(one); }));
        // Who came and went before anybody was told has never been there.
        m_went -= static_cast<std::uint32_t>(
            std::erase_if(m_came, [&](const auto& window) { return !now.contains(window->Identity()); }));
    }
    const auto old = std::exchange(m_known, std::move(known));
}

DesktopWindowPtr WindowWatch::GetNewBrowser(ReadHandles& handles) {
    const auto shell = m_shell.connection;
    std::vector<Sink> watched(m_colBrowsers.begin(), m_colBrowsers.end());
    // The scan of the sinks ends at one whose handle cannot be read, the same for every window.
    std::optional<std::unordered_set<std::int32_t>> watchedHandles;
    const auto readWatched = [&] {
        watchedHandles.emplace();
        for (const Sink& sink : watched) {
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
        m_owed += std::exchange(m_inWork, Heard()).revoked;
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
        const bool wasKnown = Knows(found);
        if (!m_closed && (found || m_inWork.revoked > 0 || m_inWork.loadAgain)) {
            Rebuild(handles);
        }
        if (m_closed) {
            return;
        }
        MakeDue(std::exchange(m_inWork, Heard()), found, wasKnown);
    }
    TellDue();
}

bool WindowWatch::Knows(const DesktopWindowPtr& window) const {
    return window && m_known && std::any_of(m_known->begin(), m_known->end(), Same(window));
}

void WindowWatch::MakeDue(const Heard& heard, const DesktopWindowPtr& found, bool wasKnown) {
    if (heard.registered == 0 && heard.revoked == 0) {
        return;
    }
    if (found) {
        std::erase_if(m_came, Same(found));
        m_createdDue.push_back(found);
        if (!wasKnown && !Knows(found)) {
            // It is told although it has gone again.
            ++m_went;
        }
    }
    const Windows came = std::exchange(m_came, Windows());
    m_createdDue.insert(m_createdDue.end(), came.begin(), came.end());
    // An announcement that may be a repetition, or an older one whose rebuild has failed, counts when a
    // window has gone of which nobody was told.
    const std::uint32_t announced = heard.revoked + std::exchange(m_owed, 0);
    const std::uint32_t destroyed =
        std::max(heard.revoked - heard.perhapsRepeated, std::min(announced, m_went));
    m_went -= std::min(m_went, destroyed);
    m_destroyedDue += destroyed;
}

void WindowWatch::TellDue() {
    FirstFailure failure;
    while (m_news != nullptr && (!m_createdDue.empty() || m_destroyedDue > 0)) {
        failure.Try([this] {
            if (m_createdDue.empty()) {
                --m_destroyedDue;
                m_news->BrowserDestroyed();
                return;
            }
            const DesktopWindowPtr window = std::move(m_createdDue.front());
            m_createdDue.pop_front();
            m_news->BrowserCreated(window);
        });
    }
    failure.Rethrow();
}

}  // namespace kestrelguard
