#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "runtime/LineSplitter.h"
#include "settings/ReadByDefinition.h"
#include "settings/SettingsWorld.h"

namespace kestrelguard {
namespace {

void Require(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

/// A file cut into pieces of any size has the lines that it has by definition (which sees one more, empty,
/// where the file ends with a line end or is empty).
void SplitLines(const std::string& bytes, const std::wstring& text, std::size_t pieceSize) {
    std::vector<std::wstring> lines;
    LineSplitter<char> splitter;
    const auto keep = [&lines](std::string_view line) {
        std::wstring wide;
        for (const char byte : line) {
            wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
        }
        lines.push_back(std::move(wide));
    };
    for (std::size_t at = 0; at < bytes.size(); at += pieceSize) {
        splitter.Take(std::string_view(bytes).substr(at, pieceSize), keep);
    }
    splitter.Finish(keep);
    std::vector<std::wstring> expected = LinesByDefinition(text);
    if (expected.back().empty()) {
        expected.pop_back();
    }
    Require(lines == expected);
}

/// Reads the file and compares with the definition.
void Read(SettingsWorld& world, const std::wstring& text) {
    SettingsState expected(world);
    const std::int32_t expectedError = ReadByDefinition(text, expected);
    std::int32_t error = 0;
    try {
        world.Read(text);
    } catch (const RunTimeError& thrown) {
        error = thrown.Number();
    }
    Require(error == expectedError);
    Require(SettingsState(world) == expected);
}

}  // namespace
}  // namespace kestrelguard

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelguard;
    const std::string bytes(data, data + size);
    const std::wstring text(data, data + size);
    SplitLines(bytes, text, size == 0 ? 1 : 1 + data[0] % 16);
    SettingsWorld world;
    Read(world, text);
    Read(world, text);  // a read after Cancel
    world.SettingsFile(L"Write");
    SettingsWorld next;
    Read(next, world.File());
    return 0;
}
