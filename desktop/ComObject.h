#pragma once

#include <windows.h>

#include <exdisp.h>

#include <memory>
#include <utility>

#include "desktop/Com.h"

namespace kestrelguard::desktop {

/// Whether an object with the interface has the one of that id: itself, or one that it extends.
template <class Interface>
bool Includes(REFIID iid) noexcept {
    return iid == __uuidof(Interface);
}
template <>
inline bool Includes<IShellWindows>(REFIID iid) noexcept {
    return iid == IID_IShellWindows || iid == IID_IDispatch;
}
template <>
inline bool Includes<IWebBrowser2>(REFIID iid) noexcept {
    return iid == IID_IWebBrowser2 || iid == IID_IWebBrowserApp || iid == IID_IWebBrowser ||
           iid == IID_IDispatch;
}

/// Answers for its interfaces, of which the first stands for IUnknown. How long it lives is another's matter.
template <class First, class... Others>
class Interfaces : public First, public Others... {
 public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (iid == IID_IUnknown) {
            *object = static_cast<First*>(this);
        } else if (!Offer<First>(iid, object)) {
            static_cast<void>((... || Offer<Others>(iid, object)));
        }
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        static_cast<First*>(this)->AddRef();
        return S_OK;
    }

 private:
    template <class Interface>
    bool Offer(REFIID iid, void** object) noexcept {
        if (!Includes<Interface>(iid)) {
            return false;
        }
        *object = static_cast<Interface*>(this);
        return true;
    }
};

/// An object that lives as long as references to it do: made by MakeCom, ended by the last `Release`. From
/// any thread.
template <class... Offered>
class ComObject : public Interfaces<Offered...> {
 public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;
    virtual ~ComObject() = default;

    ULONG STDMETHODCALLTYPE AddRef() noexcept override {
        return static_cast<ULONG>(InterlockedIncrement(&m_references));
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        const LONG left = InterlockedDecrement(&m_references);
        if (left == 0) {
            const std::unique_ptr<ComObject> last(this);
        }
        return static_cast<ULONG>(left);
    }

 private:
    LONG m_references = 0;
};

/// Makes such an object.
template <class Object, class... Arguments>
ComPtr<Object> MakeCom(Arguments&&... arguments) {
    return ComPtr<Object>(std::make_unique<Object>(std::forward<Arguments>(arguments)...).release());
}

}  // namespace kestrelguard::desktop
