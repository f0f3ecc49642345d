#pragma once

#include <string>
#include <string_view>

namespace kestrelguard {

/// Whether the system code page holds every letter of the text, so that the 8-bit text means the same.
bool CodePageSpells(std::wstring_view text);

/// The path of something that exists, in letters of the system code page: the path itself, or its short form
/// ("C:\DOCUME~1\A1B2~1"). Throws kPathNotFound with a description of its own when there is neither.
std::wstring CodePagePath(const std::wstring& path);

}  // namespace kestrelguard
