#pragma once

#include <windows.h>

#include <objbase.h>
#include <ocidl.h>
#include <oleauto.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "runtime/win32/ComError.h"

/// Owners of what COM hands out, and the ground of our own COM objects. Nothing converts by itself and
/// nothing overloads "&".
namespace kestrelguard {

/// Holds one reference to an object.
template <class Interface>
class ComPtr {
 public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    /// Shares the object: takes a reference of its own.
    explicit ComPtr(Interface* object) noexcept : m_object(object) {
        if (m_object != nullptr) {
            m_object->AddRef();
        }
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_object) {}
    ComPtr(ComPtr&& other) noexcept : m_object(other.Detach()) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComPtr() { Reset(); }

    /// Takes over a reference that the caller owns.
    static ComPtr Attach(Interface* object) noexcept {
        ComPtr owner;
        owner.m_object = object;
        return owner;
    }

    Interface* Get() const noexcept { return m_object; }
    Interface* operator->() const noexcept { return m_object; }
    Interface& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }
    /// Whether both hold the same pointer.
    bool operator==(const ComPtr& other) const noexcept { return m_object == other.m_object; }

    void Reset() noexcept {
        if (Interface* const old = Detach()) {
            old->Release();
        }
    }
    /// Gives the reference to the caller.
    Interface* Detach() noexcept { return std::exchange(m_object, nullptr); }
    /// Lets go of the old object; where a call stores the new one, with its reference.
    Interface** Put() noexcept {
        Reset();
        return &m_object;
    }
    void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }
    /// The pointer itself, as an in/out argument: whoever replaces it releases the old object and leaves a
    /// reference to the new one.
    Interface*& InOut() noexcept { return m_object; }

    /// Another interface of the object; null when it has none, or when there is no object.
    template <class Other>
    ComPtr<Other> As() const noexcept {
        ComPtr<Other> other;
        if (m_object == nullptr || FAILED(m_object->QueryInterface(__uuidof(Other), other.PutVoid()))) {
            return nullptr;
        }
        return other;
    }

 private:
    Interface* m_object = nullptr;
};

/// An interface of an object, null for no object. Throws the call's error when the object lacks it.
template <class Interface>
ComPtr<Interface> Query(IUnknown* object) {
    ComPtr<Interface> found;
    if (object != nullptr) {
        Check(object->QueryInterface(__uuidof(Interface), found.PutVoid()));
    }
    return found;
}

/// Owns a COM text; null is the empty text. A text may hold any character, NUL included.
class Bstr {
 public:
    Bstr() noexcept = default;
    explicit Bstr(std::wstring_view text)
        : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
        if (m_text == nullptr) {
            throw std::bad_alloc();
        }
    }
    Bstr(Bstr&& other) noexcept : m_text(other.Detach()) {}
    Bstr& operator=(Bstr&& other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { SysFreeString(m_text); }

    BSTR Get() const noexcept { return m_text; }
    std::size_t Length() const noexcept { return SysStringLen(m_text); }
    std::wstring Text() const { return std::wstring(m_text == nullptr ? L"" : m_text, Length()); }
    BSTR Detach() noexcept { return std::exchange(m_text, nullptr); }
    BSTR* Put() noexcept {
        SysFreeString(Detach());
        return &m_text;
    }

 private:
    BSTR m_text = nullptr;
};

/// Owns a VARIANT and what it holds.
class Variant {
 public:
    Variant() noexcept { VariantInit(&m_value); }
    explicit Variant(std::wstring_view text) : Variant() {
        m_value.bstrVal = Bstr(text).Detach();
        m_value.vt = VT_BSTR;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(&m_value); }

    /// What stands for an optional argument that is left out.
    static Variant Omitted() noexcept { return Variant(DISP_E_PARAMNOTFOUND); }

    VARIANT& Get() noexcept { return m_value; }
    const VARIANT& Get() const noexcept { return m_value; }
    VARIANT* Put() noexcept {
        VariantClear(&m_value);
        return &m_value;
    }

 private:
    explicit Variant(SCODE code) noexcept : Variant() {
        m_value.vt = VT_ERROR;
        m_value.scode = code;
    }

    VARIANT m_value;
};

