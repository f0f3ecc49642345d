#include "runtime/Unpack.h"

namespace kestrelguard {

namespace {

constexpr std::size_t kHead = 4;
/// A larger promise is a damaged one: no picture comes near.
constexpr std::size_t kMost = 1 << 20;
constexpr unsigned kShortestRepeat = 3;

}  // namespace

std::optional<std::vector<std::byte>> Unpack(std::span<const std::byte> packed) {
    if (packed.size() < kHead) {
        return std::nullopt;
    }
    std::size_t length = 0;
    for (std::size_t index = kHead; index-- > 0;) {
        length = length << 8 | std::to_integer<std::size_t>(packed[index]);
    }
    if (length > kMost) {
        return std::nullopt;
    }
    std::size_t at = kHead;
    std::vector<std::byte> data;
    data.reserve(length);
    unsigned marks = 1;  // the one bit left says that the next marks are due
    while (data.size() < length) {
        const std::size_t rest = packed.size() - at;
        if (marks == 1) {
            if (rest < 1) {
                return std::nullopt;
            }
            marks = 0x100 | std::to_integer<unsigned>(packed[at++]);
            continue;
        }
        const bool plain = (marks & 1) != 0;
        marks >>= 1;
        if (plain) {
            if (rest < 1) {
                return std::nullopt;
            }
            data.push_back(packed[at++]);
            continue;
        }
        if (rest < 2) {
            return std::nullopt;
        }
        const unsigned item =
            std::to_integer<unsigned>(packed[at]) | std::to_integer<unsigned>(packed[at + 1]) << 8;
        at += 2;
        const std::size_t back = (item & 0xFFF) + 1;
        const std::size_t count = (item >> 12) + kShortestRepeat;
        if (back > data.size() || count > length - data.size()) {
            return std::nullopt;
        }
        for (std::size_t repeated = 0; repeated < count; ++repeated) {
            data.push_back(data[data.size() - back]);  // may repeat what it has just written
        }
    }
    return data;
}

}  // namespace kestrelguard
