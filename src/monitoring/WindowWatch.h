#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "monitoring/KeyedSinks.h"
#include "monitoring/ReadHandles.h"
#include "monitoring/ShellEar.h"
#include "monitoring/WatchedDesktop.h"
#include "monitoring/WindowChanges.h"

namespace kestrelguard {

/// Decides what monitoring does: which windows are listened to, under which keys, in which order a rebuild
/// goes, and who is told of what.
///
/// A window that does not answer is not called: it keeps its sink, its key and its place in the list until it
/// answers or leaves the system's list. One that was not known before waits until it answers, and is asked
/// again in a while: a new window is often busy just when it is announced. So is the list of windows itself
/// after a rebuild that failed: whoever has lost it hears of no window any more.
///
/// Calls to windows let other calls in. A rebuild is never entered a second time: an announcement that
/// arrives during one is remembered and worked off after it. Members may be called in the middle of each
/// other; whoever owns the watch may let it go in the middle of its own calls, once it has closed it.
class WindowWatch final : public std::enable_shared_from_this<WindowWatch> {
 public:
    explicit WindowWatch(std::shared_ptr<WatchedDesktop> desktop) : m_desktop(std::move(desktop)) {}

    /// Takes over where another watch leaves off, before the first look: its connection to the shell, which
    /// goes on listening until this watch has one of its own, and what it knew of the windows. Closes it.
    void Succeed(WindowWatch& predecessor) noexcept;
    /// Watches the windows without telling anybody; announcements wait for the owner's own LoadBrowsers.
    void FirstLook();
    /// Who is told; must outlive the watch or its Close.
    void TellTo(WindowNews& news) noexcept {
        if (!m_closed) {
            m_news = &news;
        }
    }
    /// The list that rebuilds refill; must outlive the watch or its Close.
    void Fill(WindowList& list) noexcept {
        if (!m_closed) {
            m_list = &list;
        }
    }
    /// Drops all sinks and watches the windows afresh, then does what announcements asked for meanwhile.
    /// Throws RunTimeError when the list of windows or the first window fails; what fails after that is left
    /// out.
    void LoadBrowsers();
    /// A rebuild, or the search for a new window, is under way.
    bool Busy() const noexcept { return m_busy; }
    /// Does what announcements asked for, and tells of it, until nothing is left; not while it is busy.
    void WorkOff();
    /// The end: lets go of all sinks and of the shell and tells nothing any more.
    void Close() noexcept;

    /// The keys of the sinks, in the order of the windows: "_", the frame window's handle, "_" and a counter.
    std::vector<std::wstring> Keys() const { return m_sinks.Keys(); }

 private:
    using Windows = WindowChanges::Windows;
    using Ear = ShellEar<WindowWatch>;
    friend Ear;

    /// A connection to the shell and the ear that it has.
    struct Shell {
        std::shared_ptr<Ear> ear;
        std::shared_ptr<ShellConnection> connection;
    };
    /// What arrived and was not worked off yet.
    struct Heard {
        std::uint32_t registered = 0;
        std::uint32_t revoked = 0;
        /// Those of `revoked` that may be another one's repetition through the other connection.
        std::uint32_t perhapsRepeated = 0;
        bool loadAgain = false;
        bool reminded = false;

        bool Anything() const { return registered > 0 || revoked > 0 || loadAgain || reminded; }
        void Add(const Heard& other) noexcept {
            registered += other.registered;
            revoked += other.revoked;
            perhapsRepeated += other.perhapsRepeated;
            loadAgain = loadAgain || other.loadAgain;
            reminded = reminded || other.reminded;
        }
    };

    void HearRegistered();
    void HearRevoked(Ear& ear);
    void HearReminder();

    /// The window that has just appeared: the first of the system's list whose handle no sink has. Reads each
    /// handle once; `handles` keeps them for the rebuild that follows.
    DesktopWindowPtr GetNewBrowser(ReadHandles& handles);

    void Rebuild(ReadHandles& handles);
    void ConnectShell();
    void WatchWindows(ShellConnection& shell, ReadHandles& handles);
    /// The window of that identity as it is known; null for a new one.
    DesktopWindowPtr KnownAs(const void* identity) const;
    /// Keeps a window that does not answer as it was: in the list, and under a key if it has one. Nothing is
    /// known of a null one. Answers whether it has a key; one without is asked again in a while.
    bool PassOver(const DesktopWindowPtr& known);
    void List(const DesktopWindowPtr& window);
    void Park() noexcept;
    static void LetGo(Shell& shell) noexcept;

    void WorkOffOnce();
    void TellDue();

    const std::shared_ptr<WatchedDesktop> m_desktop;
    WindowNews* m_news = nullptr;
    WindowList* m_list = nullptr;
    /// The owner has called LoadBrowsers.
    bool m_started = false;
    bool m_closed = false;

    Shell m_shell;
    KeyedSinks m_sinks;
    /// The ear of the connection that is being made, beside that of the old one.
    std::shared_ptr<Ear> m_connecting;

    /// The last rebuild, or the search before it, has failed.
    bool m_failed = false;
    bool m_busy = false;
    Heard m_heard;
    /// What the work under way began with.
    Heard m_inWork;

    /// What the rebuild under way has put into the list.
    Windows m_listed;
    /// The last walk went to the end of the system's list.
    bool m_wholeWalk = false;
    WindowChanges m_changes;
};

}  // namespace kestrelguard
