#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desktop/AutomationObject.h"
#include "desktop/UnofferedMembers.h"

namespace kestrelguard::desktop {

/// What clients can read of a browser and tests can make fail.
enum class Property { Hwnd, LocationUrl, LocationName, StatusText, Visible, Busy, Navigate, Connect, Count_ };

/// How a browser comes into being.
struct BrowserOptions {
    std::wstring url = L"http://www.home.example/";
    std::wstring title = L"Home";
    std::wstring statusText;
    /// A frame handle to report instead of the own window's: browsers that share a frame.
    LONG frame = 0;
    /// A shell folder window rather than a web page.
    bool folder = false;
    /// With address bar, page and status bar.
    bool dressed = false;
    /// Whether the window is visible from the start.
    bool shown = false;
    /// Whether a page has opened it.
    bool opened = false;
    /// Whether opening it fires WindowRegistered.
    bool announced = true;
    /// Whether `Navigate` really loads, firing the events of a load. Otherwise it is only written down.
    bool navigates = true;
};

/// A `Navigate` or `Navigate2` call as it came in.
struct NavigateCall {
    std::wstring url;
    bool second = false;  ///< Navigate2
    VARTYPE urlType = VT_EMPTY;
    /// Types of Flags, TargetFrameName, PostData and Headers; VT_ERROR is an omitted argument, VT_VOID a
    /// null pointer (possible only within one process).
    std::array<VARTYPE, 4> optional{};
};

class BrowserObject;

/// Who keeps the windows of the desktop together.
class BrowserOwner {
 public:
    virtual ~BrowserOwner() = default;
    /// The browser's window was asked to close, or `Quit` was called. Comes on a thread that may call out.
    virtual void CloseRequested(BrowserObject& browser) noexcept = 0;
    /// A page of the browser wants a window of its own and no sink objected. `replacement` is what the sinks
    /// offered for it, if anything.
    virtual void OpenWindow(BrowserObject& opener, const std::wstring& url,
                            ComPtr<IDispatch> replacement) noexcept = 0;

    // What a person does with the extra entries of a dressed window's menu. Nothing unless the owner can.
    /// Opens a window in a process of its own.
    virtual void OpenApart() noexcept {}
    /// Stops the processes of such windows, or lets them go on.
    virtual void StopApart() noexcept {}
    /// Whether the owner can do these two.
    virtual bool CanOpenApart() const noexcept { return false; }
};

/// The COM object of one browser window, usable from any thread.
class BrowserObject final : public UnofferedMembers<AutomationObject<BrowserObject, IWebBrowser2>> {
 public:
    static std::shared_ptr<BrowserObject> Create(BrowserOwner& owner, UiThread& ui, BrowserOptions options);
    ~BrowserObject() override;

    IDispatch* Dispatch() noexcept { return static_cast<IWebBrowser2*>(this); }

    /// The own window; null once it is closed.
    HWND Window() const;
    const BrowserOptions& Options() const noexcept { return m_options; }
    BrowserOwner& Owner() const noexcept { return m_owner; }

    std::wstring Url() const;
    std::wstring Title() const;
    std::wstring StatusText() const;
    bool Busy() const;
    std::vector<NavigateCall> NavigateCalls() const;
    bool QuitCalled() const;

    void SetUrl(std::wstring url);
    void SetTitle(std::wstring title);
    /// Without an event.
    void SetStatusText(std::wstring text);
    /// With StatusTextChange, from the browser's own thread.
    void ShowStatusText(std::wstring text);

    /// The reads (or, for Navigate and Connect, calls) of a property from outside.
    Watch& Of(Property property) { return m_watches[static_cast<std::size_t>(property)]; }
    void ResetReads();
    /// Lets no read of the property be answered, while the window and all else go on, until `LetGo` or the
    /// browser's end.
    void Stall(Property property);
    void LetGo(Property property);
    /// Whether some property stalls.
    bool Stalls() const;

