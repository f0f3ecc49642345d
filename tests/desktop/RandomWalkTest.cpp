// A random walk over what a user and a desktop can do, with the unchanged program. After each step all that
// it shows and has written is compared with a small model.
//
//   KESTRELGUARD_SEED=N   walks with that seed alone, saying each step
//   KESTRELGUARD_STEPS=N  steps a walk
//
// A fixed set of seeds; in long runs many more.

#include <gtest/gtest.h>

#include "WalkedCleaning.h"
#include "app/win32/ControlIds.h"
#include "desktop/driver/LongRun.h"

namespace kestrelguard::testing {
namespace {

using desktop::EventCall;
using desktop::EventResult;
using desktop::PendingEvent;

class Walk : private WalkedCleaning {
 public:
    explicit Walk(unsigned seed, bool loud) : WalkedCleaning(seed), m_loud(loud) {
        for (unsigned i = 0; i < Pick(3); ++i) {
            Open();
        }
        PrepareFolder();
        StartAgain();
    }

    /// One step; what is wrong after it, empty when nothing is.
    std::string Step() {
        struct Action {
            unsigned weight;
            const char* name;
            void (Walk::*act)();
        };
        static constexpr Action kActions[] = {
            {6, "a window opens", &Walk::Open},
            {4, "a window closes", &Walk::Close},
            {2, "a window dies", &Walk::Die},
            {3, "a window opens in silence", &Walk::OpenSilently},
            {8, "a navigation", &Walk::Navigate},
            {8, "a title", &Walk::Title},
            {12, "a popup", &Walk::Popup},
            {6, "a click on a mode", &Walk::Mode},
            {8, "a click on a box", &Walk::Box},
            {4, "a click on Apply", &Walk::Apply},
            {2, "a click on OK", &Walk::Ok},
            {2, "a click on Cancel", &Walk::Cancel},
            {2, "the window is minimised", &Walk::Minimise},
            {3, "the window is shown", &Walk::Show},
            {4, "a site is added", &Walk::AddSite},
            {3, "a site is removed", &Walk::RemoveSite},
            {3, "the keywords are edited", &Walk::EditKeywords},
            {3, "a click on the first tab", &Walk::FirstTab},
            {3, "a double click on the root", &Walk::DoubleClickRoot},
            {4, "a choice from the tray menu", &Walk::TrayMenu},
            {3, "a choice from the tree's menu", &Walk::TreeMenu},
            {2, "the cache window opens and closes", &Walk::CacheWindow},
            {3, "something is cleared", &Walk::Clear},
            {6, "the browser leaves something behind", &Walk::Browse},
            {14, "minutes pass", &Walk::Minutes},
            {4, "the interval is edited", &Walk::Interval},
            {4, "a choice of a unit", &Walk::Unit},
            {1, "the program ends and starts", &Walk::Restart},
            {1, "the program is killed and starts", &Walk::KillAndRestart},
        };
        unsigned all = 0;
        for (const Action& action : kActions) {
            all += action.weight;
        }
        unsigned at = Pick(all);
        const Action* chosen = kActions;
        while (at >= chosen->weight) {
            at -= chosen->weight;
            ++chosen;
        }
        m_problem.clear();
        m_what = chosen->name;
        (this->*chosen->act)();
        if (m_loud) {
            std::printf("  %s\n", m_what.c_str());
        }
        m_model.PointAtIcon();
        std::string difference;
        const auto agrees = [&] {
            PointAtIcon();
            return (difference = Difference()).empty();
        };
        if (!WaitUntil(agrees, 15000)) {
            m_problem += difference;
        }
        return m_problem.empty() ? std::string() : m_what + ": " + m_problem;
    }

    /// The end; what is wrong with it.
    std::string End() {
        m_problem.clear();
        m_what = "the end";
        Leave();
        return m_problem;
    }

 private:
    // --- events

