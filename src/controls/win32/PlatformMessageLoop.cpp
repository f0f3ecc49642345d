#include "controls/win32/PlatformMessageLoop.h"

#include <vector>

namespace kestrelguard {

namespace {

std::vector<HWND>& OpenDialogs() {
    static std::vector<HWND> windows;
    return windows;
}

}  // namespace

void DialogWindows::Add(HWND window) {
    OpenDialogs().push_back(window);
}

void DialogWindows::Remove(HWND window) {
    std::erase(OpenDialogs(), window);
}

void DialogWindows::Dispatch(MSG& message) {
    for (const HWND window : OpenDialogs()) {
        if (message.hwnd == window || IsChild(window, message.hwnd)) {
            if (IsDialogMessageA(window, &message)) {
                return;
            }
            break;
        }
    }
    TranslateMessage(&message);
    DispatchMessageA(&message);
}

void PlatformMessageLoop::DoEvents() {
    MSG message = {};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DialogWindows::Dispatch(message);
    }
}

int PlatformMessageLoop::Run() {
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        DialogWindows::Dispatch(message);
    }
    return static_cast<int>(message.wParam);
}

}  // namespace kestrelguard
