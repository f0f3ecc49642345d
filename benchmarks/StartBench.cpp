// Measures the whole program's start, from CreateProcess until its icon is there and every browser is
// watched, against a program that only makes the same windows and an icon, and one that watches, too; and the
// memory of all three.
//
//   StartBench [--quick] [--rounds N] [--report FILE]
//
// kestrelguard.exe, BareForm.exe and BareWatch.exe lie beside it.

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

#include "GuardSetup.h"
#include "Report.h"
#include "SiteWorkload.h"
#include "WindowList.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::bench {
namespace {

using desktop::StandInDesktop;
using testing::GuardFolder;
using testing::Process;

constexpr char kForm[] = "Kestrelguard";
constexpr DWORD kPatience = 120000;

/// The program's own texts are plain ones.
std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t letter : text) {
        narrow += static_cast<char>(letter);
    }
    return narrow;
}

/// The windows of the program, as it makes them itself.
std::vector<ListedWindow> WindowsOf(HWND form) {
    std::vector<HWND> windows = {form};
    for (const HWND inside : testing::Inside(form)) {
        windows.push_back(inside);
    }
    std::vector<ListedWindow> list;
    for (const HWND window : windows) {
        ListedWindow listed;
        listed.windowClass = Narrow(testing::ClassOf(window));
        listed.ownClass = listed.windowClass.starts_with(kForm);
        listed.text = Narrow(testing::TextOf(window));
        listed.extendedStyle = static_cast<std::uint32_t>(GetWindowLongA(window, GWL_EXSTYLE));
        listed.style = static_cast<std::uint32_t>(GetWindowLongA(window, GWL_STYLE));
        RECT place = testing::RectOf(window);
        if (window != form) {
            const HWND parent = GetParent(window);
            listed.parent =
                static_cast<std::size_t>(std::find(windows.begin(), windows.end(), parent) - windows.begin());
            listed.id = testing::IdOf(window);
            MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&place), 2);
        }
        listed.x = place.left;
        listed.y = place.top;
        listed.width = place.right - place.left;
        listed.height = place.bottom - place.top;
        list.push_back(listed);
    }
    return list;
}

/// One program in one situation.
class Starter {
 public:
    Starter(std::wstring exe, std::wstring folder, std::vector<std::wstring> arguments, int browsers)
        : m_exe(std::move(exe)),
          m_folder(std::move(folder)),
          m_arguments(std::move(arguments)),
          m_browsers(browsers) {}

    /// Starts it, waits until it is ready, ends it. Answers the milliseconds.
    double Start() {
        StandInDesktop desktop;
        for (int browser = 0; browser < m_browsers; ++browser) {
            desktop.OpenBrowser();
        }
        const int icons = IconsEver();
        const std::uint64_t begin = Nanoseconds();
        Process process(m_exe, m_arguments, m_folder);
        while (!Ready(desktop, icons)) {
            if (!process.Running() || Nanoseconds() - begin > kPatience * 1000000ULL) {
                Fail("a program does not start");
            }
            Sleep(1);
        }
        const double time = static_cast<double>(Nanoseconds() - begin) / 1e6;
        Sleep(kRest);
        m_memory.push_back(MemoryOf(process.Get()));
        PostMessageA(FindWindowA(kForm, nullptr), WM_CLOSE, 0, 0);
        if (!process.WaitGone(kPatience)) {
            Fail("a program does not end");
        }
        return time;
    }

    double Memory(double bench::Memory::*kind) const {
        Values values;
        for (const bench::Memory& memory : m_memory) {
            values.push_back(memory.*kind);
        }
        return Median(values);
    }

 private:
    /// So long after the start the memory counts as that of a program at rest (milliseconds).
    static constexpr DWORD kRest = 300;

    static bool Ready(const StandInDesktop& desktop, int iconsBefore) {
        const HWND form = FindWindowA(kForm, nullptr);
        if (form == nullptr || !IsIconic(form) || IconsEver() <= iconsBefore) {
            return false;
        }
        const std::vector<desktop::Browser*> browsers = desktop.Browsers();
        return std::all_of(browsers.begin(), browsers.end(),
                           [](const desktop::Browser* browser) { return browser->Sinks().connected > 0; });
    }

    std::wstring m_exe;
    std::wstring m_folder;
    std::vector<std::wstring> m_arguments;
    int m_browsers;
    std::vector<bench::Memory> m_memory;
};

/// The program with so many browsers and sites; its settings are the same at every start.
class GuardStarter {
 public:
    GuardStarter(int browsers, std::size_t sites)
        : m_settings(SettingsWith(SiteWorkload::Entries(sites))),
          m_starter(m_folder.Exe(), m_folder.Path(), {}, browsers) {}
    double Start() {
        testing::WriteBytes(m_folder.File(L"KestrelS.CFG"), m_settings);
        return m_starter.Start();
    }
    double Memory(double bench::Memory::*kind) const { return m_starter.Memory(kind); }

