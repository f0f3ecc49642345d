#include "GuardSetup.h"

#include <psapi.h>

#include "Report.h"

namespace kestrelguard::bench {
namespace {

struct TipCount {
    DWORD process = 0;
    int tips = 0;
};

BOOL CALLBACK CountTip(HWND window, LPARAM count) noexcept {
    auto& found = *reinterpret_cast<TipCount*>(count);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t name[32];
    if (process == found.process && GetClassNameW(window, name, 32) != 0 &&
        lstrcmpW(name, L"tooltips_class32") == 0) {
        ++found.tips;
    }
    return TRUE;
}

}  // namespace

std::string SettingsWith(const std::vector<std::string>& sites, bool shown) {
    std::string text = "PT1/:/:0\r\nMIN/:/:";
    text += shown ? "n" : "y";
    text += "\r\nSS1/:/:y/:/:";
    for (const std::string& site : sites) {
        text += site + " -";
    }
    // The piece behind the last end would become an empty row, which occurs in every address.
    if (!sites.empty()) {
        text.resize(text.size() - 2);
    }
    return text + "\r\n";
}

int IconsEver() {
    // The task bar makes a tool tip for each icon and never takes one down.
    TipCount count;
    GetWindowThreadProcessId(FindWindowW(L"Shell_TrayWnd", nullptr), &count.process);
    EnumWindows(CountTip, reinterpret_cast<LPARAM>(&count));
    return count.tips;
}

Memory MemoryOf(HANDLE process) {
    constexpr double kMebibyte = 1 << 20;
    PROCESS_MEMORY_COUNTERS counters = {};
    if (!GetProcessMemoryInfo(process, &counters, sizeof counters)) {
        Fail("the system does not tell a process's memory");
    }
    return {static_cast<double>(counters.PeakWorkingSetSize) / kMebibyte,
            static_cast<double>(counters.WorkingSetSize) / kMebibyte,
            static_cast<double>(counters.PagefileUsage) / kMebibyte};
}

}  // namespace kestrelguard::bench
