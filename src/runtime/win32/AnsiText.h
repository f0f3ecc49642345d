#pragma once

#include <array>
#include <string>
#include <string_view>

namespace kestrelguard {

/// Program text as 8-bit text in the system code page; a character that the code page lacks becomes its
/// best fit or "?".
std::string ToAnsi(std::wstring_view text);

/// ToAnsi for the length of one call: fewer than 300 7-bit characters take no memory from the heap.
class AnsiArgument {
 public:
    explicit AnsiArgument(std::wstring_view text);
    AnsiArgument(const AnsiArgument&) = delete;
    AnsiArgument& operator=(const AnsiArgument&) = delete;

    /// Zero-terminated.
    const char* Get() const noexcept { return m_text.empty() ? m_short.data() : m_text.c_str(); }

 private:
    std::array<char, 300> m_short;
    std::string m_text;
};

/// 8-bit text in the system code page as program text.
std::wstring FromAnsi(std::string_view text);

}  // namespace kestrelguard
