#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "monitoring/WatchedDesktop.h"
#include "runtime/KeyedCollection.h"

namespace kestrelguard {

/// Decides what monitoring does: which windows are listened to, under which keys, in which order a rebuild
/// goes, and who is told of what.
///
/// A window that does not answer is not called: it keeps its sink, its key and its place in the list until it
/// answers or leaves the system's list. One that was not known before waits until it answers, and is asked
/// again in a while: a new window is often busy just when it is announced.
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
    void TellTo(WindowNews& news) noexcept;
    /// The list that rebuilds refill; must outlive the watch or its Close.
    void Fill(WindowList& list) noexcept;
    /// Drops all sinks and watches the windows afresh, then does what announcements asked for meanwhile.
    /// Throws RunTimeError when the list of windows or the first window fails; what fails after that is left
    /// out.
    void LoadBrowsers();
    /// The end: lets go of all sinks and of the shell and tells nothing any more.
    void Close() noexcept;

    /// The keys of the sinks, in the order of the windows: "_", the frame window's handle, "_" and a counter.
    std::vector<std::wstring> Keys() const;

 private:
    /// A sink under its key.
    struct Sink {
        std::wstring key;
        DesktopWindowPtr window;
        std::shared_ptr<WindowSink> listening;
        std::int32_t handle = 0;
    };
    using Sinks = KeyedCollection<Sink>;
    using Windows = std::vector<DesktopWindowPtr>;
    using Identities = std::unordered_set<const void*>;
    class ReadHandles;
    class Ear;

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

        bool Anything() const { return registered > 0 || revoked > 0 || loadAgain; }
        void Add(const Heard& other) noexcept;
    };

    void HearRegistered();
    void HearRevoked(Ear& ear);

    /// The window that has just appeared: the first of the system's list whose handle no sink has. Reads each
    /// handle once; `handles` keeps them for the rebuild that follows.
    DesktopWindowPtr GetNewBrowser(ReadHandles& handles);
    static bool KeyExists(const Sinks& collection, const std::wstring& key);

    void Rebuild(ReadHandles& handles);
    void ConnectShell();
    void WatchWindows(ShellConnection& shell, ReadHandles& handles);
    /// The window of that identity as it is known; null for a new one.
    DesktopWindowPtr KnownAs(const void* identity) const;
    /// Keeps a window that does not answer as it was. Answers whether it has a key.
    bool Keep(const DesktopWindowPtr& window);
    void List(const DesktopWindowPtr& window);
    void Park() noexcept;
    std::wstring KeyOf(std::int32_t handle) const;
    /// Compares the list with what it was after the last rebuild.
    void NoteChanges();
    static void LetGo(Shell& shell) noexcept;
    void ReleaseSinks() noexcept;

    /// Does what announcements asked for, until none is left.
    void WorkOff();
    void WorkOffOnce();
    bool Knows(const DesktopWindowPtr& window) const;
    /// What there is to tell after an announcement's rebuild. `found` is the window that the search has
    /// found, `wasKnown` whether it was known before the rebuild.
    void MakeDue(const Heard& heard, const DesktopWindowPtr& found, bool wasKnown);
    void TellDue();

    const std::shared_ptr<WatchedDesktop> m_desktop;
    WindowNews* m_news = nullptr;
    WindowList* m_list = nullptr;
    /// The owner has called LoadBrowsers.
    bool m_started = false;
    bool m_closed = false;

    Shell m_shell;
    Sinks m_colBrowsers;
    /// Sinks on windows that do not answer, while a rebuild is under way.
    std::vector<Sink> m_resting;
    /// The ear of the connection that is being made, beside that of the old one.
    std::shared_ptr<Ear> m_connecting;

    /// A rebuild, or the search for a new window, is under way.
    bool m_busy = false;
    Heard m_heard;
    /// What the work under way began with.
    Heard m_inWork;
    /// Revocations whose rebuild has failed.
    std::uint32_t m_owed = 0;

    /// What the rebuild under way has put into the list, and the windows that the finished ones left known:
    /// nothing before the list was filled for the first time.
    Windows m_listed;
    std::optional<Windows> m_known;
    /// The last walk went to the end of the system's list.
    bool m_wholeWalk = false;
    /// Windows that came, and how many went, since somebody was told.
    Windows m_came;
    std::uint32_t m_went = 0;
    /// What is to be told now.
    std::deque<DesktopWindowPtr> m_createdDue;
    std::uint32_t m_destroyedDue = 0;
};

}  // namespace kestrelguard
