// The unchanged program on roads on which one call into the desktop goes wrong: every call of each road fails
// once, lets another window open before it is answered, and is the last that its object answers. After each,
// the program lives (or has ended with its box), its settings file is whole and the next popup is handled.
//
// A fixed part of the positions; all of them in long runs. KESTRELGUARD_POSITION=N tries that one alone.

#include <set>

#include "DesktopTest.h"
#include "desktop/driver/LongRun.h"

namespace kestrelguard::testing {
namespace {

using desktop::Fault;
using desktop::Faults;

enum class Kind { Fails, Interferes, Disconnects };
constexpr const char* kKindNames[] = {"fails", "interferes", "disconnects"};

/// The settings file from its fourth line on. A read and a write add to the list of sites and to the
/// counters.
constexpr const char* kSettings[] = {"'###################\r\n",
                                     "PT1/:/:0\r\n",
                                     "MIN/:/:y\r\n",
                                     "SS1/:/:y/:/:badone.example -badtwo.example -",
                                     "SS2/:/:y/:/:banned -worse\r\n",
                                     "PP1/:/:n\r\n",
                                     "PP2/:/:n\r\n",
                                     "PP3/:/:n\r\n",
                                     "PP4/:/:n/:/:90/:/:H\r\n",
                                     "USE/:/:",
                                     "PST/:/:"};

class FaultRoadsTest : public OneGuardTest {
 protected:
    ~FaultRoadsTest() override { Faults::Here().Disarm(); }

    void Start() {
        m_guard.reset();
        std::string settings =
            "'# Kestrelguard v2.0. 113\r\n'# Configuration Modified: ()\r\n"
            "'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING\r\n";
        for (const std::string line : kSettings) {
            settings += line + (line.ends_with('\n') ? "" : line.starts_with("SS1") ? "\r\n" : "7\r\n");
        }
        m_folder = std::make_unique<GuardFolder>(settings);
        m_guard = std::make_unique<Guard>(*m_folder);
    }
    /// A program that runs and two windows that it watches.
    void Prepare() {
        while (m_desktop.OpenBrowsers().size() < 2) {
            m_desktop.OpenBrowser();
        }
        if (m_guard) {
            // One that has already answered before.
            ASSERT_TRUE(WaitUntil([this] { return OneSinkEach(); }));
        } else if (!m_startsItself) {
            Start();
            ASSERT_TRUE(m_guard->WaitReady());
            ASSERT_TRUE(WaitUntil([this] { return OneSinkEach(); }));
        }
    }
    bool OneSinkEach() const {
        for (Browser* browser : m_desktop.OpenBrowsers()) {
            if (browser->Sinks().connected > 1) {
                // A sink that the program could not take back must be cut off: it goes with the next event.
                browser->FireDownloadBegin();
            }
            if (browser->Sinks().connected != 1) {
                return false;
            }
        }
        return true;
    }
    Browser& First() const { return *m_desktop.OpenBrowsers()[0]; }
    Browser& Second() const { return *m_desktop.OpenBrowsers()[1]; }

    /// Presses OK in every message box, until the condition holds.
    template <class Condition>
    bool WaitDespiteBoxes(Condition condition) {
        return WaitUntil([&] {
            if (const MessageBoxSeen box = FindMessageBox(m_guard->Program().Id())) {
                m_boxes.insert(box.text);
                Dismiss(box);
            }
            return condition();
        });
    }
    bool Answers() const {
        LRESULT answer = 0;
        return Ask(m_guard->Window(), WM_NULL, 0, 0, answer, 500);
    }

    Fault Make(Kind kind) {
        Fault fault;
        switch (kind) {
            case Kind::Fails:
                fault.answer = E_FAIL;
                break;
            case Kind::Interferes:
                fault.before = [this] { m_desktop.OpenBrowser(); };
                break;
            case Kind::Disconnects:
                fault.disconnects = true;
                fault.answer = RPC_E_DISCONNECTED;
                break;
        }
        return fault;
    }

    /// Whether the file has all its lines, with the values that it was given.
    static void ExpectWhole(const std::string& settings) {
        std::size_t at = 0;
        for (const char* const line : kSettings) {
            at = settings.find(std::string("\r\n") + line, at);
            ASSERT_NE(std::string::npos, at) << line << " in\n" << settings;
        }
        EXPECT_TRUE(settings.ends_with("\r\n"));
    }

    /// What must hold after every fault.
    void ExpectWell() {
        ASSERT_TRUE(WaitDespiteBoxes([this] { return Answers(); }));
        // The shell notices when a browser is gone.
        for (Browser* browser : m_desktop.Browsers()) {
            if (browser->Ended()) {
                m_desktop.Withdraw(browser->Cookie());
            }
        }
        Browser& fresh = m_desktop.OpenBrowser();
        // A program that has lost its list takes it up again by itself, before long.
        ASSERT_TRUE(WaitDespiteBoxes([this] { return OneSinkEach(); }));
        const desktop::PendingEvent popup = fresh.Start(desktop::EventCall::NewWindow2());
        ASSERT_TRUE(WaitDespiteBoxes([&] { return popup.Done(); }));
        EXPECT_EQ(S_OK, popup.Result().hr);
        EXPECT_EQ(1, popup.Result().sinks);
        EXPECT_TRUE(popup.Result().cancel);
        EXPECT_TRUE(m_guard->Program().Running());
        ExpectWhole(m_folder->Settings());
        while (m_desktop.OpenBrowsers().size() > 2) {
            m_desktop.OpenBrowsers().back()->Close();
        }
    }