/// The connection of a sink to an object's events; ends with its destruction, even when the object's process
/// is gone.
class Advise {
 public:
    Advise() noexcept = default;
    /// Connects. Throws RunTimeError when the object has no such events or refuses.
    Advise(IUnknown* source, REFIID events, IUnknown* sink) : m_sink(sink) {
        const auto container = Query<IConnectionPointContainer>(source);
        if (!container) {
            throw RunTimeError(RunTimeError::kObjectNotSet);
        }
        Check(container->FindConnectionPoint(events, m_point.Put()));
        Check(m_point->Advise(sink, &m_cookie));
        m_connected = true;
    }
    Advise(Advise&& other) noexcept
        : m_sink(std::move(other.m_sink)),
          m_point(std::move(other.m_point)),
          m_cookie(other.m_cookie),
          m_connected(std::exchange(other.m_connected, false)) {}
    Advise& operator=(Advise&& other) noexcept {
        if (this != &other) {
            Reset();
            m_sink = std::move(other.m_sink);
            m_point = std::move(other.m_point);
            m_cookie = other.m_cookie;
            m_connected = std::exchange(other.m_connected, false);
        }
        return *this;
    }
    Advise(const Advise&) = delete;
    Advise& operator=(const Advise&) = delete;
    ~Advise() { Reset(); }

    explicit operator bool() const noexcept { return m_connected; }

    /// Disconnects. Other calls may come in meanwhile: the members are settled before the call goes out.
    void Reset() noexcept {
        const ComPtr<IConnectionPoint> point = std::move(m_point);
        const ComPtr<IUnknown> sink = std::move(m_sink);
        if (std::exchange(m_connected, false) && FAILED(point->Unadvise(m_cookie))) {
            // The other side is gone or will not listen: take back the references that it still holds.
            CoDisconnectObject(sink.Get(), 0);
            SetErrorInfo(0, nullptr);
        }
    }

 private:
    ComPtr<IUnknown> m_sink;
    ComPtr<IConnectionPoint> m_point;
    DWORD m_cookie = 0;
    bool m_connected = false;
};

/// The thread's membership in its single-threaded apartment.
class ComApartment {
 public:
    /// Throws RunTimeError when the thread cannot enter.
    ComApartment() { Check(CoInitialize(nullptr)); }
    ~ComApartment() { CoUninitialize(); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};

/// The ground of a COM object of ours: counts references and goes with the last one. `Derived` says in
/// `void* Find(REFIID)` which interfaces it has.
template <class Derived, class... Interfaces>
class ComObject : public Interfaces... {
 public:
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = static_cast<Derived*>(this)->Find(iid);
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        const ULONG left = --m_references;
        if (left == 0) {
            // Calls that the destructor makes may take and drop references: that must not end it twice.
            m_references = kEnding;
            const std::unique_ptr<Derived> last(static_cast<Derived*>(this));
        }
        return left;
    }

 protected:
    ComObject() = default;
    ~ComObject() = default;

 private:
    static constexpr ULONG kEnding = 1UL << 30;

    std::atomic<ULONG> m_references = 1;
};

/// Makes a COM object and holds its first reference.
template <class Object, class... Arguments>
ComPtr<Object> MakeCom(Arguments&&... arguments) {
    return ComPtr<Object>::Attach(std::make_unique<Object>(std::forward<Arguments>(arguments)...).release());
}

/// A COM object with a dispatch interface that describes itself to nobody: no type information, no names.
template <class Derived, class Interface, class... Others>
class DispatchObject : public ComObject<Derived, Interface, Others...> {
 public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) noexcept override {
        if (info == nullptr) {
            return E_POINTER;
        }
        *info = nullptr;
        return DISP_E_BADINDEX;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT count, LCID,
                                            DISPID* ids) noexcept override {
        if (ids == nullptr) {
            return E_POINTER;
        }
        for (UINT i = 0; i < count; ++i) {
            ids[i] = DISPID_UNKNOWN;
        }
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) noexcept override {
        return DISP_E_MEMBERNOTFOUND;
    }

 protected:
    DispatchObject() = default;
    ~DispatchObject() = default;
};

/// What makes two references the same object.
inline ComPtr<IUnknown> IdentityOf(IUnknown* object) noexcept {
    return ComPtr<IUnknown>(object).As<IUnknown>();
}

}  // namespace kestrelguard
