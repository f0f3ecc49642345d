// Counts and times what one window that opens or closes costs among many: reads of window handles,
// connections, and all calls together that browsers and the list of windows answer. The counts are the
// stand-in desktop's and do not depend on the machine.
//
//   AnnouncementBench [--quick] [--rounds N] [--report FILE]
//
// kestrelguard.exe lies beside it.

#include <windows.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "GuardSetup.h"
#include "Report.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::bench {
namespace {

using desktop::Browser;
using desktop::StandInDesktop;

constexpr DWORD kPatience = 300000;

/// What one announcement brought about.
struct Cost {
    double milliseconds = 0;
    double reads = 0;
    double advises = 0;
    double calls = 0;
};

/// The program and so many browsers.
class Crowd {
 public:
    explicit Crowd(int windows) : m_folder(SettingsWith({})) {
        for (int window = 0; window < windows; ++window) {
            m_desktop.OpenBrowser();
        }
        m_guard = std::make_unique<testing::Guard>(m_folder);
        if (!m_guard->WaitReady(kPatience) || !m_guard->Icon(kPatience)) {
            Fail("the program does not start");
        }
    }

    /// Opens one more window; what its announcement costs.
    Cost Open() {
        desktop::BrowserOptions options;
        options.announced = false;
        Browser& browser = m_desktop.OpenBrowser(options);
        m_last = &browser;
        return Take([this, &browser] { return m_desktop.FireWindowRegistered(browser.Cookie()); });
    }
    /// Takes the last one away.
    Cost Close() {
        m_desktop.Withdraw(m_last->Cookie(), false);
        return Take([this] { return m_desktop.FireWindowRevoked(m_last->Cookie()); });
    }

 private:
    template <class Announce>
    Cost Take(const Announce& announce) {
        const Cost before = Counted();
        const std::uint64_t begin = Nanoseconds();
        const desktop::EventResult result = announce();
        const double time = static_cast<double>(Nanoseconds() - begin) / 1e6;
        if (result.sinks != 1 || FAILED(result.hr) || result.timedOut) {
            Fail("an announcement is not taken");
        }
        const Cost after = Counted();
        return {time, after.reads - before.reads, after.advises - before.advises, after.calls - before.calls};
    }

    Cost Counted() const {
        Cost cost;
        for (const Browser* const browser : m_desktop.Browsers()) {
            cost.reads += browser->Reads(desktop::Property::Hwnd);
            cost.advises += browser->Sinks().advises;
            for (int property = 0; property < static_cast<int>(desktop::Property::Count_); ++property) {
                cost.calls += browser->Reads(static_cast<desktop::Property>(property));
            }
            cost.calls += browser->Sinks().advises + browser->Sinks().unadvises;
        }
        cost.calls += m_desktop.Enumerations() + m_desktop.Sinks().advises + m_desktop.Sinks().unadvises;
        return cost;
    }

    StandInDesktop m_desktop;
    testing::GuardFolder m_folder;
    std::unique_ptr<testing::Guard> m_guard;
    Browser* m_last = nullptr;
};

struct Kind {
    const char* what;
    Cost (Crowd::*announce)();
};
constexpr Kind kKinds[] = {{"a window opens", &Crowd::Open}, {"a window closes", &Crowd::Close}};
constexpr std::array<int, 3> kSizes = {10, 50, 200};

void Run(const Options& options) {
    const std::size_t rounds = options.RoundsOr(5, 1);
    Report report(options);
    // By kind and size.
    std::array<std::array<Values, kSizes.size()>, std::size(kKinds)> times;
    std::array<std::array<Cost, kSizes.size()>, std::size(kKinds)> most{};
    for (std::size_t round = 0; round < rounds; ++round) {
        for (std::size_t size = 0; size < kSizes.size(); ++size) {
            Crowd crowd(kSizes[size]);
            // The first pair warms up.
            for (int repeat = 0; repeat < 4; ++repeat) {
                for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
                    const Cost cost = (crowd.*kKinds[kind].announce)();
                    Cost& worst = most[kind][size];
                    worst.reads = std::max(worst.reads, cost.reads);
                    worst.advises = std::max(worst.advises, cost.advises);
                    worst.calls = std::max(worst.calls, cost.calls);
                    if (repeat > 0) {
                        times[kind][size].push_back(cost.milliseconds);
                    }
                }
            }
        }
    }
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
        const std::string what = kKinds[kind].what;
        for (std::size_t size = 0; size < kSizes.size(); ++size) {
            // Windows that are listed during the rebuild.
            const double windows = kSizes[size] + (kind == 0 ? 1 : 0);
            const std::string among = ", " + std::to_string(static_cast<int>(windows)) + " listed: ";
            const Cost& cost = most[kind][size];
            report.Limit(what + among + "reads of handles", "", cost.reads, "one a window and 10",
                         windows + 10);
            report.Limit(what + among + "connections", "", cost.advises, "one a window", windows);
            report.Compare(what + among + "calls", "", cost.calls, "windows", windows, Report::kNoGoal,
                           {cost.calls / windows, cost.calls / windows, cost.calls / windows});
            report.Point("announcements", what, windows, Median(times[kind][size]));
            report.Point("calls", what + ", all calls", windows, cost.calls);
            report.Point("calls", what + ", reads of handles", windows, cost.reads);
        }
        report.Compare(what + " among 200", "ms", times[kind][2], "among 50", times[kind][1], 5);
    }
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    kestrelguard::bench::Run(kestrelguard::bench::Options(count, arguments));
    return 0;
}
