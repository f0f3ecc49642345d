#include "app/win32/FormEvents.h"

#include "monitoring/win32/Answering.h"
#include "monitoring/win32/ComBrowser.h"

namespace kestrelguard {

namespace {

/// Runs a handler on a browser's Cancel argument, which is only written when the handler changed it.
template <class Handler>
void WithCancel(VARIANT_BOOL& Cancel, Handler&& handler) {
    const bool before = Cancel != VARIANT_FALSE;
    bool cancel = before;
    handler(cancel);
    if (cancel != before) {
        Cancel = cancel ? VARIANT_TRUE : VARIANT_FALSE;
    }
}

}  // namespace

void FormEvents::BrowserNavigating(IWebBrowser2*& Browser, IDispatch* /*pDisp*/, VARIANT& URL,
                                   VARIANT& /*Flags*/, VARIANT& /*TargetFrameName*/, VARIANT& /*PostData*/,
                                   VARIANT& /*Headers*/, VARIANT_BOOL& Cancel) {
    ComBrowser browser(Browser);
    const std::wstring address = TextOf(URL);
    WithCancel(Cancel, [&](bool& cancel) {
        m_parts.siteBlocking.IEEvents1_BrowserNavigating(browser, address, cancel);
    });
}

void FormEvents::DocumentComplete(IWebBrowser2*& /*Browser*/, IDispatch*& /*pDisp*/, VARIANT& URL) {
    m_parts.updateCheck.DocumentComplete(TextOf(URL));
}

void FormEvents::NewWindow(IWebBrowser2*& Browser, IDispatch*& /*ppDisp*/, VARIANT_BOOL& Cancel) {
    ComBrowser browser(Browser);
    WithCancel(Cancel, [&](bool& cancel) { m_parts.popupPolicy.HandleNewWindow(browser, cancel); });
}

void FormEvents::TitleChange(IWebBrowser2*& Browser, const std::wstring& Text) {
    ComBrowser browser(Browser);
    m_parts.titleBlocking.IEEvents1_TitleChange(browser, Text);
}

void FormEvents::BrowserCreated(IWebBrowser2* Browser) {
    m_parts.browserTree.BrowserCreated(ComBrowser(Browser, FrameOf(Browser)));
}

void FormEvents::BrowserDestroyed() {
    m_parts.browserTree.BrowserDestroyed();
}

std::vector<std::shared_ptr<Browser>> TreeEventsControl::Browsers() const {
    std::vector<std::shared_ptr<Browser>> browsers;
    for (ComBrowser& browser : BrowsersIn(*m_control->Browsers())) {
        browsers.push_back(std::make_shared<ComBrowser>(std::move(browser)));
    }
    return browsers;
}

}  // namespace kestrelguard
