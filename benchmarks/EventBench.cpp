// Measures what a browser waits for its events while the program watches it, against a sink in another
// process that does nothing, on the same browser and event by event; and, with the window in the tray,
// against one that makes the calls into the system which what the program does takes.
//
//   EventBench [--quick] [--rounds N] [--report FILE]
//
// kestrelguard.exe, NullSink.exe and LeastSink.exe lie beside it.

#include <windows.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "GuardSetup.h"
#include "Report.h"
#include "SiteWorkload.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::bench {
namespace {

using desktop::Browser;
using desktop::EventCall;
using desktop::StandInDesktop;
using testing::Guard;
using testing::GuardFolder;
using testing::Process;

constexpr DWORD kPatience = 120000;
constexpr std::size_t kSites = 100000;

/// A sink in this process that notes when it is called. Sinks are called in the order of their connection, so
/// what lies between two of these is the time of the sink between them.
class Stamp final : public IDispatch {
 public:
    virtual ~Stamp() = default;
    std::uint64_t Time() const { return m_time; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        *object = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    // Its owner keeps it.
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) noexcept override {
        m_time = Nanoseconds();
        return S_OK;
    }

 private:
    std::uint64_t m_time = 0;
};

double LowerQuartile(Values values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 4];
}

/// One browser with these sinks, in this order: a stamp, one that does nothing, a stamp, the program, a
/// stamp, one that does nothing, a stamp, one that does the least, a stamp.
class Road {
 public:
    Road() : m_folder(SettingsWith(Sites())) {
        desktop::BrowserOptions options;
        options.announced = false;
        m_browser = &m_desktop.OpenBrowser(options);
        Connect(0);
        StartSink(L"NullSink.exe");
        Connect(1);
        m_guard = std::make_unique<Guard>(m_folder);
        if (!m_guard->WaitReady(kPatience) || !m_guard->Icon(kPatience)) {
            Fail("the program does not start");
        }
        Expect(4);
        Connect(2);
        StartSink(L"NullSink.exe");
        Connect(3);
        StartSink(L"LeastSink.exe");
        Connect(4);
        Expect(kAllSinks);
    }

    struct Times {
        double program = 0;
        double nothing = 0;
        double least = 0;
    };
    /// So many events one after the other, milliseconds; `cancelled` is what must come of each. The lower
    /// quartile: what else the machine does makes events longer, never shorter.
    template <class Make>
    Times Deliver(std::size_t events, bool cancelled, const Make& make) {
        Values program;
        Values nothing;
        Values least;
        const auto between = [this](std::size_t first) {
            return static_cast<double>(m_stamps[first + 1].Time() - m_stamps[first].Time()) / 1e6;
        };
        for (std::size_t event = 0; event < events; ++event) {
            const desktop::EventResult result = m_browser->Object()->Events().Deliver(make(event));
            if (FAILED(result.hr) || result.sinks != kAllSinks || result.cancel != cancelled) {
                Fail("an event does not come out as it should");
            }
            nothing.push_back(between(0));
            program.push_back(between(1));
            nothing.push_back(between(2));
            least.push_back(between(3));
        }
        return {LowerQuartile(std::move(program)), LowerQuartile(std::move(nothing)),
                LowerQuartile(std::move(least))};
    }

    Browser& TheBrowser() { return *m_browser; }
    Guard& Program() { return *m_guard; }
    static std::vector<std::string> Sites() { return SiteWorkload::Entries(kSites); }

 private:
    void Connect(std::size_t stamp) {
        DWORD cookie = 0;
        m_browser->Object()->Events().Advise(&m_stamps[stamp], &cookie);
    }
    void StartSink(const wchar_t* program) {
        m_sinks.push_back(
            std::make_unique<Process>(Process::WithPipes(testing::OwnFolder() + L"\\" + program)));
        if (m_sinks.back()->WaitLine("listening 1", 0, kPatience) < 0) {
            Fail("a sink to compare with does not listen");
        }
    }
    void Expect(int sinks) const {
        if (m_browser->Sinks().connected != sinks) {
            Fail("the browser has other sinks than it should");
        }
    }

