#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kestrelguard {

/// What a fuzzer hands over, as a program of steps: its bytes, the first one first, are numbers and texts.
class FuzzInput {
 public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    bool AtEnd() const { return m_at >= m_size; }
    std::size_t Byte() { return AtEnd() ? 0 : m_data[m_at++]; }
    /// Most bytes are the character of their number; the last ones stand for characters of all sizes.
    wchar_t Unit() {
        static constexpr std::array<std::uint32_t, 16> kUnits = {
            0,      0x80,   0xC9,   0xE9,   0x130,   0x178,    0x7FF,     0x800,
            0x20AC, 0xD83D, 0xDE00, 0xFFFF, 0x10000, 0x10FFFF, 0x4000000, 0xFFFFFFFF};
        const std::size_t byte = Byte();
        return static_cast<wchar_t>(byte < 0xF0 ? byte : kUnits[byte - 0xF0]);
    }
    std::wstring Text() {
        std::wstring text;
        for (std::size_t left = Byte() % 48; left > 0; --left) {
            text += Unit();
        }
        return text;
    }

 private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

/// Ends the run as a find.
inline void Require(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

}  // namespace kestrelguard
