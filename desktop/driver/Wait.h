#pragma once

#include <windows.h>

namespace kestrelguard::testing {

/// How long a test waits for something that is bound to happen (milliseconds). Generous: a loaded machine
/// must not make a test fail, and only a failing test waits so long.
inline constexpr DWORD kLimit = 30000;

/// Asks again and again until the answer is yes; false when the limit (milliseconds) has passed. Messages of
/// the calling thread's own windows are served meanwhile.
template <class Condition>
bool WaitUntil(Condition condition, DWORD limit = kLimit) {
    const DWORD start = GetTickCount();
    DWORD pause = 1;
    while (!condition()) {
        if (GetTickCount() - start > limit) {
            return false;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, pause, QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        pause = pause < 20 ? pause * 2 : pause;
    }
    return true;
}

}  // namespace kestrelguard::testing
