#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzInput.h"
#include "blocking/SiteListOracle.h"

namespace kestrelguard {
namespace {

/// A row of the list, if there is any.
std::wstring RowOf(FuzzInput& input, const SiteListOracle& oracle) {
    const std::size_t number = input.Byte();
    return oracle.Rows().empty() ? std::wstring() : oracle.Rows()[number % oracle.Rows().size()];
}

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

void Run(FuzzInput input) {
    constexpr std::size_t kMostRows = 2000;
    SiteListOracle oracle;
    while (!input.AtEnd()) {
        switch (input.Byte() % 8) {
            case 0:
            case 1:
                oracle.Append(input.Text());
                break;
            case 2:
                oracle.Append(RowOf(input, oracle) + input.Text());
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
                Require(oracle.AgreesOn(input.Text() + RowOf(input, oracle) + input.Text()));
                break;
            default: {
                std::wstring address;
                for (std::size_t left = input.Byte() % 32; left > 0; --left) {
                    address += RowOf(input, oracle).substr(0, input.Byte() % 16);
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
