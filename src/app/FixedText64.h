#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace kestrelguard {

/// A text field of exactly 64 characters, as the tray icon's record holds one. A new field is all NUL.
class FixedText64 {
 public:
    static constexpr std::size_t kSize = 64;

    FixedText64() = default;
    explicit FixedText64(std::wstring_view text) { Store(text); }

    /// Stores the text and one NUL, left-aligned, the rest blanks. A text of more than 63 characters is
    /// cut so that the NUL is the 64th.
    void Store(std::wstring_view text) {
        const std::size_t length = std::min(text.size(), kSize - 1);
        m_characters.fill(L' ');
        std::copy_n(text.begin(), length, m_characters.begin());
        m_characters[length] = L'\0';
    }

    /// All 64 characters, the padding included.
    const std::array<wchar_t, kSize>& Characters() const noexcept { return m_characters; }

    /// What is visible: the characters before the first NUL.
    std::wstring Text() const {
        return {m_characters.begin(), std::find(m_characters.begin(), m_characters.end(), L'\0')};
    }

    /// Compares all 64 characters.
    bool operator==(const FixedText64&) const = default;

 private:
    std::array<wchar_t, kSize> m_characters{};
};

}  // namespace kestrelguard