    void Navigate() {
        Page* const page = AnyPage();
        if (page == nullptr) {
            return;
        }
        const std::string url = Pick<const char*>({"http://fine.example/", "http://www.badone.example/x",
                                                   "http://a.badtwo.example/", "about:blank", ""});
        Say(url);
        const EventResult result = page->browser->FireBeforeNavigate2(Wide(url));
        Expect(SUCCEEDED(result.hr) && result.sinks == 1, "not answered");
        Expect(result.cancel == m_model.Stops(url), result.cancel ? "stopped" : "not stopped");
        if (GuardModel::Node* const node = NodeOf(*page)) {
            node->url = Wide(url);
        }
        if (!result.cancel) {
            page->url = url;
            page->browser->SetUrl(Wide(url));
            page->browser->FireNavigateComplete2(Wide(url));
            page->browser->FireDocumentComplete(Wide(url));
        }
    }
    void ExpectNavigation(Page& page, const std::string& start) {
        const auto calls = page.browser->NavigateCalls();
        if (start.empty()) {
            Expect(calls.size() == page.navigations, "navigated");
        } else {
            Expect(calls.size() == page.navigations + 1, "not navigated");
            Expect(!calls.empty() && calls.back().url.starts_with(Wide(start)), "navigated elsewhere");
        }
        page.navigations = calls.size();
    }
    void Title() {
        Page* const page = AnyPage();
        if (page == nullptr) {
            return;
        }
        const std::string title =
            Pick<const char*>({"a fine page", "about xxx", "some sex and porn", "banned words", "worse", ""});
        Say(title);
        const EventResult result = page->browser->FireTitleChange(Wide(title));
        Expect(result.hr == S_OK && result.sinks == 1, "not answered");
        page->title = title;
        if (GuardModel::Node* const node = NodeOf(*page)) {
            node->title = Wide(title);
        }
        ExpectNavigation(*page, m_model.Bans(title).empty() ? "" : "about:<html>");
    }
    void Popup() {
        Page* const page = AnyPage();
        if (page == nullptr) {
            return;
        }
        const unsigned keys = Pick(4);
        Say("mode " + std::to_string(m_model.now.mode) + ", keys " + std::to_string(keys));
        EventResult result;
        {
            static const std::vector<BYTE> kKeys[] = {{}, {VK_CONTROL}, {VK_SHIFT}, {VK_CONTROL, VK_SHIFT}};
            const HeldKeys held(*m_guard, kKeys[keys]);
            const PendingEvent pending = page->browser->Start(EventCall::NewWindow2());
            if (m_model.now.mode == 1) {
                const MessageBoxSeen box = WaitMessageBox(m_guard->Program().Id());
                Expect(box.caption == L"Kestrelguard New Browser Window Prompt!", "no question");
                Expect(box && Dismiss(box), "the question stays");
            }
            result = pending.Result();
        }
        Expect(result.hr == S_OK && result.sinks == 1, "not answered");
        const bool stopped = m_model.now.mode == 0 && (keys & 1) == 0;
        const bool sameWindow = m_model.now.mode == 0 && keys == 3;
        Expect(result.cancel == (stopped || sameWindow), result.cancel ? "stopped" : "not stopped");
        ExpectNavigation(*page, sameWindow ? "http://link.example/" : "");
        if (stopped) {
            m_model.Stopped();
        }
    }

    // --- the main window

