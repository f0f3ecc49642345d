#pragma once

#include <olectl.h>

#include <atomic>
#include <memory>

#include "desktop/ComObject.h"
#include "desktop/ConnectionPoint.h"

namespace kestrelguard::desktop {

/// An interface as the system's type library of web browsers describes it; null when it does not.
ComPtr<ITypeInfo> DescriptionOf(REFIID iid);

/// The ground of the two objects that clients find first, a browser and the list of windows: scriptable by
/// `Interface`, a source of events, usable from any thread. `std::shared_ptr` is how this process holds them;
/// COM references are those of clients, so that `OutsideReferences` tells what they have left.
template <class Derived, class Interface>
class AutomationObject : public Interfaces<Interface, IConnectionPointContainer>,
                         public Callee,
                         public std::enable_shared_from_this<Derived> {
 public:
    ConnectionPoint& Events() noexcept { return m_events; }
    /// References that clients hold; 0 when none is left.
    LONG OutsideReferences() const noexcept { return m_references; }

    ULONG STDMETHODCALLTYPE AddRef() noexcept override {
        const Hold hold(m_referencesLock);
        if (++m_references == 1) {
            m_self = this->shared_from_this();
        }
        return static_cast<ULONG>(m_references);
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        std::shared_ptr<Derived> last;  // goes after the lock
        const Hold hold(m_referencesLock);
        const LONG left = --m_references;
        if (left == 0) {
            last = std::move(m_self);
        }
        return static_cast<ULONG>(left);
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        if (object != nullptr && iid == IID_IConnectionPointContainer) {
            *object = nullptr;
            if (const HRESULT hr = MayConnect(); FAILED(hr)) {
                return hr;
            }
        }
        return Interfaces<Interface, IConnectionPointContainer>::QueryInterface(iid, object);
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
        if (info == nullptr) {
            return E_POINTER;
        }
        *info = index == 0 ? DescriptionOf(__uuidof(Interface)).Detach() : nullptr;
        return *info != nullptr ? S_OK : DISP_E_BADINDEX;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        const ComPtr<ITypeInfo> info = DescriptionOf(__uuidof(Interface));
        return info ? DispGetIDsOfNames(info.Get(), names, count, ids) : E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception,
                                     UINT* badArgument) noexcept override {
        const ComPtr<ITypeInfo> info = DescriptionOf(__uuidof(Interface));
        return info ? DispInvoke(static_cast<Interface*>(this), info.Get(), id, flags, parameters, result,
                                 exception, badArgument)
                    : E_NOTIMPL;
    }

    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** points) noexcept override {
        if (points != nullptr) {
            *points = nullptr;
        }
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) noexcept override {
        if (point == nullptr) {
            return E_POINTER;
        }
        *point = nullptr;
        if (const HRESULT hr = m_find.Enter(*this); FAILED(hr)) {
            return hr;
        }
        if (iid != m_events.Source()) {
            return CONNECT_E_NOCONNECTION;
        }
        *point = &m_events;
        AddRef();
        return S_OK;
    }

 protected:
    explicit AutomationObject(const IID& events) noexcept : m_events(*this, *this, events) {}

    /// Asked before the object shows that it is a source of events; S_OK unless it must not.
    virtual HRESULT MayConnect() noexcept = 0;

 private:
    ConnectionPoint m_events;
    Watch m_find{"FindConnectionPoint"};
    Lock m_referencesLock;
    std::atomic<LONG> m_references{0};
    std::shared_ptr<Derived> m_self;  // set while clients hold references
};

}  // namespace kestrelguard::desktop
