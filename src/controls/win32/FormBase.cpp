#include "controls/win32/FormBase.h"

#include <utility>

#include "controls/win32/PlatformMessageLoop.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

int ScreenDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

/// Whether a control of that class has an edge of its own around it.
bool HasEdge(const char* windowClass) {
    return lstrcmpA(windowClass, "Edit") == 0 || lstrcmpA(windowClass, "ListBox") == 0;
}

}  // namespace

FormBase::FormBase(ErrorReport report) : WindowBase(std::move(report)), m_dpi(ScreenDpi()) {}

FormBase::~FormBase() {
    if (Handle() != nullptr) {
        DialogWindows::Remove(Handle());
    }
}

Font FormBase::ArialFont(int points, int weight) const {
    return Font(CreateFontA(-MulDiv(points, m_dpi, 72), 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                            OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                            FF_SWISS | VARIABLE_PITCH, "Arial"));
}

void FormBase::CreateForm(const WindowKind& kind, const WindowFrame& frame) {
    Create(kind, frame);
    DialogWindows::Add(Handle());
}

HWND FormBase::CreateControl(const ControlFrame& frame, HWND parent, HFONT font) const {
    const HWND control = CreateWindowExA(
        HasEdge(frame.windowClass) ? WS_EX_CLIENTEDGE : 0, frame.windowClass, ToAnsi(frame.text).c_str(),
        frame.style | WS_CHILD | WS_VISIBLE, frame.place.left, frame.place.top,
        frame.place.right - frame.place.left, frame.place.bottom - frame.place.top, parent,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(frame.id)), GetModuleHandleA(nullptr), nullptr);
    if (control == nullptr) {
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    return control;
}

std::optional<LRESULT> FormBase::OnMessage(UINT message, WPARAM wParam, LPARAM /*lParam*/) {
    switch (message) {
        case WM_COMMAND:
            OnCommand(LOWORD(wParam), HIWORD(wParam));
            return 0;
        case DM_GETDEFID: {
            const int button = DefaultButton(GetFocus());
            return button == 0 ? 0 : MAKELRESULT(button, DC_HASDEFID);
        }
        case WM_ACTIVATE:
            if (LOWORD(wParam) == WA_INACTIVE) {
                RememberFocus();
            }
            return std::nullopt;
        case WM_SETFOCUS:
            GiveFocusBack();
            return 0;
        case WM_CLOSE:
            return 0;  // a form that can be closed says how
        case WM_NCDESTROY:
            DialogWindows::Remove(Handle());
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

void FormBase::OnCommand(int /*id*/, int /*notification*/) {}

void FormBase::RememberFocus() {
    const HWND focus = GetFocus();
    if (focus != nullptr && IsChild(Handle(), focus)) {
        m_lastFocus = focus;
    }
}

void FormBase::GiveFocusBack() const {
    const bool good = m_lastFocus != nullptr && IsWindowVisible(m_lastFocus) && IsWindowEnabled(m_lastFocus);
    SetFocus(good ? m_lastFocus : FirstFocus());
}

void FormBase::DestroyForm() {
    if (Handle() != nullptr) {
        DestroyWindow(Handle());
    }
}

}  // namespace kestrelguard
