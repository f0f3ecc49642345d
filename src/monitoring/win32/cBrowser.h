#pragma once

#include <windows.h>

#include <exdisp.h>

#include <array>

#include "monitoring/win32/EventSink.h"
#include "monitoring/win32/IBrowser.h"
#include "runtime/win32/Com.h"

namespace kestrelguard {

/// The sink of one browser window: forwards the window's events, each with its own arguments, to one
/// receiver. Every event makes two calls: SetBrowserInst, then the event's own operation. What they fail with
/// is what the browser gets as the event's answer.
class cBrowser final : public ComObject<cBrowser, IUnknown> {
 public:
    cBrowser() = default;
    /// Ends the connection.
    ~cBrowser();
    cBrowser(const cBrowser&) = delete;
    cBrowser& operator=(const cBrowser&) = delete;

    /// The receiver; the sink holds a reference to it.
    const ComPtr<IBrowser>& InterFace() const noexcept { return m_interFace; }
    void SetInterFace(ComPtr<IBrowser> receiver) noexcept { m_interFace = std::move(receiver); }

    /// The watched browser; null when there is none.
    const ComPtr<IWebBrowser2>& Browser() const noexcept { return m_browser; }
    /// Ends the old connection and connects to the new browser's events; null only disconnects. Throws
    /// RunTimeError when connecting fails; there is no browser then.
    void SetBrowser(ComPtr<IWebBrowser2> browser);

    /// Ends the connection without a call to the browser, which keeps this object's reference to it.
    void CutOff() noexcept;

    void* Find(REFIID iid) noexcept { return iid == IID_IUnknown ? static_cast<IUnknown*>(this) : nullptr; }

 private:
    static const std::array<EventRow<cBrowser>, 11> kEvents;

    /// Browser_<event>: two calls of the receiver.
#define KG_HANDLER(name, event, handler, parameters, arguments) void handler parameters;
    KG_BROWSER_OPERATIONS(KG_HANDLER)
#undef KG_HANDLER

    template <class Operation>
    void Forward(Operation&& operation);
    void Disconnect() noexcept;

    ComPtr<IBrowser> m_interFace;
    ComPtr<IWebBrowser2> m_browser;
    ComPtr<EventSink<cBrowser>> m_sink;
    Advise m_connection;
};

}  // namespace kestrelguard