    /// Loads a page as a user would: asynchronously, with all events.
    void Load(const std::wstring& url);
    /// What a click on a link that asks for a new window does: NewWindow2, then the window unless cancelled.
    void RequestNewWindow(const std::wstring& url);
    /// Clicks a link of the page that the dressed window shows. False when there is none.
    bool ClickLink(const std::wstring& link) const;
    /// Where that link is on the screen; empty when there is none.
    RECT LinkPlace(const std::wstring& link) const;
    /// Whether no load or click is under way, now or within the limit (milliseconds).
    bool WaitIdle(DWORD limit) const { return m_work.WaitIdle(limit); }
    /// Does the task on the browser's own thread, after what it is doing.
    void Post(Task task) { m_work.Post(std::move(task)); }

    /// Ends the browser: no more work, window gone, clients disconnected. Fires nothing.
    void End(bool disconnectClients);
    bool Ended() const;

    /// Dies.
    void Disconnect() noexcept override { End(true); }

    // IWebBrowser
    HRESULT STDMETHODCALLTYPE Navigate(BSTR url, VARIANT* flags, VARIANT* frame, VARIANT* postData,
                                       VARIANT* headers) noexcept override;
    HRESULT STDMETHODCALLTYPE Refresh() noexcept override;
    HRESULT STDMETHODCALLTYPE Refresh2(VARIANT* level) noexcept override;
    HRESULT STDMETHODCALLTYPE Stop() noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE get_Application(IDispatch** application) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Parent(IDispatch** parent) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Container(IDispatch** container) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override;
    HRESULT STDMETHODCALLTYPE get_TopLevelContainer(VARIANT_BOOL* yes) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Type(BSTR* type) noexcept override;
    HRESULT STDMETHODCALLTYPE get_LocationName(BSTR* name) noexcept override;
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* url) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Busy(VARIANT_BOOL* busy) noexcept override;

    // IWebBrowserApp
    HRESULT STDMETHODCALLTYPE Quit() noexcept override;
    HRESULT STDMETHODCALLTYPE GetProperty(BSTR name, VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) noexcept override;
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* handle) noexcept override;
    HRESULT STDMETHODCALLTYPE get_FullName(BSTR* name) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Path(BSTR* path) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Visible(VARIANT_BOOL* visible) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Visible(VARIANT_BOOL visible) noexcept override;
    HRESULT STDMETHODCALLTYPE get_StatusText(BSTR* text) noexcept override;
    HRESULT STDMETHODCALLTYPE put_StatusText(BSTR text) noexcept override;

    // IWebBrowser2
    HRESULT STDMETHODCALLTYPE Navigate2(VARIANT* url, VARIANT* flags, VARIANT* frame, VARIANT* postData,
                                        VARIANT* headers) noexcept override;
    HRESULT STDMETHODCALLTYPE get_ReadyState(READYSTATE* state) noexcept override;

 private:
    BrowserObject(BrowserOwner& owner, UiThread& ui, BrowserOptions options);

    /// Counts a read from outside; what it has to answer.
    HRESULT Read(Property property) noexcept;
    HRESULT Text(Property property, const std::wstring& value, BSTR* text) noexcept;
    HRESULT Self(IDispatch** object) noexcept;
    HRESULT TakeNavigation(NavigateCall call);
    void LoadNow(const std::wstring& url);
    HRESULT MayConnect() noexcept override { return Read(Property::Connect); }
    void Announce(EventCall call) { Events().Deliver(call); }
    void Changed() const;

    BrowserOwner& m_owner;
    UiThread& m_ui;
    const BrowserOptions m_options;
    mutable Lock m_lock;
    HWND m_window = nullptr;
    std::wstring m_url;
    std::wstring m_title;
    std::wstring m_statusText;
    bool m_busy = false;
    bool m_quit = false;
    bool m_ended = false;
    std::vector<NavigateCall> m_navigations;
    // In the order of `Property`.
    std::array<Watch, static_cast<std::size_t>(Property::Count_)> m_watches{
        Watch("HWND"),    Watch("LocationURL"), Watch("LocationName"), Watch("StatusText"),
        Watch("Visible"), Watch("Busy"),        Watch("Navigate"),     Watch("Connect")};
    WorkQueue m_work;
};

}  // namespace kestrelguard::desktop
