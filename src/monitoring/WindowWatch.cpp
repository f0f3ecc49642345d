#include "monitoring/WindowWatch.h"

#include <optional>
#include <unordered_set>
#include <utility>

#include "runtime/ErrorsIgnored.h"
#include "runtime/FirstFailure.h"
#include "runtime/Flagged.h"

namespace kestrelguard {

namespace {

/// How a call to a window went: kHangs when it does not answer any more.
enum class Outcome { kDone, kFailed, kHangs };

}  // namespace

void WindowWatch::Succeed(WindowWatch& predecessor) noexcept {
    m_shell = std::exchange(predecessor.m_shell, Shell());
    if (m_shell.ear) {
        m_shell.ear->PassTo(weak_from_this());
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
    m_failed = true;
    m_sinks.Release();
    m_desktop->ReleaseAnswering();
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
    m_failed = false;
}

void WindowWatch::ConnectShell() {
    Shell fresh{std::make_shared<Ear>(weak_from_this()), nullptr};
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
    const auto step = [&errorsIgnored](auto&& action, auto&& answers) {
        FirstFailure failure;
        failure.Try(action);
        if (failure.Any() && !answers()) {
            return Outcome::kHangs;
        }
        if (!errorsIgnored) {
            failure.Rethrow();
        }
        return failure.Any() ? Outcome::kFailed : Outcome::kDone;
    };
    for (;;) {
        bool more = false;
        if (!m_closed) {
            const auto next = [&] { more = walk->Next(); };
            m_wholeWalk = !errorsIgnored || ErrorOf(next) == 0;
            if (!errorsIgnored) {
                next();
            }
        }
        if (!more || m_closed) {
            return;
        }
        const DesktopWindowPtr known = KnownAs(walk->Identity());
        const auto answers = [&] { return known ? known->Answers() : walk->Answers(); };
        DesktopWindowPtr window;
        Outcome outcome = answers() ? step([&] { window = walk->Window(); }, answers) : Outcome::kHangs;
        if (outcome == Outcome::kFailed) {
            continue;
        }
        if (outcome == Outcome::kDone && window) {
            // It answers again: with two sinks it would tell each event twice.
            m_sinks.ReleaseResting(*window);
        }
        std::shared_ptr<WindowSink> sink;
        if (outcome == Outcome::kDone && !m_closed) {
            outcome = step([&] { sink = m_desktop->Listen(window); }, answers);
        }
        if (m_closed || (!sink && outcome != Outcome::kHangs)) {
            // Kept: a window that cannot be connected to ends the walk; those after it wait for the next one.
            m_wholeWalk = false;
            return;
        }
        std::wstring key;
        if (outcome == Outcome::kDone) {
            outcome = step([&] { key = m_sinks.KeyOf(handles.Of(window)); }, answers);
        }
        if (m_closed) {
            return;
        }
        if (outcome == Outcome::kHangs) {
            if (window) {
                m_desktop->Park(window, std::move(sink));
            }
            errorsIgnored = PassOver(known) || errorsIgnored;
            continue;
        }
        // From the first key on, what fails is left out and the next step runs.
        errorsIgnored = true;
        ErrorsIgnored(
            [&] {
                if (outcome == Outcome::kDone) {
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
    for (const auto& window : {m_sinks.WindowOf(identity), m_changes.WindowOf(identity)}) {
        if (window) {
            return window;
        }
    }
    // An earlier watch knew it.
    return m_desktop->Parked(identity);
}

bool WindowWatch::PassOver(const DesktopWindowPtr& known) {
    const bool hasKey = known && m_sinks.Rests(known);
    if (!hasKey) {
        m_desktop->RemindLater(m_shell.ear);
    }
    ErrorsIgnored(
        [&] {
            if (hasKey) {
                m_sinks.Wake(known);
            }
        },
        [&] {
            if (known) {
                List(known);
            }
        });
    return hasKey;
}

DesktopWindowPtr WindowWatch::GetNewBrowser(ReadHandles& handles) {
    const auto shell = m_shell.connection;
    std::vector<KeyedSinks::Sink> watched = m_sinks.All();
    for (KeyedSinks::Sink& sink : watched) {
        // A call from here that does not come back must not keep it.
        sink.listening = nullptr;
    }
    // The scan of the sinks ends at one whose handle cannot be read, the same for every window.
    std::optional<std::unordered_set<std::int32_t>> watchedHandles;
    const auto readWatched = [&] {
        watchedHandles.emplace();
        for (const KeyedSinks::Sink& sink : watched) {
            const auto hangs = [&] { return !sink.window->Answers(); };
            const bool done =
                !hangs() && ErrorOf([&] { watchedHandles->insert(handles.Of(sink.window)); }) == 0;
            if (m_closed || (!done && !hangs())) {
                return;
            }
            if (!done) {
                watchedHandles->insert(sink.handle);
            }
        }
    };

    const auto walk = shell->Walk();
    while (!m_closed && walk->Next() && !m_closed) {
        const DesktopWindowPtr known = KnownAs(walk->Identity());
        const auto hangs = [&] {
            if (known ? known->Answers() : walk->Answers()) {
                return false;
            }
            // Whether it is new shows when it answers.
            if (!m_sinks.WindowOf(walk->Identity())) {
                m_desktop->RemindLater(m_shell.ear);
            }
            return true;
        };
        if (hangs()) {
            continue;
        }
        DesktopWindowPtr window;
        if (ErrorOf([&] { window = walk->Window(); }) != 0) {
            // Not a browser: nothing that could be watched.
            static_cast<void>(hangs());
            continue;
        }
        if (m_closed || !window || watched.empty()) {
            return window;
        }
        if (!watchedHandles) {
            readWatched();
            if (hangs()) {
                continue;
            }
        }
        bool found = false;
        if (ErrorOf([&] { found = watchedHandles->contains(handles.Of(window)); }) != 0 && hangs()) {
            m_desktop->Park(window, nullptr);
            continue;
        }
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

void WindowWatch::HearReminder() {
    m_heard.reminded = true;
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
    if (m_failed && !m_closed) {
        m_desktop->RemindLater(m_shell.ear);
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
        // After a failure the connection may be a dead one, which finds nothing: a new one will.
        const bool mends = m_inWork.reminded && m_failed;
        if (m_inWork.registered > 0 || (m_inWork.reminded && !mends)) {
            const bool failed = std::exchange(m_failed, true);
            found = GetNewBrowser(handles);
            m_failed = failed;
        }
        const bool wasKnown = m_changes.Knows(found);
        if (!m_closed && (found || mends || m_inWork.revoked > 0 || m_inWork.loadAgain)) {
            Rebuild(handles);
        }
        if (m_closed) {
            return;
        }
        if (found && !found->Answers()) {
            // Whoever is told of it calls it: that waits until it answers.
            m_desktop->Park(std::exchange(found, nullptr), nullptr);
            m_desktop->RemindLater(m_shell.ear);
        }
        const Heard done = std::exchange(m_inWork, Heard());
        if (done.registered > 0 || done.revoked > 0 || done.reminded) {
            m_changes.MakeDue({done.revoked, done.perhapsRepeated, found, wasKnown, mends});
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
