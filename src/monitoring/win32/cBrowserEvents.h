#pragma once

#include <windows.h>

#include <exdisp.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "monitoring/WindowWatch.h"
#include "monitoring/win32/BrowserEvents.h"
#include "monitoring/win32/ComDesktop.h"
#include "monitoring/win32/IBrowser.h"
#include "monitoring/win32/cBrowsers.h"
#include "runtime/win32/Com.h"

namespace kestrelguard {

/// The watcher: receives the events of the desktop's browser windows and raises them as BrowserEvents,
/// together with the coming and going of windows. Which windows are listened to, and who is told of what, its
/// WindowWatch decides.
class cBrowserEvents final : public DispatchObject<cBrowserEvents, IBrowser, ISupportErrorInfo>,
                             private WindowList,
                             private WindowNews {
 public:
    explicit cBrowserEvents(ShellWindowsMaker makeShellWindows)
        : m_watch(std::make_shared<WindowWatch>(
              std::make_shared<ComDesktop>(std::move(makeShellWindows), *this))) {}
    ~cBrowserEvents() override;
    cBrowserEvents(const cBrowserEvents&) = delete;
    cBrowserEvents& operator=(const cBrowserEvents&) = delete;

    // As WindowWatch has them.
    void Succeed(cBrowserEvents& predecessor) noexcept;
    void FirstLook();
    /// Who hears the events; must outlive the watcher or Close.
    void Connect(BrowserEvents& events) noexcept;
    /// The list that rebuilds refill.
    void SetBrowsers(ComPtr<cBrowsers> oBrowsers) noexcept;
    void LoadBrowsers();
    bool Busy() const noexcept { return m_watch->Busy(); }
    void WorkOff();
    /// The end: lets go of all sinks and of the list of windows and raises nothing any more. The sinks and
    /// the watcher hold each other, so whoever lets a watcher go closes it first. Harmless in the middle of
    /// any of its calls.
    void Close() noexcept;
    /// The keys of the sinks.
    std::vector<std::wstring> Keys() const { return m_watch->Keys(); }

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

 private:
    using Browsers = std::vector<ComPtr<IWebBrowser2>>;

    // WindowList
    void Clear() override;
    void Add(const DesktopWindowPtr& window) override;
    // WindowNews
    void BrowserCreated(const DesktopWindowPtr& window) override;
    void BrowserDestroyed() override;

    template <class Event>
    void Raise(Event&& event);
    /// Raises the event for the current browser. Each argument is given as its operation took it; E_POINTER
    /// for a reference that is null.
    template <class... Parameters, class... Given>
    HRESULT RaiseForCurrent(void (BrowserEvents::*event)(IWebBrowser2*&, Parameters...),
                            std::tuple<Given&...> given) noexcept;

    const std::shared_ptr<WindowWatch> m_watch;
    BrowserEvents* m_events = nullptr;
    bool m_closed = false;
    ComPtr<cBrowsers> m_oBrowsers;
    ComPtr<IWebBrowser2> m_oCurBrowser;
    /// Browsers that were the current one. They are let go after the event that follows: letting go may let
    /// another event in, and the one that follows would then speak for the wrong window.
    Browsers m_parting;
};

}  // namespace kestrelguard
