#include "monitoring/win32/cBrowser.h"

#include <exdispid.h>

#include <utility>

#include "runtime/win32/ComError.h"

namespace kestrelguard {

constexpr std::array<EventRow<cBrowser>, 11> cBrowser::kEvents = {
    Row<cBrowser, &cBrowser::Browser_BeforeNavigate2>(250),
    Row<cBrowser, &cBrowser::Browser_DocumentComplete>(259),
    Row<cBrowser, &cBrowser::Browser_DownloadBegin>(106),
    Row<cBrowser, &cBrowser::Browser_DownloadComplete>(104),
    // Later browsers put another argument before Cancel.
    Row<cBrowser, &cBrowser::Browser_FileDownload>(270, 1),
    Row<cBrowser, &cBrowser::Browser_NavigateComplete2>(252),
    Row<cBrowser, &cBrowser::Browser_NewWindow2>(251),
    Row<cBrowser, &cBrowser::Browser_OnFullScreen>(258),
    Row<cBrowser, &cBrowser::Browser_ProgressChange>(108),
    Row<cBrowser, &cBrowser::Browser_TitleChange>(113),
    Row<cBrowser, &cBrowser::Browser_WindowClosing>(263),
};

cBrowser::~cBrowser() {
    Disconnect();
}

void cBrowser::Disconnect() noexcept {
    // Disconnecting lets other calls in: by then the sink is deaf and this object holds nothing of it.
    if (m_sink) {
        m_sink->Detach();
    }
    const ComPtr<EventSink<cBrowser>> sink = std::move(m_sink);
    const ComPtr<IWebBrowser2> browser = std::move(m_browser);
    const Advise connection = std::move(m_connection);
}

void cBrowser::SetBrowser(ComPtr<IWebBrowser2> browser) {
    static_assert(kEvents[0].id == DISPID_BEFORENAVIGATE2 && kEvents[1].id == DISPID_DOCUMENTCOMPLETE &&
                  kEvents[2].id == DISPID_DOWNLOADBEGIN && kEvents[3].id == DISPID_DOWNLOADCOMPLETE &&
                  kEvents[4].id == DISPID_FILEDOWNLOAD && kEvents[5].id == DISPID_NAVIGATECOMPLETE2 &&
                  kEvents[6].id == DISPID_NEWWINDOW2 && kEvents[7].id == DISPID_ONFULLSCREEN &&
                  kEvents[8].id == DISPID_PROGRESSCHANGE && kEvents[9].id == DISPID_TITLECHANGE &&
                  kEvents[10].id == DISPID_WINDOWCLOSING);
    const ComPtr<IWebBrowser2> newBrowser = std::move(browser);
    Disconnect();
    if (!newBrowser) {
        return;
    }
    const auto sink = MakeCom<EventSink<cBrowser>>(*this, DIID_DWebBrowserEvents2, kEvents);
    // The first event may come before the connection is made.
    m_sink = sink;
    m_browser = newBrowser;
    try {
        SetErrorInfo(0, nullptr);
        Advise connection(newBrowser.Get(), DIID_DWebBrowserEvents2, sink.Get());
        if (m_sink.Get() == sink.Get()) {
            m_connection = std::move(connection);
        }
    } catch (...) {
        if (m_sink.Get() == sink.Get()) {
            Disconnect();
        }
        throw;
    }
}

template <class Operation>
void cBrowser::Forward(Operation&& operation) {
    // References of our own: a handler may let this sink or its receiver go.
    const ComPtr<IBrowser> receiver = m_interFace;
    if (!receiver) {
        throw RunTimeError(RunTimeError::kObjectNotSet);
    }
    ComPtr<IDispatch> browser(m_browser.Get());
    CallOut([&] { return receiver->SetBrowserInst(&browser.InOut()); });
    CallOut([&] { return std::forward<Operation>(operation)(*receiver); });
}

void cBrowser::Browser_BeforeNavigate2(IDispatch* pDisp, VARIANT* URL, VARIANT* Flags,
                                       VARIANT* TargetFrameName, VARIANT* PostData, VARIANT* Headers,
                                       VARIANT_BOOL* Cancel) {
    Forward([&](IBrowser& receiver) {
        return receiver.BeforeNavigate2(pDisp, URL, Flags, TargetFrameName, PostData, Headers, Cancel);
    });
}

void cBrowser::Browser_DocumentComplete(IDispatch* pDisp, VARIANT* URL) {
    Forward([&](IBrowser& receiver) { return receiver.DocumentComplete(pDisp, URL); });
}

void cBrowser::Browser_DownloadBegin() {
    Forward([](IBrowser& receiver) { return receiver.DownLoadBegin(); });
}

void cBrowser::Browser_DownloadComplete() {
    Forward([](IBrowser& receiver) { return receiver.DownLoadComplete(); });
}

void cBrowser::Browser_FileDownload(VARIANT_BOOL* Cancel) {
    Forward([&](IBrowser& receiver) { return receiver.FileDownload(Cancel); });
}

void cBrowser::Browser_NavigateComplete2(IDispatch* pDisp, VARIANT* URL) {
    Forward([&](IBrowser& receiver) { return receiver.NavigateComplete2(pDisp, URL); });
}

// Kept, and kept out of the table: no event is bound to this forwarder, so no NavigateError is ever reported.
void cBrowser::Browser_NavigateError(IDispatch* pDisp, VARIANT* URL, VARIANT* Frame, VARIANT* StatusCode,
                                     VARIANT_BOOL* Cancel) {
    Forward(
        [&](IBrowser& receiver) { return receiver.NavigateError(pDisp, URL, Frame, StatusCode, Cancel); });
}

void cBrowser::Browser_NewWindow2(IDispatch** ppDisp, VARIANT_BOOL* Cancel) {
    Forward([&](IBrowser& receiver) { return receiver.NewWindow2(ppDisp, Cancel); });
}

void cBrowser::Browser_OnFullScreen(VARIANT_BOOL FullScreen) {
    Forward([&](IBrowser& receiver) { return receiver.OnFullScreen(FullScreen); });
}

void cBrowser::Browser_ProgressChange(LONG Progress, LONG ProgressMax) {
    Forward([&](IBrowser& receiver) { return receiver.ProgressChange(Progress, ProgressMax); });
}

void cBrowser::Browser_TitleChange(BSTR Text) {
    Forward([&](IBrowser& receiver) { return receiver.TitleChange(Text); });
}

void cBrowser::Browser_WindowClosing(VARIANT_BOOL IsChildWindow, VARIANT_BOOL* Cancel) {
    Forward([&](IBrowser& receiver) { return receiver.WindowClosing(IsChildWindow, Cancel); });
}

}  // namespace kestrelguard
