#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace kestrelguard::desktop {

struct HistoryEntry {
    std::wstring url;
    std::wstring title;
    FILETIME visited;
    FILETIME updated;
    FILETIME expires;
    DWORD flags;
};

/// The history in its file: one line of UTF-8 an entry, its fields separated by tabs (address, title, the
/// three moments as 16 hexadecimal digits, the flags as 8). The file is read before and written after every
/// change, so that any number of processes may share it.
class HistoryFile {
 public:
    /// %KESTRELGUARD_HISTORY%, or C:\history.txt.
    static std::wstring Path();

    /// No file is an empty history.
    static std::vector<HistoryEntry> Read();
    static bool Write(const std::vector<HistoryEntry>& entries);
};

}  // namespace kestrelguard::desktop
