#include "runtime/win32/CodePagePath.h"

#include <windows.h>

#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

bool CodePageSpells(std::wstring_view text) {
    // There and back: what the code page lacks comes back as a question mark, or as a letter that looks
    // alike.
    return FromAnsi(ToAnsi(text)) == text;
}

std::wstring CodePagePath(const std::wstring& path) {
    if (CodePageSpells(path)) {
        return path;
    }
    std::wstring shortened(path.size() + MAX_PATH, L'\0');
    const DWORD length =
        GetShortPathNameW(path.c_str(), shortened.data(), static_cast<DWORD>(shortened.size()));
    shortened.resize(length < shortened.size() ? length : 0);
    // A volume may have been told to make no short names; the long one comes back then.
    if (shortened.empty() || !CodePageSpells(shortened)) {
        throw RunTimeError(RunTimeError::kPathNotFound,
                           L"The name of the program's folder has letters that this Windows is not set up "
                           L"for.\r\nPlease move "
                           L"the program into a folder with a plainer name.");
    }
    return shortened;
}

}  // namespace kestrelguard
