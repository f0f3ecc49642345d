#include "browsertree/win32/PlatformBrowserWindows.h"

#include <windows.h>

namespace kestrelguard {

namespace {

HWND WindowOf(std::int32_t handle) {
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(handle));
}

}  // namespace

void PlatformBrowserWindows::ShowNormal(std::int32_t handle) {
    ShowWindow(WindowOf(handle), SW_SHOWNORMAL);
}

void PlatformBrowserWindows::SetForeground(std::int32_t handle) {
    SetForegroundWindow(WindowOf(handle));
}

void PlatformBrowserWindows::PostClose(std::int32_t handle) {
    PostMessageA(WindowOf(handle), WM_CLOSE, 0, 0);
}

}  // namespace kestrelguard
