#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "blocking/SiteListOracle.h"

namespace kestrelguard {
namespace {

/// The input as a program of changes to a site list and of addresses.
class Input {
 public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

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
    /// A row of the list, if there is any.
    std::wstring RowOf(const SiteListOracle& oracle) {
        const std::size_t number = Byte();
        return oracle.Rows().empty() ? std::wstring() : oracle.Rows()[number % oracle.Rows().size()];
    }

 private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

/// Appends many rows that are much alike: of `letters` different letters, each `length` long.
void AppendMany(SiteListOracle& oracle, std::size_t count, std::size_t letters, std::size_t length) {
    std::uint32_t random = static_cast<std::uint32_t>(count);
    for (; count > 0; --count) {
        std::wstring row;
        while (row.size() < length) {
            random = random * 1664525U + 1013904223U;
            row += static_cast<wchar_t>(L'a' + (random >> 16) % letters);
        }
        oracle.Append(row);
    }
}

void Require(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

void Run(Input input) {
    constexpr std::size_t kMostRows = 2000;
    SiteListOracle oracle;
    while (!input.AtEnd()) {
        switch (input.Byte() % 8) {
            case 0:
            case 1:
                oracle.Append(input.Text());
                break;
            case 2:
                oracle.Append(input.RowOf(oracle) + input.Text());
                break;
            case 3:
                oracle.Remove(input.Byte());
                break;
            case 4:
                if (oracle.Rows().size() < kMostRows) {
                    const std::size_t count = input.Byte();
                    const std::size_t letters = 1 + input.Byte() % 4;
                    AppendMany(oracle, count, letters, input.Byte() % 32);
                }
                break;
            case 5:
                for (std::size_t left = input.Byte(); left > 0; --left) {
                    oracle.Remove(7 * left);
                }
                break;
            case 6:
                Require(oracle.AgreesOn(input.Text() + input.RowOf(oracle) + input.Text()));
                break;
            default: {
                std::wstring address;
                for (std::size_t left = input.Byte() % 32; left > 0; --left) {
                    address += input.RowOf(oracle).substr(0, input.Byte() % 16);
                }
                Require(oracle.AgreesOn(address));
                break;
            }
        }
    }
    Require(oracle.AgreesOnRows());
    oracle.Clear();
    Require(oracle.AgreesOn(L"") && oracle.AgreesOnRows());
}

}  // namespace
}  // namespace kestrelguard

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrelguard::Run({data, size});
    return 0;
}
