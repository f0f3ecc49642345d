#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/Com.h"
#include "desktop/Threads.h"

namespace kestrelguard::desktop {

/// One event on its way to the sinks: the dispatch id and its arguments in the shapes that real browsers
/// send. Arguments by reference live here for as long as the event does; every sink gets the same
/// references, so it sees what the sinks before it wrote.
class EventCall {
 public:
    explicit EventCall(DISPID id) noexcept : m_id(id) {}
    EventCall(EventCall&&) noexcept = default;
    EventCall& operator=(EventCall&&) noexcept = default;

    // Arguments, in the order of the event's declaration.
    EventCall&& Value(Variant argument) &&;            ///< by value
    EventCall&& Reference(Variant argument) &&;        ///< VT_BYREF|VT_VARIANT
    EventCall&& DoubleReference(Variant argument) &&;  ///< VT_BYREF|VT_VARIANT to VT_BYREF|VT_VARIANT
    EventCall&& Cancel(bool initially = false) &&;     ///< VT_BYREF|VT_BOOL
    EventCall&& NewBrowser() &&;                       ///< VT_BYREF|VT_DISPATCH, null at first

    DISPID Id() const noexcept { return m_id; }
    /// The Cancel that the sinks left; 0 when the event has none.
    VARIANT_BOOL CancelValue() const noexcept { return m_written ? m_written->cancel : VARIANT_FALSE; }
    /// The object that the sinks put into NewWindow2's ppDisp.
    ComPtr<IDispatch> NewBrowserValue() const noexcept;
    /// The arguments as `Invoke` takes them: last one first.
    std::vector<VARIANT> InvokeOrder() const;

    // The events that the program listens to.
    static EventCall BeforeNavigate2(IDispatch* browser, std::wstring_view url, LONG flags = 0,
                                     std::wstring_view frame = {}, std::string_view postData = {},
                                     std::wstring_view headers = {});
    static EventCall NavigateComplete2(IDispatch* browser, std::wstring_view url);
    static EventCall DocumentComplete(IDispatch* browser, std::wstring_view url);
    static EventCall DownloadBegin();
    static EventCall DownloadComplete();
    static EventCall FileDownload();                     ///< the form with Cancel alone
    static EventCall FileDownload(bool activeDocument);  ///< the form of later browsers
    static EventCall NewWindow2();
    static EventCall OnFullScreen(bool fullScreen);
    static EventCall ProgressChange(LONG progress, LONG maximum);
    static EventCall TitleChange(std::wstring_view title);
    static EventCall WindowClosing(bool isChildWindow);

    // Events that it does not listen to, but that arrive all the same.
    static EventCall NavigateError(IDispatch* browser, std::wstring_view url, std::wstring_view frame,
                                   LONG status);
    static EventCall StatusTextChange(std::wstring_view text);
    static EventCall CommandStateChange(LONG command, bool enabled);
    static EventCall OnQuit();

    // The events of the window list.
    static EventCall WindowRegistered(LONG cookie);
    static EventCall WindowRevoked(LONG cookie);

 private:
    struct Written {
        VARIANT_BOOL cancel = VARIANT_FALSE;
        IDispatch* newBrowser = nullptr;
        Written() = default;
        ~Written();
        Written(const Written&) = delete;
        Written& operator=(const Written&) = delete;
    };

    DISPID m_id;
    std::vector<Variant> m_arguments;
    std::unique_ptr<std::list<Variant>> m_referenced = std::make_unique<std::list<Variant>>();
    std::unique_ptr<Written> m_written = std::make_unique<Written>();

    VARIANT* Keep(Variant value);
};

/// What came of an event.
struct EventResult {
    /// S_OK when every sink took it, otherwise what the last failing sink answered.
    HRESULT hr = S_OK;
    /// The error text that came with a failure, when the event asked for one.
    std::wstring description;
    /// Whether Cancel came back as anything but 0.
    bool cancel = false;
    /// Cancel exactly as it came back.
    VARIANT_BOOL cancelValue = VARIANT_FALSE;
    /// NewWindow2's ppDisp as it came back.
    ComPtr<IDispatch> newBrowser;
    /// How many sinks were called.
    int sinks = 0;
    /// The sinks had not answered within the limit. The event is still on its way.
    bool timedOut = false;
};

/// An event that a thread of its own is delivering, so that its caller can go on meanwhile (and, say,
/// dismiss the message box that a sink shows).
class PendingEvent {
 public:
    /// Begins the delivery on a thread of its own.
    static PendingEvent Begin(std::function<EventResult()> deliver);

    /// Whether all sinks have answered, now or within the limit (milliseconds).
    bool Wait(DWORD limit) const noexcept { return m_state->done.Wait(limit); }
    bool Done() const noexcept { return Wait(0); }
    /// Waits up to the limit and returns what came of it; `timedOut` when nothing did.
    EventResult Result(DWORD limit = kEventLimit) const;

    /// How long an event may take (milliseconds) before it counts as lost.
    static constexpr DWORD kEventLimit = 30000;

 private:
    struct State {
        Signal done;
        EventResult result;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace kestrelguard::desktop
