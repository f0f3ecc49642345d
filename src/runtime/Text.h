#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrelguard {

/// The text in lower case, letter by letter: every capital of the Windows code pages, of those
/// with two bytes a letter too.
wchar_t LowerCase(wchar_t letter) noexcept;
std::wstring LowerCase(std::wstring_view text);

/// The text in upper case (ASCII letters only): for keys and version texts.
std::wstring UpperCase(std::wstring_view text);

/// The text without blanks (the character 32 alone) at its ends.
std::wstring_view Trim(std::wstring_view text) noexcept;

/// The pieces between the separators, empty ones included; one piece when there is no separator. An empty
/// text has no piece at all.
std::vector<std::wstring_view> Split(std::wstring_view text, std::wstring_view separator);

/// The text with every occurrence of a part removed.
std::wstring Without(std::wstring_view text, std::wstring_view part);

inline bool Contains(std::wstring_view text, std::wstring_view part) noexcept {
    return text.find(part) != std::wstring_view::npos;
}

inline constexpr wchar_t kLineEnd[] = L"\r\n";

}  // namespace kestrelguard
