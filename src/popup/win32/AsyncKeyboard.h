#pragma once

#include "popup/Keyboard.h"

namespace kestrelguard {

/// The keys as the system sees them at this moment, whichever window has the focus.
class AsyncKeyboard final : public Keyboard {
 public:
    std::int16_t AsyncKeyState(int virtualKey) override;
};

}  // namespace kestrelguard
