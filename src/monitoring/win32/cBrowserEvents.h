#pragma once

#include <windows.h>

#include <exdisp.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "monitoring/win32/BrowserEvents.h"
#include "monitoring/win32/EventSink.h"
#include "monitoring/win32/IBrowser.h"
#include "monitoring/win32/cBrowser.h"
#include "monitoring/win32/cBrowsers.h"
#include "runtime/KeyedCollection.h"
#include "runtime/win32/Com.h"

namespace kestrelguard {

/// Makes the object that lists the desktop's browser windows. Throws RunTimeError.
using ShellWindowsMaker = std::function<ComPtr<IShellWindows>()>;

/// The system's own.
ComPtr<IShellWindows> CreateShellWindows();

/// The watcher: keeps a sink on each of the desktop's browser windows, receives their events and raises them
/// as BrowserEvents, together with the coming and going of windows.
///
/// Calls to browsers let other calls in. A rebuild is never entered a second time: an announcement that
/// arrives during one is remembered and leads to one more rebuild after it.
class cBrowserEvents final : public DispatchObject<cBrowserEvents, IBrowser, ISupportErrorInfo> {
 public:
    /// Watches the windows at once. Throws RunTimeError when the list of windows or the first window fails.
    static ComPtr<cBrowserEvents> Create(ShellWindowsMaker makeShellWindows = CreateShellWindows);

    explicit cBrowserEvents(ShellWindowsMaker makeShellWindows)
        : m_makeShellWindows(std::move(makeShellWindows)) {}
    ~cBrowserEvents();
    cBrowserEvents(const cBrowserEvents&) = delete;
    cBrowserEvents& operator=(const cBrowserEvents&) = delete;

    /// Who hears the events; must outlive the watcher or Close.
    void Connect(BrowserEvents& events) noexcept;
    /// The list that rebuilds refill.
    void SetBrowsers(ComPtr<cBrowsers> oBrowsers) noexcept { m_oBrowsers = std::move(oBrowsers); }
    /// Drops all sinks and watches the windows afresh, then does what announcements asked for meanwhile.
    /// Throws RunTimeError when the list of windows or the first window fails; what fails after that is left
    /// out.
    void LoadBrowsers();
    /// The end: lets go of all sinks and of the list of windows and raises nothing any more. The sinks and
    /// the watcher hold each other, so whoever lets a watcher go closes it first. Harmless in the middle of
    /// any of its calls.
    void Close() noexcept;

    // IBrowser
    HRESULT STDMETHODCALLTYPE SetBrowserInst(IDispatch** oBrowser) noexcept override;
#define KG_SLOT(name, event, handler, parameters, arguments) \
    HRESULT STDMETHODCALLTYPE name parameters noexcept override;
    KG_BROWSER_OPERATIONS(KG_SLOT)
#undef KG_SLOT

    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        return iid == IID_IBrowser ? S_OK : S_FALSE;
    }
    void* Find(REFIID iid) noexcept;

    /// The keys of the sinks, in the order of the windows: "_", the frame window's handle, "_" and a counter.
    std::vector<std::wstring> Keys() const;

 private:
    /// A sink under its key.
    struct Sink {
        std::wstring key;
        ComPtr<cBrowser> browser;
    };
    using Sinks = KeyedCollection<Sink>;
    using Windows = std::vector<ComPtr<IWebBrowser2>>;
    class ReadHandles;

    static const std::array<EventRow<cBrowserEvents>, 2> kEvents;

    void m_oShell_WindowRegistered(LONG lCookie);
    void m_oShell_WindowRevoked(LONG lCookie);

    /// The window that has just appeared: the first of the system's list whose handle no sink has. Reads each
    /// handle once; `handles` keeps those of the windows for the rebuild that follows.
    ComPtr<IWebBrowser2> GetNewBrowser(ReadHandles& handles);
    static bool KeyExists(const Sinks& collection, const std::wstring& key);

    /// One full rebuild; with `newcomersWanted` it notes the windows that the list did not hold before.
    void Rebuild(ReadHandles& handles, bool newcomersWanted = false);
    void ConnectShell();
    void WatchWindows(const ComPtr<IShellWindows>& shell, ReadHandles& handles);
    void ReleaseShell() noexcept;
    void ReleaseSinks() noexcept;

    /// Does what announcements asked for, until none is left.
    void WorkOff();
    void WorkOffOnce();
    Windows ListedBrowsers() const;
    void NoteNewcomers(const Windows& listedBefore, bool wanted);

    template <class Event>
    void Raise(Event&& event);
    /// Raises the event for the current browser. Each argument is given as its operation took it; E_POINTER
    /// for a reference that is null.
    template <class... Parameters, class... Given>
    HRESULT RaiseForCurrent(void (BrowserEvents::*event)(IWebBrowser2*&, Parameters...),
                            std::tuple<Given&...> given) noexcept;

    const ShellWindowsMaker m_makeShellWindows;
    ComPtr<IShellWindows> m_oShell;
    ComPtr<cBrowsers> m_oBrowsers;
    ComPtr<IWebBrowser2> m_oCurBrowser;
    /// Browsers that were the current one. They are let go after the event that follows: letting go may let
    /// another event in, and the one that follows would then speak for the wrong window.
    Windows m_parting;
    Sinks m_colBrowsers;

    ComPtr<EventSink<cBrowserEvents>> m_shellSink;
    Advise m_shellConnection;
    BrowserEvents* m_events = nullptr;
    bool m_closed = false;

    /// A rebuild, or the search for a new window, is under way.
    bool m_busy = false;
    /// What arrived meanwhile.
    std::uint32_t m_registered = 0;
    std::uint32_t m_revoked = 0;
    bool m_loadAgain = false;
    /// Windows that rebuilds found and listed while announcements were waiting, and that nobody was told of.
    Windows m_newcomers;
    /// The list was filled by this watcher before.
    bool m_listFilled = false;
};

}  // namespace kestrelguard
