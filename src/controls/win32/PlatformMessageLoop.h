#pragma once

#include <windows.h>

#include "controls/MessageLoop.h"

namespace kestrelguard {

/// What a window whose keyboard is handled like a dialog's hears of it.
class DialogKeys {
 public:
    virtual ~DialogKeys() = default;
    /// A key goes down in the window. Answers whether that is all; if not, the key takes its usual way.
    virtual bool KeyDown(WPARAM key) = 0;
    /// The focus has come to another control of the window, or lies on the window itself.
    virtual void FocusMoved(HWND focus) = 0;
};

/// The windows whose keyboard is handled like a dialog's: Tab, arrows, Enter, Esc.
class DialogWindows {
 public:
    /// `keys` is there until Remove.
    static void Add(HWND window, DialogKeys& keys);
    static void Remove(HWND window);
    /// One of them was activated or ceased to be.
    static void Activated();
    /// Dispatches one message the way the program's message loop does.
    static void Dispatch(MSG& message);
};

class PlatformMessageLoop final : public MessageLoop {
 public:
    /// Runs the messages that are waiting, then returns.
    void DoEvents() override;
    /// Runs messages until the window has gone and has asked to quit. Answers the exit code it asked with.
    static int Run(HWND window);
};

}  // namespace kestrelguard
