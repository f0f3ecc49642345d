#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace kestrelguard {

/// Unpacks what scripts/render-icons has packed: four bytes of length (the lowest first), then groups of a
/// byte of marks and eight items, the lowest mark first. A marked item is a byte as it is; another is two
/// bytes that say how far back (the lower twelve bits, less one) and how many bytes (the upper four, less
/// three) to repeat. Nothing when the data do not hold what their length promises.
std::optional<std::vector<std::byte>> Unpack(std::span<const std::byte> packed);

}  // namespace kestrelguard
