// Watches the program while nobody uses it: how often it wakes up in the tray, and whether it grows.
//
//   IdleBench [--quick] [--report FILE]
//
// The wake-ups are those that the host's kernel has counted for the program's threads, over some real
// minutes. The growth is that of a day whose minutes are sent to the program one after the other: a tick of
// its timer is all that a minute in the tray is to it.
//
// kestrelguard.exe and kg_hook.dll lie beside it.

#include <windows.h>

#include <string>
#include <vector>

#include "GuardSetup.h"
#include "Report.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::bench {
namespace {

constexpr DWORD kPatience = 120000;

/// The names in a folder of the host's process table.
std::vector<std::wstring> NamesIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW entry;
    const HANDLE find = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (find == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        names.emplace_back(entry.cFileName);
    } while (FindNextFileW(find, &entry));
    FindClose(find);
    return names;
}

/// The program's entry in the host's process table.
class HostProcess {
 public:
    /// `name` as the host knows it, cut at 15 letters.
    explicit HostProcess(const std::string& name) {
        for (const std::wstring& process : NamesIn(L"Z:\\proc")) {
            const std::wstring folder = L"Z:\\proc\\" + process;
            if (testing::ReadBytes(folder + L"\\comm") == name + "\n") {
                m_tasks = folder + L"\\task";
            }
        }
        if (m_tasks.empty()) {
            Fail("the program is not in the host's process table");
        }
    }

    /// How often its threads have waited for something and gone on.
    long long WakeUps() const {
        constexpr char kKey[] = "\nvoluntary_ctxt_switches:";
        long long sum = 0;
        for (const std::wstring& thread : NamesIn(m_tasks)) {
            const std::string status = testing::ReadBytes(m_tasks + L"\\" + thread + L"\\status");
            const std::size_t at = status.find(kKey);
            if (at != std::string::npos) {
                sum += std::strtoll(status.c_str() + at + sizeof kKey - 1, nullptr, 10);
            }
        }
        return sum;
    }

 private:
    std::wstring m_tasks;
};

/// The moments in which the program was awake, of some seconds.
int MomentsAwake(const HostProcess& program, int seconds) {
    int moments = 0;
    bool awake = false;
    long long last = program.WakeUps();
    for (int half = 0; half < 2 * seconds; ++half) {
        Sleep(500);
        const long long now = program.WakeUps();
        moments += now != last && !awake ? 1 : 0;
        awake = now != last;
        last = now;
    }
    return moments;
}

/// Sixty minutes, as far as the program can tell.
void AnHour(HWND form) {
    constexpr WPARAM kWasherTimer = 1;
    for (int minute = 0; minute < 60; ++minute) {
        PostMessageW(form, WM_TIMER, kWasherTimer, 0);
    }
    // Behind the last tick.
    LRESULT answer = 0;
    testing::Ask(form, WM_NULL, 0, 0, answer, kPatience);
    Sleep(100);
}

void Run(const Options& options) {
    Report report(options);
    desktop::StandInDesktop desktop;
    for (int browser = 0; browser < 3; ++browser) {
        desktop.OpenBrowser();
    }
    // A wash of the cache every hour.
    const testing::GuardFolder folder(SettingsWith({}) + "PP1/:/:y\r\nPP4/:/:y/:/:60/:/:M\r\n");
    testing::Guard guard(folder);
    if (!guard.WaitReady(kPatience) || !guard.Icon(kPatience)) {
        Fail("the program does not start");
    }
    const HostProcess process("kestrelguard.ex");
    Sleep(5000);

    const int seconds = options.quick ? 65 : 305;
    const int moments = MomentsAwake(process, seconds);
    report.Limit("moments awake in the tray, of " + std::to_string(seconds) + " s", "", moments,
                 "ticks of the one-minute timer", seconds / 60);

    AnHour(guard.Window());
    const testing::ObjectCounts objectsBefore = guard.Inside().Count();
    const Memory before = MemoryOf(guard.Program().Get());
    const int hours = options.quick ? 6 : 24;
    for (int hour = 0; hour < hours; ++hour) {
        AnHour(guard.Window());
    }
    const Memory after = MemoryOf(guard.Program().Get());
    const testing::ObjectCounts objects = guard.Inside().Count();
    const std::string time = std::to_string(hours) + " hours of ticks";
    const auto same = [&](const char* what, const char* unit, double now, double then) {
        report.Limit(what + std::string(" after ") + time, unit, now, "before", then);
    };
    const double growth = after.committed / before.committed;
    report.Compare("memory asked for after " + time, "MiB", after.committed, "before", before.committed, 1.01,
                   {growth, growth, growth});
    same("windows", "", objects.windows, objectsBefore.windows);
    same("GDI objects", "", objects.gdiObjects, objectsBefore.gdiObjects);
    same("kernel handles", "", objects.handles, objectsBefore.handles);
    if (!guard.Close(kPatience)) {
        Fail("the program does not end");
    }
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    kestrelguard::bench::Run(kestrelguard::bench::Options(count, arguments));
    return 0;
}
