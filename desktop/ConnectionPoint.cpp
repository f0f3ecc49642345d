#include "desktop/ConnectionPoint.h"

#include <olectl.h>

#include <utility>

namespace kestrelguard::desktop {

namespace {

/// Answers of a call whose other side is no longer there.
bool OtherSideIsGone(HRESULT hr) {
    return hr == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) ||
           hr == HRESULT_FROM_WIN32(RPC_S_CALL_FAILED) || hr == RPC_E_DISCONNECTED ||
           hr == RPC_E_SERVER_DIED || hr == RPC_E_SERVER_DIED_DNE;
}

}  // namespace

SinkCounts ConnectionPoint::Counts() const {
    const Hold hold(m_lock);
    SinkCounts counts = m_counts;
    counts.connected = static_cast<int>(m_sinks.size());
    return counts;
}

EventResult ConnectionPoint::Deliver(const EventCall& call, bool withException) {
    std::map<DWORD, ComPtr<IDispatch>> sinks;
    {
        const Hold hold(m_lock);
        sinks = m_sinks;
    }
    EventResult result;
    for (const auto& [cookie, sink] : sinks) {
        std::vector<VARIANT> arguments = call.InvokeOrder();
        DISPPARAMS parameters{arguments.empty() ? nullptr : arguments.data(), nullptr,
                              static_cast<UINT>(arguments.size()), 0};
        EXCEPINFO exception{};
        const HRESULT hr = sink->Invoke(call.Id(), IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                        &parameters, nullptr, withException ? &exception : nullptr, nullptr);
        ++result.sinks;
        if (FAILED(hr)) {
            result.hr = hr;
            if (exception.bstrDescription != nullptr) {
                result.description = exception.bstrDescription;
            }
            if (hr == DISP_E_EXCEPTION && FAILED(exception.scode)) {
                result.hr = exception.scode;
            }
        }
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        SysFreeString(exception.bstrHelpFile);
        if (OtherSideIsGone(hr)) {
            ComPtr<IDispatch> dropped;
            const Hold hold(m_lock);
            if (const auto found = m_sinks.find(cookie); found != m_sinks.end()) {
                dropped = std::move(found->second);
                m_sinks.erase(found);
                ++m_counts.lost;
            }
        }
    }
    result.cancelValue = call.CancelValue();
    result.cancel = result.cancelValue != VARIANT_FALSE;
    result.newBrowser = call.NewBrowserValue();
    return result;
}

PendingEvent ConnectionPoint::Start(EventCall call, std::shared_ptr<void> keepAlive, bool withException) {
    const auto shared = std::make_shared<EventCall>(std::move(call));
    return PendingEvent::Begin([this, shared, keepAlive = std::move(keepAlive), withException] {
        return Deliver(*shared, withException);
    });
}

void ConnectionPoint::DropSinks() {
    std::map<DWORD, ComPtr<IDispatch>> dropped;
    const Hold hold(m_lock);
    dropped.swap(m_sinks);
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* iid) noexcept {
    if (iid == nullptr) {
        return E_POINTER;
    }
    *iid = m_source;
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) noexcept {
    if (container == nullptr) {
        return E_POINTER;
    }
    *container = &m_owner;
    m_owner.AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) noexcept {
    if (sink == nullptr || cookie == nullptr) {
        return E_POINTER;
    }
    *cookie = 0;
    if (const HRESULT hr = m_advise.Enter(m_callee); FAILED(hr)) {
        const Hold hold(m_lock);
        ++m_counts.refused;
        return hr;
    }
    // Asked for in the order in which real browsers ask: the events' own id first.
    ComPtr<IDispatch> dispatch;
    if (FAILED(sink->QueryInterface(m_source, dispatch.PutVoid())) &&
        FAILED(sink->QueryInterface(IID_IDispatch, dispatch.PutVoid()))) {
        const Hold hold(m_lock);
        ++m_counts.refused;
        return CONNECT_E_CANNOTCONNECT;
    }
    const Hold hold(m_lock);
    *cookie = m_nextCookie++;
    m_sinks.emplace(*cookie, std::move(dispatch));
    ++m_counts.advises;
    return S_OK;
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) noexcept {
    if (const HRESULT hr = m_unadvise.Enter(m_callee); FAILED(hr)) {
        return hr;
    }
    ComPtr<IDispatch> dropped;
    const Hold hold(m_lock);
    const auto found = m_sinks.find(cookie);
    if (found == m_sinks.end()) {
        return CONNECT_E_NOCONNECTION;
    }
    dropped = std::move(found->second);
    m_sinks.erase(found);
    ++m_counts.unadvises;
    return S_OK;
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** connections) noexcept {
    if (connections != nullptr) {
        *connections = nullptr;
    }
    return E_NOTIMPL;
}

}  // namespace kestrelguard::desktop
