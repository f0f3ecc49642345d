#pragma once

#include <string>
#include <string_view>

namespace kestrelguard {

/// Program text as 8-bit text in the system code page; a character that the code page lacks becomes its
/// best fit or "?".
std::string ToAnsi(std::wstring_view text);

/// 8-bit text in the system code page as program text.
std::wstring FromAnsi(std::string_view text);

}  // namespace kestrelguard