    void Mode() {
        m_model.now.mode = static_cast<int>(Pick(3));
        m_model.apply = true;
        Say(std::to_string(m_model.now.mode));
        Press(kPTO0 + m_model.now.mode);
    }
    void Box() {
        static constexpr int kBoxes[] = {kKG_C0, kKG_C1, kKG_C2, kKG_C3, kKG_C4, kKG_C5, kCOpenM};
        const unsigned box = Pick(7);
        Say(std::to_string(box));
        if (box < 6) {
            m_model.now.boxes[box] = !m_model.now.boxes[box];
        } else {
            m_model.now.minimised = !m_model.now.minimised;
        }
        m_model.apply = true;
        Press(kBoxes[box]);
    }
    void Apply() {
        if (m_model.apply) {
            m_model.Apply();
            Press(kApplyCmd);
        }
    }
    void Ok() {
        if (m_model.apply) {
            m_model.Apply();
        }
        m_model.icon = true;
        Press(kOKcmd);
    }
    void Cancel() {
        m_model.Cancel();
        Press(kCancelcmd);
    }
    void Minimise() {
        m_model.icon = true;
        PostMessageW(m_guard->Window(), WM_SYSCOMMAND, SC_MINIMIZE, 0);
    }
    void Show() {
        if (m_model.icon) {
            m_model.icon = false;
            Ask(m_guard->Window(), WM_MOUSEMOVE, 1, WM_LBUTTONUP);
        }
    }
    void AddSite() {
        const std::string site = Pick<const char*>({"badone", "badtwo.example", "nothing"});
        Say(site);
        TypeText(Control(kSiteTXT), Wide(site));
        m_model.now.rows.push_back(site);
        Press(kAddSite);
    }
    void RemoveSite() {
        if (m_model.now.rows.empty()) {
            return;
        }
        const unsigned row = Pick(static_cast<unsigned>(m_model.now.rows.size()));
        Say(std::to_string(row));
        SelectRow(Control(kSiteLST), static_cast<int>(row));
        if (!m_model.now.rows[row].empty()) {
            m_model.now.rows.erase(m_model.now.rows.begin() + static_cast<std::ptrdiff_t>(row));
        }
        Press(kRemoveSite);
    }
    void EditKeywords() {
        const std::string text = Pick<const char*>({"banned -worse", "single", "xxx -porn -sex", ""});
        if (text == m_model.now.keywords) {
            return;
        }
        Say(text);
        TypeText(Control(kTitleBan), Wide(text));
        m_model.now.keywords = text;
        m_model.keywordsEdited = true;
        m_model.apply = true;
    }
    void FirstTab() {
        m_model.ShowCounters();
        ClickTab(m_guard->Tabs(), 0);
    }
    /// What it shows, and one of its choices but Help, which asks the shell. Exit has its own step.
    void TrayMenu() {
        if (!m_model.icon) {
            return;
        }
        static constexpr std::size_t kPrevent = 2;
        static constexpr std::size_t kClearCache = 3;
        static constexpr std::size_t kClearCookies = 4;
        static constexpr std::size_t kShow = 5;
        const OpenMenu menu = m_guard->OpenTrayMenu();
        if (menu.entries.size() != 8) {
            m_problem += "no tray menu; ";
            return;
        }
        const MenuEntry& prevent = menu.entries[kPrevent];
        Expect(prevent.text == L"Prevent Popups = " + std::to_wstring(m_model.today), "caption");
        Expect(prevent.checked == (m_model.now.mode == 0), "check mark");
        const std::size_t choice = kPrevent + Pick(kShow - kPrevent + 1);
        Say(std::to_string(choice));
        if (choice == kPrevent) {
            m_model.PreventOrAllow();
        } else if (choice == kClearCache) {
            m_model.page = false;
        } else if (choice == kClearCookies) {
            m_model.cookie = false;
        } else if (choice == kShow) {
            m_model.icon = false;
        }
        Expect(m_guard->Inside().Choose(menu.entries[choice].text), "nothing chosen");
    }
    /// Of any node of a window.
    void TreeMenu() {
        if (m_model.icon || m_model.nodes.empty()) {
            return;
        }
        const unsigned node = Pick(static_cast<unsigned>(m_model.nodes.size()));
        const HTREEITEM item = TreeNodes(m_guard->Tree()).at(1 + 3 * node + Pick(3)).item;
        const auto page = std::find_if(m_pages.begin(), m_pages.end(), [&](const Page& each) {
            return each.browser->Handle() == m_model.nodes[node].window;
        });
        const bool close = Pick(2) != 0 && page != m_pages.end();
        Say(close ? "close" : "show");
        if (close) {
            Forget(*page);
        }
        SelectNode(m_guard->Tree(), item);
        ClickNode(m_guard->Tree(), item, true);
        Expect(static_cast<bool>(m_guard->Inside().WaitMenu()), "no menu");
        Expect(m_guard->Inside().Choose(close ? L"Close this Browser Window" : L"Show this Browser Window"),
               "nothing chosen");
        if (close) {
            Expect(page->browser->WaitEnded(), "not closed");
            Gone(&*page);
        }
    }
    void DoubleClickRoot() {
        // Where nothing would tell the end of it, it is left out.
        if (std::all_of(m_model.nodes.begin(), m_model.nodes.end(),
                        [](const auto& node) { return node.atRebuild; })) {
            return;
        }
        Rebuild();
        DoubleClickNode(m_guard->Tree(), TreeNodes(m_guard->Tree()).at(0).item);
    }

    // --- its life

    void StartAgain() {
        m_guard = std::make_unique<Guard>(*m_folder, Prepare);
        Expect(m_guard->WaitReady(), "does not start");
        m_model.Start();
        Rebuild();
    }
    void Leave() {
        const bool byMenu = m_model.icon && Pick(2) != 0;
        Expect(byMenu ? m_guard->ExitByMenu() : m_guard->Close(), "does not end");
        Expect(m_guard->Program().ExitCode() == 0, "ends badly");
        m_model.Write();
        ExpectFile();
        for (const Page& page : m_pages) {
            Expect(page.browser->Sinks().connected == 0, "a sink stays");
        }
    }
    void Restart() {
        Leave();
        StartAgain();
    }
    void KillAndRestart() {
        m_guard->Program().Kill();
        // Nobody has taken its sinks back: each goes with the next event.
        for (const Page& page : m_pages) {
            page.browser->FireDownloadBegin();
        }
        m_desktop.FireOnList(EventCall(4711));
        StartAgain();
    }

    const bool m_loud;
};

TEST(RandomWalkTest, TheProgramDoesWhatTheModelSays) {
    ASSERT_TRUE(UseStandInLibraries());
    const unsigned one = FromEnvironment("KESTRELGUARD_SEED", 0);
    const unsigned first = one != 0 ? one : 1;
    const unsigned last = one != 0 ? one : LongRun() ? 400 : 3;
    const unsigned steps = FromEnvironment("KESTRELGUARD_STEPS", LongRun() ? 300 : 60);
    for (unsigned seed = first; seed <= last; ++seed) {
        std::printf("KESTRELGUARD_SEED=%u KESTRELGUARD_STEPS=%u\n", seed, steps);
        std::fflush(stdout);
        Walk walk(seed, one != 0);
        for (unsigned step = 0; step < steps; ++step) {
            const std::string wrong = walk.Step();
            ASSERT_TRUE(wrong.empty()) << "seed " << seed << ", step " << step << ": " << wrong;
        }
        const std::string wrong = walk.End();
        ASSERT_TRUE(wrong.empty()) << "seed " << seed << ": " << wrong;
    }
}

}  // namespace
}  // namespace kestrelguard::testing
