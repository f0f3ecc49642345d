#pragma once

#include <windows.h>

#include "controls/MessageLoop.h"

namespace kestrelguard {

/// The windows whose keyboard is handled like a dialog's: Tab, arrows, Enter, Esc.
class DialogWindows {
 public:
    static void Add(HWND window);
    static void Remove(HWND window);
    /// Dispatches one message the way the program's message loop does.
    static void Dispatch(MSG& message);
};

class PlatformMessageLoop final : public MessageLoop {
 public:
    /// Runs the messages that are waiting, then returns.
    void DoEvents() override;
    /// Runs messages until the program is asked to quit. Answers its exit code.
    static int Run();
};

}  // namespace kestrelguard