    /// Takes the road once without a fault, then with each.
    template <class Way, class Check>
    void Walk(const char* road, int stride, Way way, Check check) {
        Prepare();
        Faults::Here().Arm();
        way();
        const std::vector<std::string> calls = Faults::Here().Calls();
        Faults::Here().Disarm();
        check(-1);
        ASSERT_FALSE(HasFatalFailure());
        const auto one = static_cast<int>(FromEnvironment("KESTRELGUARD_POSITION", 99999));
        const int count = static_cast<int>(calls.size());
        for (int kind = 0; kind < 3; ++kind) {
            // Other positions for other kinds, so that a part of each sees more of the road.
            for (int position = LongRun() || one != 99999 ? 0 : kind % stride; position < count;
                 position += LongRun() || one != 99999 ? 1 : stride) {
                if (one != 99999 && position != one) {
                    continue;
                }
                const std::string& name = calls[static_cast<std::size_t>(position)];
                const std::string what = std::string(road) + ", call " + std::to_string(position) + " of " +
                                         std::to_string(count) + " (" + name + ") " + kKindNames[kind];
                SCOPED_TRACE(what);
                Prepare();
                ASSERT_FALSE(HasFatalFailure());
                Faults::Here().Arm(position, Make(static_cast<Kind>(kind)));
                way();
                Faults::Here().Disarm();
                check(position);
                ASSERT_FALSE(HasFatalFailure()) << what;
                ++m_tried;
            }
        }
        RecordProperty("calls", count);
        RecordProperty("tried", m_tried);
        std::printf("%s: %d calls, %d faults tried, boxes: %s\n", road, count, m_tried,
                    ::testing::PrintToString(m_boxes).c_str());
    }

    std::set<std::wstring> m_boxes;
    bool m_startsItself = false;
    int m_tried = 0;
};

TEST_F(FaultRoadsTest, Popup) {
    // Both keys held, when the link loads in the same window; then with the question.
    Walk(
        "popup", 2,
        [this] {
            First().SetStatusText(L"http://link.example/");
            {
                const HeldKeys keys(*m_guard, {VK_CONTROL, VK_SHIFT});
                First().FireNewWindow2();
                First().WaitIdle();
            }
            EXPECT_TRUE(m_guard->SetMode(1));
            const desktop::PendingEvent popup = Second().Start(desktop::EventCall::NewWindow2());
            EXPECT_TRUE(WaitDespiteBoxes([&] { return popup.Done(); }));
            EXPECT_TRUE(m_guard->SetMode(0));
        },
        [this](int) { ExpectWell(); });
}

TEST_F(FaultRoadsTest, Navigation) {
    // Allowed, blocked, and to a page whose title is banned, which the program replaces.
    Walk(
        "navigation", 2,
        [this] {
            Browser& browser = First();
            browser.FireBeforeNavigate2(L"http://fine.example/");
            browser.FireNavigateComplete2(L"http://fine.example/");
            browser.FireDocumentComplete(L"http://fine.example/");
            browser.FireBeforeNavigate2(L"http://www.badone.example/");
            const desktop::PendingEvent title =
                browser.Start(desktop::EventCall::TitleChange(L"This is banned"));
            EXPECT_TRUE(WaitDespiteBoxes([&] { return title.Done(); }));
            browser.WaitIdle();
        },
        [this](int) { ExpectWell(); });
}

TEST_F(FaultRoadsTest, Announcement) {
    Walk(
        "announcement", 11, [this] { m_desktop.OpenBrowser(); }, [this](int) { ExpectWell(); });
}

TEST_F(FaultRoadsTest, Withdrawal) {
    Walk(
        "withdrawal", 6, [this] { Second().Close(); }, [this](int) { ExpectWell(); });
}

TEST_F(FaultRoadsTest, Start) {
    m_startsItself = true;
    Walk(
        "start", 16,
        [this] {
            m_boxes.clear();
            Start();
            EXPECT_TRUE(
                WaitDespiteBoxes([this] { return !m_guard->Program().Running() || m_guard->WaitReady(0); }));
        },
        [this](int position) {
            if (m_guard->Program().Running()) {
                ExpectWell();
                EXPECT_TRUE(m_guard->Close());
            } else {
                EXPECT_NE(-1, position);
                EXPECT_EQ(1u, m_guard->Program().ExitCode());
                EXPECT_EQ(1u, m_boxes.size());
            }
            ExpectWhole(m_folder->Settings());
            m_guard.reset();
        });
}

TEST_F(FaultRoadsTest, End) {
    Walk(
        "end", 3,
        [this] {
            PostMessageW(m_guard->Window(), WM_CLOSE, 0, 0);
            EXPECT_TRUE(WaitDespiteBoxes([this] { return !m_guard->Program().Running(); }));
        },
        [this](int) {
            EXPECT_EQ(0u, m_guard->Program().ExitCode());
            // What could not be let go of is of no use to anybody, and goes with the next event.
            for (Browser* browser : m_desktop.OpenBrowsers()) {
                browser->FireDownloadBegin();
                EXPECT_EQ(0, browser->Sinks().connected);
            }
            ExpectWhole(m_folder->Settings());
            m_guard.reset();
        });
}

}  // namespace
}  // namespace kestrelguard::testing
