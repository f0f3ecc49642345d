#pragma once

#include <cstdint>
#include <memory>

/// The desktop as the watch over its windows sees it. Every call marked "calls out" waits for another process
/// and lets other calls in meanwhile: windows open and close, announcements arrive, monitoring is switched.
/// Letting go of an object calls out, too. Failures are RunTimeErrors.
namespace kestrelguard {

/// One browser window of the system's list, held for as long as this lives.
class DesktopWindow {
 public:
    virtual ~DesktopWindow() = default;
    /// The handle of its frame window. Calls out.
    virtual std::int32_t Handle() = 0;
    /// What tells windows apart: the same for two references to one window, for as long as one is held.
    virtual const void* Identity() const = 0;
    /// Whether it answers. Found out without a call to it, in a short time. One that a call was cut off from,
    /// since it took too long, does not for a while.
    virtual bool Answers() = 0;
};
using DesktopWindowPtr = std::shared_ptr<DesktopWindow>;

/// Listening to one window's events; ends with this. Its end calls out.
class WindowSink {
 public:
    virtual ~WindowSink() = default;
};

/// A walk over the system's list, in its order.
class WindowWalk {
 public:
    virtual ~WindowWalk() = default;
    /// Goes to the next entry; false after the last. Calls out.
    virtual bool Next() = 0;
    /// The entry's identity as a window; null for an entry without an object.
    virtual const void* Identity() = 0;
    /// Whether the process behind the entry answers. Found out without a call to it, in a short time.
    virtual bool Answers() = 0;
    /// The entry as a browser window; null for an entry without an object. Fails for an object that is no
    /// browser. Calls out.
    virtual DesktopWindowPtr Window() = 0;
};

/// Who hears what the system says about its list.
class ShellListener {
 public:
    virtual ~ShellListener() = default;
    virtual void WindowRegistered() = 0;
    virtual void WindowRevoked() = 0;
    /// The while is over that RemindLater was asked for.
    virtual void Reminded() = 0;
};

/// A connection to the system's list and its announcements; ends with this. Its end calls out.
class ShellConnection {
 public:
    virtual ~ShellConnection() = default;
    /// Begins a walk. Calls out.
    virtual std::unique_ptr<WindowWalk> Walk() = 0;
};

class WatchedDesktop {
 public:
    virtual ~WatchedDesktop() = default;
    /// Connects to the list. The listener may hear something before this returns. Calls out.
    virtual std::unique_ptr<ShellConnection> ConnectShell(std::shared_ptr<ShellListener> listener) = 0;
    /// Listens to a window; null for no window. Events may come before this returns. Calls out.
    virtual std::unique_ptr<WindowSink> Listen(const DesktopWindowPtr& window) = 0;
    /// Cuts off a window that does not answer, and the sink on it if there is one, and keeps both: letting go
    /// of them would call out and never come back.
    virtual void Park(const DesktopWindowPtr& window, std::shared_ptr<WindowSink> sink) noexcept = 0;
    /// The parked window of that identity; null for none.
    virtual DesktopWindowPtr Parked(const void* identity) const = 0;
    /// Lets go of what is parked and answers again. Calls out.
    virtual void ReleaseAnswering() noexcept = 0;
    /// Reminds the listener in a while: a window that does not answer yet, or a list that failed, may do so
    /// by then. Nothing more happens when that is to come already.
    virtual void RemindLater(std::shared_ptr<ShellListener> listener) noexcept = 0;
};

/// The list of windows that rebuilds refill.
class WindowList {
 public:
    virtual ~WindowList() = default;
    /// Calls out: windows are let go.
    virtual void Clear() = 0;
    virtual void Add(const DesktopWindowPtr& window) = 0;
};

/// Who is told of the windows' coming and going.
class WindowNews {
 public:
    virtual ~WindowNews() = default;
    /// A new window; the list holds it already.
    virtual void BrowserCreated(const DesktopWindowPtr& window) = 0;
    /// Some window is gone; the list holds the remaining ones.
    virtual void BrowserDestroyed() = 0;
};

}  // namespace kestrelguard