 private:
    GuardFolder m_folder;
    std::string m_settings;
    Starter m_starter;
};

/// Writes down the windows that the program makes.
void WriteList(const std::wstring& path) {
    const GuardFolder folder(SettingsWith({}, true));
    testing::Guard guard(folder);
    if (!guard.WaitReady(kPatience)) {
        Fail("the program does not start");
    }
    testing::WriteBytes(path, WriteWindowList(WindowsOf(guard.Window())));
    if (!guard.Close(kPatience)) {
        Fail("the program does not end");
    }
}

double FileSize(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return data.nFileSizeLow;
}

void Run(const Options& options) {
    const std::size_t rounds = options.RoundsOr(9, 3);
    Report report(options);
    const testing::TemporaryFolder folder;
    const std::wstring list = folder.Path() + L"\\windows.txt";
    {
        const StandInDesktop desktop;
        WriteList(list);
    }
    Starter bare(testing::OwnFolder() + L"\\BareForm.exe", folder.Path(), {list}, 0);
    const std::wstring watch = testing::OwnFolder() + L"\\BareWatch.exe";
    Starter bareWatch(watch, folder.Path(), {list}, 0);
    Starter bareWatchMany(watch, folder.Path(), {list}, 50);
    GuardStarter plain(0, 0);
    GuardStarter fewBrowsers(10, 0);
    GuardStarter manyBrowsers(50, 0);
    GuardStarter fewSites(0, 10000);
    GuardStarter manySites(0, 100000);
    const std::vector<Values> times =
        Turns(rounds, {[&] { return bare.Start(); }, [&] { return plain.Start(); },
                       [&] { return fewBrowsers.Start(); }, [&] { return manyBrowsers.Start(); },
                       [&] { return fewSites.Start(); }, [&] { return manySites.Start(); },
                       [&] { return bareWatch.Start(); }, [&] { return bareWatchMany.Start(); }});

    const char bareForm[] = "an exe with the same windows and an icon";
    report.Compare("ready in the tray", "ms", times[1], bareForm, times[0], 1.5);
    report.Compare("ready with 10 browsers", "ms", times[2], "with none", times[1]);
    report.Compare("ready with 50 browsers", "ms", times[3], "with none", times[1], 4);
    const char bareWatcher[] = "the same exe that also watches";
    report.Compare("ready in the tray", "ms", times[1], bareWatcher, times[6]);
    report.Compare("ready with 50 browsers", "ms", times[3], bareWatcher, times[7]);
    report.Compare("that exe ready with 50 browsers", "ms", times[7], "with none", times[6]);
    report.Compare("ready with 10000 sites", "ms", times[4], "with none", times[1]);
    report.Compare("ready with 100000 sites", "ms", times[5], "with none", times[1], 1.2);
    const auto memory = [&](const char* what, const auto& ours, const char* against, const Starter& other,
                            double bench::Memory::*kind, double goal) {
        const double ratio = ours.Memory(kind) / other.Memory(kind);
        report.Compare(what, "MiB", ours.Memory(kind), against, other.Memory(kind), goal,
                       {ratio, ratio, ratio});
    };
    memory("peak working set", plain, bareForm, bare, &Memory::peak, 1.25);
    memory("peak working set", plain, bareWatcher, bareWatch, &Memory::peak, Report::kNoGoal);
    memory("that exe's peak working set", bareWatch, bareForm, bare, &Memory::peak, Report::kNoGoal);
    memory("peak working set with 100000 sites", manySites, bareForm, bare, &Memory::peak, 2.5);
    memory("resting working set", plain, bareForm, bare, &Memory::resting, Report::kNoGoal);
    memory("resting working set with 100000 sites", manySites, bareForm, bare, &Memory::resting,
           Report::kNoGoal);
    report.Limit("the program's file", "KiB", FileSize(testing::OwnFolder() + L"\\kestrelguard.exe") / 1024,
                 "the goal", 512);
    const auto points = [&](const char* plot, const char* curve, std::size_t middle, double x) {
        report.Point(plot, curve, 0, Median(times[1]));
        report.Point(plot, curve, x, Median(times[middle]));
        report.Point(plot, curve, plot[0] == 'b' ? 50 : 100000, Median(times[middle + 1]));
        report.Point(plot, "bare exe", 0, Median(times[0]));
    };
    points("browsers", "ready in the tray", 2, 10);
    points("start", "ready in the tray", 4, 10000);
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    kestrelguard::bench::Run(kestrelguard::bench::Options(count, arguments));
    return 0;
}
