#include "popup/win32/AsyncKeyboard.h"

#include <windows.h>

namespace kestrelguard {

std::int16_t AsyncKeyboard::AsyncKeyState(int virtualKey) {
    return GetAsyncKeyState(virtualKey);
}

}  // namespace kestrelguard
