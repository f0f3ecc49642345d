#pragma once

#include <windows.h>

namespace kestrelguard::desktop {

/// The object behind a window whose creator passed it to `CreateWindowEx`; null before the window knows it.
/// The first message that brings it also tells it its window.
template <class Object>
Object* SelfOf(HWND window, UINT message, LPARAM lParam, HWND Object::*itsWindow) noexcept {
    if (message == WM_NCCREATE) {
        auto* self = static_cast<Object*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        self->*itsWindow = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    return reinterpret_cast<Object*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

}  // namespace kestrelguard::desktop
