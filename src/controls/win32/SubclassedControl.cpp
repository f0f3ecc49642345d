#include "controls/win32/SubclassedControl.h"

namespace kestrelguard {

SubclassedControl::~SubclassedControl() {
    if (m_control != nullptr) {
        Part();
    }
}

void SubclassedControl::Subclass(HWND control) {
    m_control = control;
    SetWindowLongA(control, GWL_USERDATA, static_cast<LONG>(reinterpret_cast<LONG_PTR>(this)));
    m_original = reinterpret_cast<WNDPROC>(
        SetWindowLongA(control, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(&Procedure))));
}

void SubclassedControl::Part() noexcept {
    SetWindowLongA(m_control, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_original)));
    SetWindowLongA(m_control, GWL_USERDATA, 0);
    m_control = nullptr;
}

LRESULT SubclassedControl::Original(UINT message, WPARAM wParam, LPARAM lParam) const {
    return CallWindowProcA(m_original, m_control, message, wParam, lParam);
}

LRESULT CALLBACK SubclassedControl::Procedure(HWND control, UINT message, WPARAM wParam,
                                              LPARAM lParam) noexcept {
    auto* const object = reinterpret_cast<SubclassedControl*>(GetWindowLongA(control, GWL_USERDATA));
    const std::optional<LRESULT> result = object->OnControlMessage(message, wParam, lParam);
    if (result) {
        return *result;
    }
    const WNDPROC original = object->m_original;
    if (message == WM_NCDESTROY) {
        object->Part();
    }
    return CallWindowProcA(original, control, message, wParam, lParam);
}

}  // namespace kestrelguard
