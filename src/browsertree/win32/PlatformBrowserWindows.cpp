#include "browsertree/win32/PlatformBrowserWindows.h"

#include <windows.h>

#include "runtime/win32/FrameAnswers.h"

namespace kestrelguard {

namespace {

HWND WindowOf(std::int32_t handle) {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(handle));
}

/// Showing and activating a window whose thread takes no messages may wait for it.
bool Answers(std::int32_t handle) {
    constexpr UINT kPatience = 1000;
    return FrameAnswers(WindowOf(handle), kPatience);
}

}  // namespace

void PlatformBrowserWindows::ShowNormal(std::int32_t handle) {
    if (Answers(handle)) {
        ShowWindow(WindowOf(handle), SW_SHOWNORMAL);
    } else {
        // Done as soon as it answers again.
        ShowWindowAsync(WindowOf(handle), SW_SHOWNORMAL);
    }
}

void PlatformBrowserWindows::SetForeground(std::int32_t handle) {
    if (Answers(handle)) {
        SetForegroundWindow(WindowOf(handle));
    }
}

void PlatformBrowserWindows::PostClose(std::int32_t handle) {
    PostMessageA(WindowOf(handle), WM_CLOSE, 0, 0);
}

}  // namespace kestrelguard
