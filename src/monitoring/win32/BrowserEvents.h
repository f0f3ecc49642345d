#pragma once

#include <windows.h>

#include <exdisp.h>
#include <oaidl.h>

#include <array>
#include <string>

namespace kestrelguard {

/// The fourteen events of monitoring, as the watcher raises them and the control raises them again, in the
/// order of their dispatch numbers (1 to 14).
///
/// `Browser` is the browser that speaks. References reach back to the browser itself: what a handler writes
/// to `Cancel`, `ppDisp` or `URL` is what the browser reads when its event returns. A handler that replaces
/// an object releases the old one and leaves a reference to the new one. A handler that may let other events
/// in (a message box, a call to a browser) keeps references of its own to the objects that it still needs:
/// `Browser` then names whichever browser spoke last.
///
/// What a handler throws as RunTimeError goes back to the browser as a failed call.
class BrowserEvents {
 public:
    virtual ~BrowserEvents() = default;

    virtual void BrowserNavigating(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL, VARIANT& Flags,
                                   VARIANT& TargetFrameName, VARIANT& PostData, VARIANT& Headers,
                                   VARIANT_BOOL& Cancel) = 0;
    /// `pDisp` is a copy: a new object in it goes nowhere.
    virtual void DocumentComplete(IWebBrowser2*& Browser, IDispatch*& pDisp, VARIANT& URL) = 0;
    virtual void DownLoadBegin(IWebBrowser2*& Browser) = 0;
    virtual void DownLoadComplete(IWebBrowser2*& Browser) = 0;
    virtual void FileDownload(IWebBrowser2*& Browser, VARIANT_BOOL& Cancel) = 0;
    virtual void NavigateComplete(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL) = 0;
    /// Never comes: no sink listens to the browsers' NavigateError.
    virtual void NavigateError(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL, VARIANT& Frame,
                               VARIANT& StatusCode, VARIANT_BOOL& Cancel) = 0;
    virtual void NewWindow(IWebBrowser2*& Browser, IDispatch*& ppDisp, VARIANT_BOOL& Cancel) = 0;
    virtual void OnFullScreen(IWebBrowser2*& Browser, VARIANT_BOOL FullScreen) = 0;
    virtual void ProgressChange(IWebBrowser2*& Browser, LONG Progress, LONG ProgressMax) = 0;
    virtual void TitleChange(IWebBrowser2*& Browser, const std::wstring& Text) = 0;
    virtual void WindowClosing(IWebBrowser2*& Browser, VARIANT_BOOL IsChildWindow, VARIANT_BOOL& Cancel) = 0;
    /// A new window; the list of browsers holds it already.
    virtual void BrowserCreated(IWebBrowser2* Browser) = 0;
    /// Some window is gone; the list of browsers holds the remaining ones.
    virtual void BrowserDestroyed() = 0;
};

/// The names of the events; an event's dispatch number is its place here, counted from 1.
inline constexpr std::array kBrowserEventNames = {
    L"BrowserNavigating", L"DocumentComplete", L"DownLoadBegin",  L"DownLoadComplete", L"FileDownload",
    L"NavigateComplete",  L"NavigateError",    L"NewWindow",      L"OnFullScreen",     L"ProgressChange",
    L"TitleChange",       L"WindowClosing",    L"BrowserCreated", L"BrowserDestroyed"};
static_assert(kBrowserEventNames.size() == 14);

}  // namespace kestrelguard
