#pragma once

#include <cstdint>

namespace kestrelguard {

/// The physical keyboard.
class Keyboard {
 public:
    virtual ~Keyboard() = default;
    /// The raw key state: negative while the key is held, the low bit set when it was pressed since the
    /// previous query.
    virtual std::int16_t AsyncKeyState(int virtualKey) = 0;
};

}  // namespace kestrelguard
