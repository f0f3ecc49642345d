#include "popup/win32/AsyncKeyboard.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace kestrelguard {
namespace {

/// Holds a key down while it lives.
class HeldKey {
 public:
    explicit HeldKey(BYTE key) : m_key(key) { keybd_event(m_key, 0, 0, 0); }
    ~HeldKey() { keybd_event(m_key, 0, KEYEVENTF_KEYUP, 0); }
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

 private:
    BYTE m_key;
};

TEST(AsyncKeyboard, AHeldKeyIsNegative) {
    AsyncKeyboard keyboard;
    for (const BYTE key : {BYTE{VK_CONTROL}, BYTE{VK_SHIFT}}) {
        EXPECT_GE(keyboard.AsyncKeyState(key), 0);
        {
            const HeldKey held(key);
            EXPECT_LT(keyboard.AsyncKeyState(key), 0);
        }
        EXPECT_GE(keyboard.AsyncKeyState(key), 0);
    }
}

}  // namespace
}  // namespace kestrelguard
