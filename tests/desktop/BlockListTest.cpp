// The manual's way to bring in a big block list: its script as it is printed there, run by the system, and
// the unchanged program started by it.

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::testing {
namespace {

/// The block of the page that begins like a script, with the line ends of Windows.
std::string ScriptOfTheManual() {
    const std::string path = KESTRELGUARD_MANUAL "/block-lists.md";
    std::string page = ReadBytes(L"Z:" + std::wstring(path.begin(), path.end()));
    const std::string begin = "```\n//";
    const std::size_t at = page.find(begin);
    if (at == std::string::npos) {
        return {};
    }
    page.erase(0, at + begin.size() - 2);
    page.erase(page.find("```\n"));
    std::string script;
    for (const char letter : page) {
        script += letter == '\n' ? "\r\n" : std::string(1, letter);
    }
    return script;
}

class BlockListTest : public ::testing::Test {
 protected:
    ~BlockListTest() override { End(); }

    /// Runs the script, and waits for the program that it starts.
    void RunScript() {
        Process script(L"C:\\windows\\system32\\cscript.exe", {L"//nologo", L"sites.js"}, m_folder.Path());
        ASSERT_TRUE(script.WaitGone(120000));
        ASSERT_EQ(0u, script.ExitCode());
        ASSERT_TRUE(WaitUntil([&] {
            m_window = FindWindowW(L"Kestrelguard", nullptr);
            return m_window != nullptr && IsWindowVisible(m_window);
        }));
    }
    void End() {
        if (m_window != nullptr) {
            PostMessageW(m_window, WM_CLOSE, 0, 0);
            EXPECT_TRUE(WaitUntil([&] { return !IsWindow(m_window); }));
            // The file is written before the window goes, the process ends after it.
            EXPECT_TRUE(WaitUntil([&] { return DeleteFileW(m_folder.Exe().c_str()) != FALSE; }));
            m_window = nullptr;
        }
    }
    LRESULT Rows() const { return Ask(FindInside(m_window, L"ListBox"), LB_GETCOUNT); }
    bool Cancelled(const wchar_t* address) {
        desktop::Browser& browser = m_desktop.OpenBrowser();
        EXPECT_TRUE(WaitUntil([&] { return browser.Sinks().connected == 1; }));
        return browser.FireBeforeNavigate2(address).cancel;
    }

    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    GuardFolder m_folder{"PT1/:/:2\r\nSS1/:/:n/:/:old -\r\nPST/:/:7\r\n"};
    HWND m_window = nullptr;
};

TEST_F(BlockListTest, TheScriptBringsInAHundredThousandSitesAndKeepsTheRest) {
    const std::string script = ScriptOfTheManual();
    ASSERT_FALSE(script.empty());
    WriteBytes(m_folder.File(L"sites.js"), script);
    std::string list = "# a list\r\n\r\n";
    for (int site = 1; site <= 100'000; ++site) {
        list += "0.0.0.0 Ads" + std::to_string(site) + ".example\r\n";
    }
    list += "\t127.0.0.1\ttracker.example  # a word\r\n";
    WriteBytes(m_folder.File(L"list.txt"), list);

    ASSERT_NO_FATAL_FAILURE(RunScript());
    const std::string before = m_folder.Settings();
    EXPECT_NE(std::string::npos, before.find("SS1/:/:y/:/:ads1.example -ads2.example -"));
    EXPECT_TRUE(before.ends_with(" -ads100000.example -tracker.example\r\n"));
    EXPECT_NEAR(1.8e6, static_cast<double>(before.size()), 0.05e6) << "the manual tells the size";
    EXPECT_EQ(100'001, Rows());
    EXPECT_TRUE(Cancelled(L"http://www.ads77777.example/"));
    EXPECT_TRUE(Cancelled(L"http://tracker.example/"));
    EXPECT_FALSE(Cancelled(L"http://www.garden.example/"));
    End();
    EXPECT_TRUE(m_folder.SettingsLine("SS1").ends_with(" -tracker.example -"))
        << "an empty row at the next start";
    EXPECT_EQ("PT1/:/:2", m_folder.SettingsLine("PT1"));
    EXPECT_EQ("PST/:/:7", m_folder.SettingsLine("PST"));
}

TEST_F(BlockListTest, ARunLaterTheScriptPutsTheLineRight) {
    WriteBytes(m_folder.File(L"sites.js"), ScriptOfTheManual());
    WriteBytes(m_folder.File(L"list.txt"), "one.example\r\ntwo.example\r\n");
    WriteBytes(m_folder.File(L"KestrelS.CFG"),
               "SS1/:/:y/:/:one.example -two.example -three.example - -\r\nPT1/:/:2\r\n");
    ASSERT_NO_FATAL_FAILURE(RunScript());
    EXPECT_EQ(2, Rows());
    EXPECT_FALSE(Cancelled(L"http://three.example/"));
    EXPECT_TRUE(Cancelled(L"http://two.example/"));
}

}  // namespace
}  // namespace kestrelguard::testing
