#include "controls/win32/WaitCursor.h"

namespace kestrelguard {

namespace {

BOOL CALLBACK Paint(HWND window, LPARAM /*unused*/) noexcept {
    if (IsWindowVisible(window)) {
        RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    }
    return TRUE;
}

}  // namespace

void PaintWindows() {
    EnumThreadWindows(GetCurrentThreadId(), Paint, 0);
}

}  // namespace kestrelguard
