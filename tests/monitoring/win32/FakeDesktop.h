#pragma once

#include <windows.h>

#include <exdisp.h>
#include <exdispid.h>
#include <ocidl.h>
#include <olectl.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "runtime/win32/Com.h"

/// Browsers and a list of windows inside the test's own process: objects with the platform's interfaces that
/// count what is asked of them, fail on demand and let a test step in where a real call would let others in.
namespace kestrelguard::fakes {

using Hook = std::function<void()>;

/// A place where a test steps in: runs once, when the count of calls until then has gone down to 0.
class StepIn {
 public:
    void At(int calls, Hook hook) {
        m_calls = calls;
        m_hook = std::move(hook);
    }
    void Pass() {
        if (m_hook && m_calls-- == 0) {
            const Hook hook = std::exchange(m_hook, nullptr);
            hook();
        }
    }

 private:
    int m_calls = 0;
    Hook m_hook;
};

/// The values of an event, first argument first; what COM wants is the reverse.
class Arguments {
 public:
    Arguments(std::initializer_list<VARIANT> values) : m_values(values) {
        std::vector<VARIANT>(m_values.rbegin(), m_values.rend()).swap(m_values);
    }
    DISPPARAMS Get() {
        DISPPARAMS params{};
        params.cArgs = static_cast<UINT>(m_values.size());
        params.rgvarg = m_values.empty() ? nullptr : m_values.data();
        return params;
    }
    /// The delivered value of an argument, counted from the first.
    VARIANT& At(std::size_t index) { return m_values[m_values.size() - 1 - index]; }

 private:
    std::vector<VARIANT> m_values;
};

inline VARIANT Of(VARTYPE type) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    return value;
}
inline VARIANT Object(IDispatch* object) {
    VARIANT value = Of(VT_DISPATCH);
    value.pdispVal = object;
    return value;
}
inline VARIANT ObjectRef(IDispatch** object) {
    VARIANT value = Of(VT_BYREF | VT_DISPATCH);
    value.ppdispVal = object;
    return value;
}
inline VARIANT Ref(VARIANT* inner) {
    VARIANT value = Of(VT_BYREF | VT_VARIANT);
    value.pvarVal = inner;
    return value;
}
inline VARIANT BoolRef(VARIANT_BOOL* inner) {
    VARIANT value = Of(VT_BYREF | VT_BOOL);
    value.pboolVal = inner;
    return value;
}
inline VARIANT Bool(bool is) {
    VARIANT value = Of(VT_BOOL);
    value.boolVal = is ? VARIANT_TRUE : VARIANT_FALSE;
    return value;
}
inline VARIANT Long(LONG number) {
    VARIANT value = Of(VT_I4);
    value.lVal = number;
    return value;
}
/// The text is not owned.
inline VARIANT Text(BSTR text) {
    VARIANT value = Of(VT_BSTR);
    value.bstrVal = text;
    return value;
}

/// One set of events that sinks connect to.
class Connections final : public ComObject<Connections, IConnectionPoint> {
 public:
    explicit Connections(REFIID events) : m_events(events) {}

    void* Find(REFIID iid) noexcept {
        return iid == IID_IUnknown || iid == IID_IConnectionPoint ? static_cast<IConnectionPoint*>(this)
                                                                  : nullptr;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) noexcept override {
        *iid = m_events;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) noexcept override {
        ++advised;
        beforeAdvise.Pass();
        if (FAILED(refusal)) {
            return refusal;
        }
        const auto heard = ComPtr<IUnknown>(sink);
        ComPtr<IDispatch> events;
        if (FAILED(sink->QueryInterface(m_events, reinterpret_cast<void**>(events.Put())))) {
            return CONNECT_E_CANNOTCONNECT;
        }
        *cookie = m_next++;
        m_sinks.emplace(*cookie, std::move(events));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) noexcept override {
        ++unadvised;
        beforeUnadvise.Pass();
        if (FAILED(unadviseFailure)) {
            return unadviseFailure;
        }
        return m_sinks.erase(cookie) == 1 ? S_OK : CONNECT_E_NOCONNECTION;
    }
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) noexcept override { return E_NOTIMPL; }

    /// Fires to all sinks that are connected now; the last failure, or S_OK.
    HRESULT Fire(DISPID id, Arguments arguments = {}, EXCEPINFO* exception = nullptr) {
        HRESULT answer = S_OK;
        const auto sinks = m_sinks;
        for (const auto& [cookie, sink] : sinks) {
            DISPPARAMS params = arguments.Get();
            const HRESULT one =
                sink->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, exception, nullptr);
            answer = FAILED(one) ? one : answer;
        }
        return answer;
    }
    std::size_t Sinks() const { return m_sinks.size(); }
    /// The one sink; null unless there is exactly one.
    ComPtr<IDispatch> Sink() const { return m_sinks.size() == 1 ? m_sinks.begin()->second : nullptr; }
    /// Forgets the sinks as a browser does that ends without a word.
    void Drop() { m_sinks.clear(); }

    int advised = 0;
    int unadvised = 0;
    HRESULT refusal = S_OK;
    HRESULT unadviseFailure = S_OK;
    StepIn beforeAdvise;
    StepIn beforeUnadvise;

 private:
    const GUID m_events;
    DWORD m_next = 1;
    std::map<DWORD, ComPtr<IDispatch>> m_sinks;
};

