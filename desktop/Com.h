#pragma once

#include <windows.h>

#include <oleauto.h>
#include <unknwn.h>

#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "runtime/win32/Com.h"

namespace kestrelguard::desktop {

using kestrelguard::Bstr;
using kestrelguard::ComPtr;

/// A VARIANT that clears what it owns. What it points to by reference belongs to somebody else.
class Variant : public VARIANT {
 public:
    Variant() noexcept { VariantInit(this); }
    Variant(Variant&& other) noexcept : VARIANT(other) { VariantInit(&other); }
    Variant& operator=(Variant&& other) noexcept {
        std::swap(static_cast<VARIANT&>(*this), static_cast<VARIANT&>(other));
        return *this;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(this); }

    /// An argument that the caller left out.
    static Variant Omitted() noexcept {
        Variant value;
        value.vt = VT_ERROR;
        value.scode = DISP_E_PARAMNOTFOUND;
        return value;
    }
    /// Throws std::bad_alloc.
    static Variant Text(std::wstring_view text) {
        Variant value;
        value.vt = VT_BSTR;
        value.bstrVal = Bstr(text).Detach();
        return value;
    }
    static Variant Long(LONG number) noexcept {
        Variant value;
        value.vt = VT_I4;
        value.lVal = number;
        return value;
    }
    /// An array of bytes; VT_EMPTY when there are none, or no memory.
    static Variant Bytes(std::string_view bytes) noexcept {
        Variant value;
        SAFEARRAY* const array =
            bytes.empty() ? nullptr : SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
        void* data = nullptr;
        if (array != nullptr && SUCCEEDED(SafeArrayAccessData(array, &data))) {
            std::memcpy(data, bytes.data(), bytes.size());
            SafeArrayUnaccessData(array);
            value.vt = VT_ARRAY | VT_UI1;
            value.parray = array;
        }
        return value;
    }
    static Variant Bool(bool yes) noexcept {
        Variant value;
        value.vt = VT_BOOL;
        value.boolVal = yes ? VARIANT_TRUE : VARIANT_FALSE;
        return value;
    }
    /// Takes a reference of its own; the object may be null.
    static Variant Dispatch(IDispatch* object) noexcept {
        Variant value;
        value.vt = VT_DISPATCH;
        value.pdispVal = object;
        if (object != nullptr) {
            object->AddRef();
        }
        return value;
    }
};

/// Enters the multi-threaded apartment for as long as it lives.
class Apartment {
 public:
    Apartment() noexcept : m_result(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ~Apartment() {
        if (SUCCEEDED(m_result)) {
            CoUninitialize();
        }
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

 private:
    HRESULT m_result;
};

}  // namespace kestrelguard::desktop
