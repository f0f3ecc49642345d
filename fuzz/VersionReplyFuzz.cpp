#include <cstddef>
#include <cstdint>
#include <string>

#include "update/UpdateWorld.h"

namespace kestrelguard {
namespace {

void Require(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

}  // namespace
}  // namespace kestrelguard

/// A version server's reply out of anybody's hands; 0xFF ends a chunk. Whatever it is, there is one notice
/// at most, of a bounded length, and nothing but a version could get into a command line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelguard;
    UpdateWorld world;
    world.boxes.answer = 6;
    world.LookUpAndConnect();
    std::wstring chunk;
    std::wstring offered;
    bool received = false;
    for (std::size_t at = 0; at <= size; ++at) {
        if (at < size && data[at] != 0xFF) {
            chunk += static_cast<wchar_t>(data[at]);
            continue;
        }
        if (!chunk.empty()) {
            world.Reply(chunk);
            if (!received && chunk.substr(0, 14) == L":'/|ZEV_PRODLI") {
                received = true;
                offered = chunk.substr(14);
                offered.erase(0, offered.find_first_not_of(L' '));
                while (!offered.empty() && offered.back() == L' ') {
                    offered.pop_back();
                }
            }
        }
        chunk.clear();
    }
    Require(world.check.Data().updateOffered == received);
    Require(world.Busy() == !received);
    const bool newer = received && offered > L"2.0.113";
    Require(world.boxes.shown.size() == (newer ? 1U : 0U));
    if (newer) {
        Require(world.boxes.shown[0].text ==
                L"There is a newer version of Kestrelguard available.\r\n\r\n"
                L"Update to version " +
                    offered.substr(0, 64) + L" Now?");
    }
    const bool version =
        offered.size() <= 64 && offered.find_first_not_of(L"0123456789.") == std::wstring::npos;
    Require(world.program.started.size() == (newer && version ? 1U : 0U));
    return 0;
}