/// An object with one set of events.
template <class Derived, class Interface>
class EventSource : public DispatchObject<Derived, Interface, IConnectionPointContainer> {
 public:
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept override {
        GUID events{};
        connections->GetConnectionInterface(&events);
        *point = iid == events ? ComPtr<Connections>(connections).Detach() : nullptr;
        return *point == nullptr ? CONNECT_E_NOCONNECTION : S_OK;
    }
    HRESULT Fire(DISPID id, Arguments arguments = {}, EXCEPINFO* exception = nullptr) {
        return connections->Fire(id, std::move(arguments), exception);
    }

    /// References to the object, the test's own included.
    ULONG References() {
        this->AddRef();
        return this->Release();
    }

    const ComPtr<Connections> connections;

 protected:
    explicit EventSource(REFIID events) : connections(MakeCom<Connections>(events)) {}
    ~EventSource() = default;
};

/// A browser window.
class FakeBrowser final : public EventSource<FakeBrowser, IWebBrowser2> {
 public:
    explicit FakeBrowser(LONG frameHandle = 0) : EventSource(DIID_DWebBrowserEvents2), handle(frameHandle) {}
    ~FakeBrowser() {
        if (atEnd) {
            atEnd();
        }
    }

    void* Find(REFIID iid) noexcept {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IWebBrowser2) {
            return static_cast<IWebBrowser2*>(this);
        }
        return iid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(this) : nullptr;
    }

    LONG handle;
    HRESULT failure = S_OK;
    /// Given with a failure when not empty.
    std::wstring description;
    int handleReads = 0;
    StepIn beforeHandle;
    /// Runs when the last reference goes: that lets others in, too.
    Hook atEnd;
    std::wstring name, url, status;
    struct Navigation {
        bool second;
        std::wstring address;
        std::vector<VARIANT> optional;
    };
    std::vector<Navigation> navigations;

    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* frame) noexcept override {
        ++handleReads;
        beforeHandle.Pass();
        *frame = handle;
        return Failed();
    }
    HRESULT STDMETHODCALLTYPE get_LocationName(BSTR* text) noexcept override { return Give(name, text); }
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* text) noexcept override { return Give(url, text); }
    HRESULT STDMETHODCALLTYPE get_StatusText(BSTR* text) noexcept override { return Give(status, text); }
    HRESULT STDMETHODCALLTYPE Navigate(BSTR address, VARIANT* flags, VARIANT* frame, VARIANT* data,
                                       VARIANT* headers) noexcept override {
        navigations.push_back(
            {false, std::wstring(address, SysStringLen(address)), {*flags, *frame, *data, *headers}});
        return Failed();
    }
    HRESULT STDMETHODCALLTYPE Navigate2(VARIANT* address, VARIANT* flags, VARIANT* frame, VARIANT* data,
                                        VARIANT* headers) noexcept override {
        const std::wstring text =
            address->vt == VT_BSTR ? std::wstring(address->bstrVal, SysStringLen(address->bstrVal)) : L"?";
        navigations.push_back({true, text, {*flags, *frame, *data, *headers}});
        return Failed();
    }

    // The rest of the interface, which nobody here uses.
    // clang-format off
    HRESULT STDMETHODCALLTYPE GoBack() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GoForward() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GoHome() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GoSearch() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Refresh() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Refresh2(VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Stop() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Application(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Parent(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Container(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Document(IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_TopLevelContainer(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Type(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Left(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Left(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Top(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Top(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Width(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Width(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Height(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Height(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Busy(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Quit() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ClientToWindow(int*, int*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE PutProperty(BSTR, VARIANT) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProperty(BSTR, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Name(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FullName(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Path(BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Visible(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Visible(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_StatusBar(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_StatusBar(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_StatusText(BSTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ToolBar(int*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_ToolBar(int) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_MenuBar(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_MenuBar(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_FullScreen(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_FullScreen(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QueryStatusWB(OLECMDID, OLECMDF*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ExecWB(OLECMDID, OLECMDEXECOPT, VARIANT*, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ShowBrowserBar(VARIANT*, VARIANT*, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_ReadyState(READYSTATE*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Offline(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Offline(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Silent(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Silent(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RegisterAsBrowser(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_RegisterAsBrowser(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_RegisterAsDropTarget(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_RegisterAsDropTarget(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_TheaterMode(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_TheaterMode(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_AddressBar(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_AddressBar(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Resizable(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_Resizable(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    // clang-format on

 private:
    HRESULT Failed() noexcept {
        if (FAILED(failure) && !description.empty()) {
            LeaveErrorInfo(RunTimeError(failure, description));
        }
        return failure;
    }
    HRESULT Give(const std::wstring& what, BSTR* text) noexcept {
        *text = SUCCEEDED(failure) ? Bstr(what).Detach() : nullptr;
        return Failed();
    }
};

/// The list of windows; each walk goes over the entries as they were when it began.
class FakeShellWindows final : public EventSource<FakeShellWindows, IShellWindows> {
 public:
    FakeShellWindows() : EventSource(DIID_DShellWindowsEvents) {}

    void* Find(REFIID iid) noexcept {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(IShellWindows)) {
            return static_cast<IShellWindows*>(this);
        }
        return iid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(this) : nullptr;
    }

    /// Objects in the list; they need not be browsers.
    std::vector<ComPtr<IDispatch>> entries;
    int walks = 0;
    HRESULT failure = S_OK;
    /// After so many entries a walk fails with `nextFailure`; -1 never.
    int failAfter = -1;
    HRESULT nextFailure = E_FAIL;
    StepIn beforeWalk;

    HRESULT STDMETHODCALLTYPE _NewEnum(IUnknown** walk) noexcept override {
        ++walks;
        beforeWalk.Pass();
        *walk = nullptr;
        if (FAILED(failure)) {
            return failure;
        }
        *walk = MakeCom<Walk>(entries, failAfter, nextFailure).Detach();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Count(LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Item(VARIANT, IDispatch**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Register(IDispatch*, LONG, int, LONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RegisterPending(LONG, VARIANT*, VARIANT*, int, LONG*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Revoke(LONG) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnNavigate(LONG, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnActivated(LONG, VARIANT_BOOL) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindWindowSW(VARIANT*, VARIANT*, int, LONG*, int,
                                           IDispatch**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE OnCreated(LONG, IUnknown*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ProcessAttachDetach(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }

 private:
    class Walk final : public ComObject<Walk, IEnumVARIANT> {
     public:
        Walk(std::vector<ComPtr<IDispatch>> entries, int failAfter, HRESULT failure)
            : m_entries(std::move(entries)), m_failAfter(failAfter), m_failure(failure) {}

        void* Find(REFIID iid) noexcept {
            return iid == IID_IUnknown || iid == IID_IEnumVARIANT ? static_cast<IEnumVARIANT*>(this)
                                                                  : nullptr;
        }
        HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* values, ULONG* fetched) noexcept override {
            if (m_failAfter >= 0 && m_at >= static_cast<std::size_t>(m_failAfter)) {
                return m_failure;
            }
            ULONG given = 0;
            for (; given < wanted && m_at < m_entries.size(); ++given, ++m_at) {
                values[given] = Object(ComPtr<IDispatch>(m_entries[m_at]).Detach());
            }
            if (fetched != nullptr) {
                *fetched = given;
            }
            return given == wanted ? S_OK : S_FALSE;
        }
        HRESULT STDMETHODCALLTYPE Skip(ULONG) noexcept override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE Reset() noexcept override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT**) noexcept override { return E_NOTIMPL; }

     private:
        const std::vector<ComPtr<IDispatch>> m_entries;
        const int m_failAfter;
        const HRESULT m_failure;
        std::size_t m_at = 0;
    };
};

/// An object that is no browser.
class Stranger final : public DispatchObject<Stranger, IDispatch> {
 public:
    void* Find(REFIID iid) noexcept {
        return iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
    }
};

/// A desktop with windows to open, close and announce.
class FakeDesktop {
 public:
    ComPtr<FakeBrowser> Open(LONG handle) {
        auto browser = MakeCom<FakeBrowser>(handle);
        shell->entries.emplace_back(browser.Get());
        return browser;
    }
    void Remove(const ComPtr<FakeBrowser>& browser) {
        std::erase_if(shell->entries, [&](const ComPtr<IDispatch>& entry) {
            return entry.Get() == static_cast<IDispatch*>(browser.Get());
        });
    }
    HRESULT Registered() { return shell->Fire(200, {Long(1)}); }
    HRESULT Revoked() { return shell->Fire(201, {Long(1)}); }
    std::function<ComPtr<IShellWindows>()> Maker() {
        return [this] {
            ++made;
            beforeMake.Pass();
            if (FAILED(makeFailure)) {
                throw RunTimeError(makeFailure);
            }
            return ComPtr<IShellWindows>(shell.Get());
        };
    }

    const ComPtr<FakeShellWindows> shell = MakeCom<FakeShellWindows>();
    int made = 0;
    HRESULT makeFailure = S_OK;
    StepIn beforeMake;
};

}  // namespace kestrelguard::fakes