    static constexpr int kAllSinks = 9;

    Stamp m_stamps[5];
    StandInDesktop m_desktop;
    Browser* m_browser = nullptr;
    GuardFolder m_folder;
    std::vector<std::unique_ptr<Process>> m_sinks;
    std::unique_ptr<Guard> m_guard;
};

enum class Where { InTheTray, OnTheScreen };

void Measure(Road& road, Report& report, const Options& options, Where where) {
    const std::size_t rounds = options.RoundsOr(9, 3);
    const std::size_t events = options.quick ? 50 : 200;
    const std::string last = Road::Sites().back();
    const bool inTray = where == Where::InTheTray;
    const double goal = inTray ? 1.15 : Report::kNoGoal;
    struct Measured {
        Values program;
        Values nothing;
        Values least;
        int reads = 0;
    };
    struct Event {
        double goal;
        /// What the sink that does the least does then; null when it does nothing either.
        const char* least;
        std::string what;
        std::function<EventCall(std::size_t)> make;
        Measured measured;
        bool cancelled;
    };
    const auto navigation = [&road](const std::string& address) {
        return EventCall::BeforeNavigate2(road.TheBrowser().Dispatch(),
                                          std::wstring(address.begin(), address.end()));
    };
    constexpr const char* kShows = "a sink that only puts the address into a tree";
    // Another address each time: what the tree shows changes.
    Event all[] = {
        {.goal = Report::kNoGoal,
         .least = nullptr,
         .what = "an event on which nobody acts",
         .make = [](std::size_t) { return EventCall::DownloadBegin(); },
         .measured = {},
         .cancelled = false},
        {.goal = goal,
         .least = "a sink that only asks for the keys and sets two labels",
         .what = "a cancelled popup",
         .make = [](std::size_t) { return EventCall::NewWindow2(); },
         .measured = {},
         .cancelled = true},
        {.goal = Report::kNoGoal,
         .least = kShows,
         .what = "a navigation let through, 100000 sites",
         .make = [&](std::size_t event) { return navigation("HTTP://9.9.9.9/" + std::to_string(event)); },
         .measured = {},
         .cancelled = false},
        {.goal = goal,
         .least = kShows,
         .what = "a navigation blocked by the last of 100000 sites",
         .make =
             [&](std::size_t event) { return navigation("HTTP://" + last + "/" + std::to_string(event)); },
         .measured = {},
         .cancelled = true},
    };
    for (std::size_t round = 0; round <= rounds; ++round) {
        for (Event& event : all) {
            road.TheBrowser().ResetReads();
            const Road::Times times = road.Deliver(events, event.cancelled, event.make);
            Measured& measured = event.measured;
            measured.reads += road.TheBrowser().Reads(desktop::Property::Hwnd);
            if (round > 0) {
                measured.program.push_back(times.program);
                measured.nothing.push_back(times.nothing);
                measured.least.push_back(times.least);
            }
        }
    }
    for (const Event& event : all) {
        const std::string what = event.what + (inTray ? ", in the tray" : ", tree on the screen");
        const Measured& measured = event.measured;
        report.Compare(what, "ms", measured.program, "a sink that does nothing", measured.nothing,
                       event.goal);
        std::printf("    (%.2f reads of the window's handle an event)\n",
                    static_cast<double>(measured.reads) / static_cast<double>(events * (rounds + 1)));
        if (inTray && event.least != nullptr) {
            // Its window is as hidden as the program's.
            report.Compare(what, "ms", measured.program, event.least, measured.least, Report::kNoGoal);
        }
    }
}

void Run(const Options& options) {
    Report report(options);
    Road road;
    Measure(road, report, options, Where::InTheTray);
    if (!road.Program().Restore()) {
        Fail("the program's window does not come to the screen");
    }
    Measure(road, report, options, Where::OnTheScreen);
}

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    kestrelguard::bench::Run(kestrelguard::bench::Options(count, arguments));
    return 0;
}
