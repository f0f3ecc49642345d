#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// What the benchmarks that run the whole program share.
namespace kestrelguard::bench {

/// A settings file with these sites, the site filter on, popups prevented, and the window in the tray from
/// the start unless `shown`.
std::string SettingsWith(const std::vector<std::string>& sites, bool shown = false);

/// How many icons the notification area has ever had. Cheap to ask, so that asking does not slow down what is
/// being waited for.
int IconsEver();

/// A process's memory, in MiB.
struct Memory {
    double peak = 0;       ///< most pages that it ever had in memory
    double resting = 0;    ///< pages in memory now
    double committed = 0;  ///< what it has asked the system for and keeps to itself
};
Memory MemoryOf(HANDLE process);

}  // namespace kestrelguard::bench
