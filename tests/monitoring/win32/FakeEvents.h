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

/// Event sources inside the test's own process, and what they deliver: they count what is asked of them, fail
/// on demand and let a test step in where a real call would let others in.
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

}  // namespace kestrelguard::fakes
