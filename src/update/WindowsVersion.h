#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelguard {

/// What the system says of its own version.
struct WindowsVersion {
    std::uint32_t platform = 0;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    /// The service pack's text ("Service Pack 2", " A ").
    std::wstring service;
    std::uint32_t suiteMask = 0;
    std::uint32_t productType = 0;
};

class WindowsVersionSource {
 public:
    virtual ~WindowsVersionSource() = default;
    /// Nothing when the system refuses the extended record (Windows 98, NT 4 before its sixth service pack).
    virtual std::optional<WindowsVersion> Version() const = 0;
};

/// The five-character code of a Windows version. A version without a code leaves `current` as it is, or
/// gives "02UNK" when that is empty.
std::wstring WindowsCodeOf(const WindowsVersion& version, std::wstring_view current = {});

}  // namespace kestrelguard
