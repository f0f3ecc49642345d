#include "desktop/Events.h"

#include <exdispid.h>

namespace kestrelguard::desktop {

namespace {

/// A text as browsers send it where there may be none: a null BSTR rather than an empty one.
Variant TextOrNull(std::wstring_view text) {
    Variant value;
    value.vt = VT_BSTR;
    value.bstrVal = text.empty() ? nullptr : Bstr(text).Detach();
    return value;
}

}  // namespace

EventCall::Written::~Written() {
    if (newBrowser != nullptr) {
        newBrowser->Release();
    }
}

VARIANT* EventCall::Keep(Variant value) {
    m_referenced->push_back(std::move(value));
    return &m_referenced->back();
}

EventCall&& EventCall::Value(Variant argument) && {
    m_arguments.push_back(std::move(argument));
    return std::move(*this);
}

EventCall&& EventCall::Reference(Variant argument) && {
    Variant reference;
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = Keep(std::move(argument));
    m_arguments.push_back(std::move(reference));
    return std::move(*this);
}

EventCall&& EventCall::DoubleReference(Variant argument) && {
    Variant inner;
    inner.vt = VT_BYREF | VT_VARIANT;
    inner.pvarVal = Keep(std::move(argument));
    return std::move(*this).Reference(std::move(inner));
}

EventCall&& EventCall::Cancel(bool initially) && {
    m_written->cancel = initially ? VARIANT_TRUE : VARIANT_FALSE;
    Variant reference;
    reference.vt = VT_BYREF | VT_BOOL;
    reference.pboolVal = &m_written->cancel;
    m_arguments.push_back(std::move(reference));
    return std::move(*this);
}

EventCall&& EventCall::NewBrowser() && {
    Variant reference;
    reference.vt = VT_BYREF | VT_DISPATCH;
    reference.ppdispVal = &m_written->newBrowser;
    m_arguments.push_back(std::move(reference));
    return std::move(*this);
}

ComPtr<IDispatch> EventCall::NewBrowserValue() const noexcept {
    return ComPtr<IDispatch>(m_written->newBrowser);
}

std::vector<VARIANT> EventCall::InvokeOrder() const {
    return std::vector<VARIANT>(m_arguments.rbegin(), m_arguments.rend());
}

EventCall EventCall::BeforeNavigate2(IDispatch* browser, std::wstring_view url, LONG flags,
                                     std::wstring_view frame, std::string_view postData,
                                     std::wstring_view headers) {
    return EventCall(DISPID_BEFORENAVIGATE2)
        .Value(Variant::Dispatch(browser))
        .Reference(Variant::Text(url))
        .Reference(Variant::Long(flags))
        .Reference(TextOrNull(frame))
        .DoubleReference(Variant::Bytes(postData))
        .Reference(TextOrNull(headers))
        .Cancel();
}

EventCall EventCall::NavigateComplete2(IDispatch* browser, std::wstring_view url) {
    return EventCall(DISPID_NAVIGATECOMPLETE2)
        .Value(Variant::Dispatch(browser))
        .Reference(Variant::Text(url));
}

EventCall EventCall::DocumentComplete(IDispatch* browser, std::wstring_view url) {
    return EventCall(DISPID_DOCUMENTCOMPLETE).Value(Variant::Dispatch(browser)).Reference(Variant::Text(url));
}

EventCall EventCall::DownloadBegin() {
    return EventCall(DISPID_DOWNLOADBEGIN);
}

EventCall EventCall::DownloadComplete() {
    return EventCall(DISPID_DOWNLOADCOMPLETE);
}

EventCall EventCall::FileDownload() {
    return EventCall(DISPID_FILEDOWNLOAD).Cancel();
}

EventCall EventCall::FileDownload(bool activeDocument) {
    return EventCall(DISPID_FILEDOWNLOAD).Value(Variant::Bool(activeDocument)).Cancel();
}

EventCall EventCall::NewWindow2() {
    return EventCall(DISPID_NEWWINDOW2).NewBrowser().Cancel();
}

EventCall EventCall::OnFullScreen(bool fullScreen) {
    return EventCall(DISPID_ONFULLSCREEN).Value(Variant::Bool(fullScreen));
}

EventCall EventCall::ProgressChange(LONG progress, LONG maximum) {
    return EventCall(DISPID_PROGRESSCHANGE).Value(Variant::Long(progress)).Value(Variant::Long(maximum));
}

EventCall EventCall::TitleChange(std::wstring_view title) {
    return EventCall(DISPID_TITLECHANGE).Value(Variant::Text(title));
}

EventCall EventCall::WindowClosing(bool isChildWindow) {
    return EventCall(DISPID_WINDOWCLOSING).Value(Variant::Bool(isChildWindow)).Cancel();
}

EventCall EventCall::NavigateError(IDispatch* browser, std::wstring_view url, std::wstring_view frame,
                                   LONG status) {
    return EventCall(DISPID_NAVIGATEERROR)
        .Value(Variant::Dispatch(browser))
        .Reference(Variant::Text(url))
        .Reference(TextOrNull(frame))
        .Reference(Variant::Long(status))
        .Cancel();
}

EventCall EventCall::StatusTextChange(std::wstring_view text) {
    return EventCall(DISPID_STATUSTEXTCHANGE).Value(Variant::Text(text));
}

EventCall EventCall::CommandStateChange(LONG command, bool enabled) {
    return EventCall(DISPID_COMMANDSTATECHANGE).Value(Variant::Long(command)).Value(Variant::Bool(enabled));
}

EventCall EventCall::OnQuit() {
    return EventCall(DISPID_ONQUIT);
}

EventCall EventCall::WindowRegistered(LONG cookie) {
    return EventCall(DISPID_WINDOWREGISTERED).Value(Variant::Long(cookie));
}

EventCall EventCall::WindowRevoked(LONG cookie) {
    return EventCall(DISPID_WINDOWREVOKED).Value(Variant::Long(cookie));
}

PendingEvent PendingEvent::Begin(std::function<EventResult()> deliver) {
    PendingEvent pending;
    RunDetached([state = pending.m_state, deliver = std::move(deliver)]() mutable {
        state->result = deliver();
        deliver = nullptr;  // what it holds goes before anybody hears of the end
        state->done.Set();
    });
    return pending;
}

EventResult PendingEvent::Result(DWORD limit) const {
    if (!Wait(limit)) {
        EventResult lost;
        lost.hr = HRESULT_FROM_WIN32(WAIT_TIMEOUT);
        lost.timedOut = true;
        return lost;
    }
    return m_state->result;
}

}  // namespace kestrelguard::desktop
