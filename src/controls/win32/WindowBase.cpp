#include "controls/win32/WindowBase.h"

#include <utility>

#include "runtime/Edge.h"

namespace kestrelguard {

namespace {

// Any program may send any message to a window: those of a window's birth and death count only while this
// program makes or destroys one. All windows are of one thread.
WindowBase* g_beingMade = nullptr;
int g_beingDestroyed = 0;

void Destroy(HWND window) noexcept {
    ++g_beingDestroyed;
    DestroyWindow(window);
    --g_beingDestroyed;
}

WindowBase* ObjectOf(HWND window) {
    return reinterpret_cast<WindowBase*>(GetWindowLongA(window, GWL_USERDATA));
}

}  // namespace

WindowBase::WindowBase(ErrorReport report)
    : m_report(std::make_shared<const ErrorReport>(std::move(report))) {}

WindowBase::~WindowBase() {
    if (m_window != nullptr) {
        Destroy(Detach());
    }
}

void WindowBase::DestroyOwnWindow() noexcept {
    Destroy(m_window);
}

void WindowBase::Create(const WindowKind& kind, const WindowFrame& frame) {
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = Procedure;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));  // the arrow
    windowClass.hbrBackground = kind.background;
    windowClass.hIcon = kind.icons.bigIcon;
    windowClass.lpszClassName = kind.name;
    RegisterClassA(&windowClass);  // fails the second time, which is as good
    g_beingMade = this;
    if (CreateWindowExA(frame.extendedStyle, kind.name, frame.caption, frame.style, frame.x, frame.y,
                        frame.width, frame.height, frame.parent,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(frame.id)), instance,
                        nullptr) == nullptr) {
        g_beingMade = nullptr;
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    if (kind.icons.smallIcon != nullptr) {
        // The class has room for the big one alone; shrunk, it is what the title bar would show.
        SendMessageA(m_window, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(kind.icons.smallIcon));
        SendMessageA(m_window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(kind.icons.bigIcon));
    }
}

HWND WindowBase::Detach() noexcept {
    SetWindowLongA(m_window, GWL_USERDATA, 0);
    return std::exchange(m_window, nullptr);
}

LRESULT CALLBACK WindowBase::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        WindowBase* const object = std::exchange(g_beingMade, nullptr);
        if (object == nullptr) {
            return FALSE;
        }
        object->m_window = window;
        SetWindowLongA(window, GWL_USERDATA, static_cast<LONG>(reinterpret_cast<LONG_PTR>(object)));
    } else if ((message == WM_DESTROY || message == WM_NCDESTROY) && g_beingDestroyed == 0) {
        return 0;
    }
    std::optional<LRESULT> result;
    if (WindowBase* const object = ObjectOf(window)) {
        const std::shared_ptr<const ErrorReport> report = object->m_report;
        AtEdge([&] { result = object->OnMessage(message, wParam, lParam); },
               [&](const RunTimeError& error) {
                   result = 0;
                   if (*report) {
                       (*report)(ObjectOf(window) != nullptr ? window : nullptr, error);
                   }
               });
    }
    if (message == WM_NCDESTROY) {
        // Asked again: the object may have gone meanwhile.
        if (WindowBase* const object = ObjectOf(window)) {
            object->Detach();
        }
    }
    if (!result && message == WM_CLOSE) {
        // Not the system's way, which destroys the window: one that can be closed says how.
        return 0;
    }
    return result ? *result : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace kestrelguard
