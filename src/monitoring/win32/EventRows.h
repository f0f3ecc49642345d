#pragma once

#include <windows.h>

#include <exdisp.h>
#include <oaidl.h>

#include <string>

// The events, each spelled once. A row has the event's name, its parameters, and their names for handing them
// on; whoever forwards events makes its functions from these rows.

/// The fourteen events of monitoring in the order of their dispatch numbers, 1 to 14:
/// EVENT(name, parameters, arguments).
///
/// DocumentComplete's `pDisp` is a copy: a new object in it goes nowhere. NavigateError never comes: no sink
/// listens to it. At BrowserCreated the list of browsers holds the new window already, at BrowserDestroyed
/// only the remaining ones.
#define KG_BROWSER_EVENTS(EVENT)                                                                             \
    EVENT(BrowserNavigating,                                                                                 \
          (IWebBrowser2 * &Browser, IDispatch * pDisp, VARIANT & URL, VARIANT & Flags,                       \
           VARIANT & TargetFrameName, VARIANT & PostData, VARIANT & Headers, VARIANT_BOOL & Cancel),         \
          (Browser, pDisp, URL, Flags, TargetFrameName, PostData, Headers, Cancel))                          \
    EVENT(DocumentComplete, (IWebBrowser2 * &Browser, IDispatch * &pDisp, VARIANT & URL),                    \
          (Browser, pDisp, URL))                                                                             \
    EVENT(DownLoadBegin, (IWebBrowser2 * &Browser), (Browser))                                               \
    EVENT(DownLoadComplete, (IWebBrowser2 * &Browser), (Browser))                                            \
    EVENT(FileDownload, (IWebBrowser2 * &Browser, VARIANT_BOOL & Cancel), (Browser, Cancel))                 \
    EVENT(NavigateComplete, (IWebBrowser2 * &Browser, IDispatch * pDisp, VARIANT & URL),                     \
          (Browser, pDisp, URL))                                                                             \
    EVENT(NavigateError,                                                                                     \
          (IWebBrowser2 * &Browser, IDispatch * pDisp, VARIANT & URL, VARIANT & Frame, VARIANT & StatusCode, \
           VARIANT_BOOL & Cancel),                                                                           \
          (Browser, pDisp, URL, Frame, StatusCode, Cancel))                                                  \
    EVENT(NewWindow, (IWebBrowser2 * &Browser, IDispatch * &ppDisp, VARIANT_BOOL & Cancel),                  \
          (Browser, ppDisp, Cancel))                                                                         \
    EVENT(OnFullScreen, (IWebBrowser2 * &Browser, VARIANT_BOOL FullScreen), (Browser, FullScreen))           \
    EVENT(ProgressChange, (IWebBrowser2 * &Browser, LONG Progress, LONG ProgressMax),                        \
          (Browser, Progress, ProgressMax))                                                                  \
    EVENT(TitleChange, (IWebBrowser2 * &Browser, const std::wstring& Text), (Browser, Text))                 \
    EVENT(WindowClosing, (IWebBrowser2 * &Browser, VARIANT_BOOL IsChildWindow, VARIANT_BOOL & Cancel),       \
          (Browser, IsChildWindow, Cancel))                                                                  \
    EVENT(BrowserCreated, (IWebBrowser2 * Browser), (Browser))                                               \
    EVENT(BrowserDestroyed, (), ())

/// The operations of IBrowser in the order of their slots, the first left out; the event of monitoring that
/// each becomes; and the sink's handler that calls it: OPERATION(name, event, handler, parameters,
/// arguments).
#define KG_BROWSER_OPERATIONS(OPERATION)                                                                  \
    OPERATION(BeforeNavigate2, BrowserNavigating, Browser_BeforeNavigate2,                                \
              (IDispatch * pDisp, VARIANT * URL, VARIANT * Flags, VARIANT * TargetFrameName,              \
               VARIANT * PostData, VARIANT * Headers, VARIANT_BOOL * Cancel),                             \
              (pDisp, URL, Flags, TargetFrameName, PostData, Headers, Cancel))                            \
    OPERATION(DocumentComplete, DocumentComplete, Browser_DocumentComplete,                               \
              (IDispatch * pDisp, VARIANT * URL), (pDisp, URL))                                           \
    OPERATION(DownLoadBegin, DownLoadBegin, Browser_DownloadBegin, (), ())                                \
    OPERATION(DownLoadComplete, DownLoadComplete, Browser_DownloadComplete, (), ())                       \
    OPERATION(FileDownload, FileDownload, Browser_FileDownload, (VARIANT_BOOL * Cancel), (Cancel))        \
    OPERATION(NavigateComplete2, NavigateComplete, Browser_NavigateComplete2,                             \
              (IDispatch * pDisp, VARIANT * URL), (pDisp, URL))                                           \
    OPERATION(                                                                                            \
        NavigateError, NavigateError, Browser_NavigateError,                                              \
        (IDispatch * pDisp, VARIANT * URL, VARIANT * Frame, VARIANT * StatusCode, VARIANT_BOOL * Cancel), \
        (pDisp, URL, Frame, StatusCode, Cancel))                                                          \
    OPERATION(NewWindow2, NewWindow, Browser_NewWindow2, (IDispatch * *ppDisp, VARIANT_BOOL * Cancel),    \
              (ppDisp, Cancel))                                                                           \
    OPERATION(OnFullScreen, OnFullScreen, Browser_OnFullScreen, (VARIANT_BOOL FullScreen), (FullScreen))  \
    OPERATION(ProgressChange, ProgressChange, Browser_ProgressChange, (LONG Progress, LONG ProgressMax),  \
              (Progress, ProgressMax))                                                                    \
    OPERATION(TitleChange, TitleChange, Browser_TitleChange, (BSTR Text), (Text))                         \
    OPERATION(WindowClosing, WindowClosing, Browser_WindowClosing,                                        \
              (VARIANT_BOOL IsChildWindow, VARIANT_BOOL * Cancel), (IsChildWindow, Cancel))
