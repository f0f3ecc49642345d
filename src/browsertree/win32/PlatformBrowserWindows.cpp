#include "browsertree/win32/PlatformBrowserWindows.h"

#include <windows.h>

namespace kestrelguard {

namespace {

HWND WindowOf(std::int32_t handle) {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(handle));
}

/// Whether the window's thread takes messages: showing and activating one that hangs may wait for it.
bool Answers(std::int32_t handle) {
    constexpr UINT kPatience = 1000;
    DWORD_PTR result = 0;
    return SendMessageTimeoutA(WindowOf(handle), WM_NULL, 0, 0, SMTO_ABORTIFHUNG | SMTO_BLOCK, kPatience,
                               &result) != 0;
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
