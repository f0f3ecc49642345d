#pragma once

#include <windows.h>

#include <utility>

namespace kestrelguard {

/// Owns one platform object: closes it when replaced or destroyed. `Traits` names the type, the invalid
/// value and the closer.
template <class Traits>
class Owner {
 public:
    using Type = typename Traits::Type;

    Owner() noexcept = default;
    explicit Owner(Type object) noexcept : m_object(object) {}
    Owner(Owner&& other) noexcept : m_object(other.Release()) {}
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { Reset(); }

    Type Get() const noexcept { return m_object; }
    explicit operator bool() const noexcept { return m_object != Traits::Invalid(); }

    void Reset(Type object = Traits::Invalid()) noexcept {
        const Type old = std::exchange(m_object, object);
        if (old != Traits::Invalid()) {
            Traits::Close(old);
        }
    }

    /// Gives the object up without closing it.
    Type Release() noexcept { return std::exchange(m_object, Traits::Invalid()); }

    /// Closes the old object; where a platform call stores the new one.
    Type* Put() noexcept {
        Reset();
        return &m_object;
    }

 private:
    Type m_object = Traits::Invalid();
};

/// For a type whose invalid value is null.
template <class Object, auto close>
struct NullTraits {
    using Type = Object;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type object) noexcept { close(object); }
};
struct FileTraits {
    using Type = HANDLE;
    static Type Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type object) noexcept { CloseHandle(object); }
};

using Handle = Owner<NullTraits<HANDLE, CloseHandle>>;
using File = Owner<FileTraits>;
using Window = Owner<NullTraits<HWND, DestroyWindow>>;
using Menu = Owner<NullTraits<HMENU, DestroyMenu>>;
using Icon = Owner<NullTraits<HICON, DestroyIcon>>;
using Library = Owner<NullTraits<HMODULE, FreeLibrary>>;
using Font = Owner<NullTraits<HFONT, DeleteObject>>;
using Bitmap = Owner<NullTraits<HBITMAP, DeleteObject>>;

}  // namespace kestrelguard
