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
    Row<cBrowser, &cBrowser::Browser_NewWindow2>(251), Row<cBrowser, &cBrowser::Browser_OnFullScreen>(258),
    Row<cBrowser, &cBrowser::Browser_ProgressChange>(108), Row<cBrowser, &cBrowser::Browser_TitleChange>(113),
    Row<cBrowser, &cBrowser::Browser_WindowClosing>(263),
    // Kept: nothing is bound to Browser_NavigateError, so no NavigateError is ever reported.
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

void cBrowser::CutOff() noexcept {
    if (m_sink) {
        m_sink->Detach();
        CoDisconnectObject(m_sink.Get(), 0);
    }
    // The receiver may go; the connection and the browser may not: that would be calls.
    const ComPtr<IBrowser> receiver = std::move(m_interFace);
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

#define KG_HANDLER(name, event, handler, parameters, arguments)               \
    void cBrowser::handler parameters {                                       \
        Forward([&](IBrowser& receiver) { return receiver.name arguments; }); \
    }
KG_BROWSER_OPERATIONS(KG_HANDLER)
#undef KG_HANDLER

}  // namespace kestrelguard
