#include "controls/win32/PlatformMessageLoop.h"

#include <utility>
#include <vector>

namespace kestrelguard {

namespace {

struct Dialog {
    HWND window;
    DialogKeys* keys;
};

/// A form was activated: focus may have come to it or gone.
bool anyActivated = false;

std::vector<Dialog>& OpenDialogs() {
    static std::vector<Dialog> dialogs;
    return dialogs;
}

Dialog DialogOf(HWND window) {
    for (const Dialog& dialog : OpenDialogs()) {
        if (window == dialog.window || IsChild(dialog.window, window)) {
            return dialog;
        }
    }
    return {};
}

/// Answers whether the message was for a form.
bool DispatchAsDialog(MSG& message) {
    const Dialog dialog = DialogOf(message.hwnd);
    if (dialog.window != nullptr) {
        if ((message.message == WM_KEYDOWN && dialog.keys->KeyDown(message.wParam)) ||
            IsDialogMessageA(dialog.window, &message)) {
            return true;
        }
    }
    TranslateMessage(&message);
    DispatchMessageA(&message);
    return dialog.window != nullptr;
}

/// However the focus came there: by a key, by the mouse, by the program. A window that has it itself, not one
/// of its controls, is told again and again: while it is minimised it cannot pass it on.
void TellIfFocusMoved() {
    static HWND last = nullptr;
    const HWND focus = GetFocus();
    const Dialog dialog = DialogOf(focus);
    if (dialog.window != nullptr && (focus != last || focus == dialog.window)) {
        dialog.keys->FocusMoved(focus);
    }
    last = focus;
}

}  // namespace

void DialogWindows::Add(HWND window, DialogKeys& keys) {
    OpenDialogs().push_back({window, &keys});
}

void DialogWindows::Remove(HWND window) {
    std::erase_if(OpenDialogs(), [window](const Dialog& dialog) { return dialog.window == window; });
}

void DialogWindows::Activated() {
    anyActivated = true;
}

void DialogWindows::Dispatch(MSG& message) {
    // Every event of a browser is a message to a window of COM's, which moves no focus; asking for the focus
    // is a call into the system.
    const bool forForm = DispatchAsDialog(message);
    if (std::exchange(anyActivated, false) || forForm) {
        TellIfFocusMoved();
    }
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

int PlatformMessageLoop::Run(HWND window) {
    MSG message = {};
    do {
        while (GetMessageA(&message, nullptr, 0, 0) > 0) {
            DialogWindows::Dispatch(message);
        }
        // Another program's wish to quit ends nothing: the window has its own way.
    } while (IsWindow(window));
    return static_cast<int>(message.wParam);
}

}  // namespace kestrelguard
