#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "app/win32/ControlIds.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"
#include "tests/support/SpinFor.h"

namespace kestrelguard::testing {
namespace {

constexpr int kBoxes[] = {kKG_C0, kKG_C1, kKG_C2, kKG_C3, kKG_C4, kKG_C5};

/// The file with its second line, which tells the time of the write, cut to what never changes. A file whose
/// header is not as it must be comes back as it is.
std::string WithoutDate(const std::string& file) {
    const std::string before = "'# Kestrelguard v2.0. 113\r\n'# Configuration Modified: (";
    const std::string after =
        ")\r\n'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING\r\n'###################\r\n";
    const std::size_t end = file.find(after);
    if (file.compare(0, before.size(), before) != 0 || end == std::string::npos || end <= before.size()) {
        return file;
    }
    return "HEADER\r\n" + file.substr(end + after.size());
}

constexpr char kFresh[] =
    "HEADER\r\n"
    "PT1/:/:0\r\n"
    "MIN/:/:n\r\n"
    "SS1/:/:n/:/:\r\n"
    "SS2/:/:n/:/:xxx -porn -sex\r\n"
    "PP1/:/:n\r\n"
    "PP2/:/:n\r\n"
    "PP3/:/:n\r\n"
    "PP4/:/:n/:/:60/:/:M\r\n"
    "USE/:/:0\r\n"
    "PST/:/:0\r\n";

class SettingsDesktopTest : public ::testing::Test {
 protected:
    /// Starts the program; whether it comes up.
    bool Start(DWORD limit = kLimit) {
        m_guard.emplace(m_folder);
        return m_guard->WaitReady(limit);
    }

    std::wstring Path() const { return m_folder.File(L"KestrelS.CFG"); }

    HWND Control(int id) const {
        for (const HWND window : Inside(m_guard->Window())) {
            if (IdOf(window) == id) {
                return window;
            }
        }
        return nullptr;
    }

    std::vector<int> CheckedBoxes() const {
        std::vector<int> checked;
        for (std::size_t box = 0; box < std::size(kBoxes); ++box) {
            if (Checked(Control(kBoxes[box]))) {
                checked.push_back(static_cast<int>(box));
            }
        }
        return checked;
    }

    std::vector<std::wstring> Sites() const { return ListRows(Control(kSiteLST)); }
    std::wstring Text(int id) const { return TextOf(Control(id)); }
    void Press(int id) const { ClickAndWait(Control(id)); }

    /// Dismisses the box of a run-time error; whether it had that number and description.
    ::testing::AssertionResult ErrorBox(const std::wstring& number, const std::wstring& description) {
        const MessageBoxSeen box = WaitMessageBox(m_guard->Program().Id());
        if (!box) {
            return ::testing::AssertionFailure() << "no box";
        }
        const bool right = box.caption == L"Kestrelguard" &&
                           box.text.find(L"Run-time error '" + number + L"':") == 0 &&
                           box.text.find(description) != std::wstring::npos;
        if (!Dismiss(box)) {
            return ::testing::AssertionFailure() << "the box stays";
        }
        return right ? ::testing::AssertionSuccess()
                     : ::testing::AssertionFailure() << std::string(box.text.begin(), box.text.end());
    }

    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    GuardFolder m_folder;
    std::optional<Guard> m_guard;
};

TEST_F(SettingsDesktopTest, FirstStartWritesTheDefaults) {
    ASSERT_TRUE(Start());
    EXPECT_EQ(WithoutDate(m_folder.Settings()), kFresh);
    ASSERT_TRUE(m_guard->Close());
    EXPECT_EQ(m_guard->Program().ExitCode(), 0U);
    EXPECT_EQ(WithoutDate(m_folder.Settings()), kFresh);
}

TEST_F(SettingsDesktopTest, EverySettingComesAndGoes) {
    WriteBytes(Path(),
               "pt1/:/:1\r\nMIN/:/:Y\r\nSS1/:/:y/:/:casino -Banners -\r\nSS2/:/:n/:/:Poker -Dice\r\n"
               "PP1/:/:Y\r\nPP2/:/:n\r\nPP3/:/:y\r\nPP4/:/:y/:/: 2 /:/:h\r\nUSE/:/:41\r\nPST/:/:1234567\r\n");
    ASSERT_TRUE(Start());
    EXPECT_FALSE(Checked(Control(kPTO0)));
    EXPECT_TRUE(Checked(Control(kPTO1)));
    EXPECT_FALSE(Checked(Control(kCOpenM)));  // the capital Y
    EXPECT_EQ(CheckedBoxes(), (std::vector<int>{0, 2, 4, 5}));
    EXPECT_EQ(Sites(), (std::vector<std::wstring>{L"casino", L"Banners", L""}));
    EXPECT_EQ(Text(kTitleBan), L"Poker -Dice");
    EXPECT_EQ(Text(kWash_F), L"2");
    EXPECT_EQ(Text(kWash_CMB), L"Hour/s");
    EXPECT_EQ(Text(kPopStopsT), L"1,234,567");
    EXPECT_FALSE(Enabled(Control(kApplyCmd)));
    ASSERT_TRUE(m_guard->Close());
    EXPECT_EQ(
        WithoutDate(m_folder.Settings()),
        "HEADER\r\nPT1/:/:1\r\nMIN/:/:n\r\nSS1/:/:y/:/:casino -Banners - -\r\nSS2/:/:n/:/:Poker -Dice\r\n"
        "PP1/:/:y\r\nPP2/:/:n\r\nPP3/:/:y\r\nPP4/:/:y/:/:2/:/:H\r\nUSE/:/:42\r\nPST/:/:1234567\r\n");
}

TEST_F(SettingsDesktopTest, OddFileIsTolerated) {
    // NUL bytes, lone CR and LF, an empty list entry, no line end at the end.
    const char file[] =
        "PP1/:/:y\0\r\n\0\0\r\n\r\rSS1/:/:y\nPP4/:/:y\rPST/:/:99999999999\nUSE/:/:x\rSS2/:/:y/:/:one\r\nPT1/"
        ":/:2";
    WriteBytes(Path(), std::string(file, sizeof file - 1));
    ASSERT_TRUE(Start());
    EXPECT_TRUE(Checked(Control(kPTO2)));
    EXPECT_EQ(CheckedBoxes(), (std::vector<int>{0, 1, 5}));
    EXPECT_TRUE(Sites().empty());
    EXPECT_EQ(Text(kTitleBan), L"xxx -porn -sex");
    EXPECT_EQ(Text(kWash_F), L"60");
    ASSERT_TRUE(m_guard->Close());
    EXPECT_NE(m_folder.Settings().find("USE/:/:1\r\nPST/:/:0\r\n"), std::string::npos);
}

TEST_F(SettingsDesktopTest, ValuesThatAreNoneTakeTheirPlaceAllTheSame) {
    // Each key has a value first that the second line has to take away.
    WriteBytes(Path(),
               "PST/:/:7\r\nPST/:/:\r\nUSE/:/:7\r\nUSE/:/:x\r\nSS1/:/:y/:/:casino\r\n"
               "PP4/:/:n/:/:7/:/:h\r\nPP4/:/:y/:/:abc/:/:d\r\n");
    ASSERT_TRUE(Start());
    EXPECT_EQ(Text(kPopStopsT), L"0");
    EXPECT_EQ(CheckedBoxes(), (std::vector<int>{0, 5}));
    EXPECT_TRUE(Sites().empty());
    EXPECT_EQ(Text(kWash_F), L"60");
    EXPECT_EQ(Text(kWash_CMB), L"Day/s");
    ASSERT_TRUE(m_guard->Close());
    EXPECT_EQ(WithoutDate(m_folder.Settings()),
              "HEADER\r\nPT1/:/:0\r\nMIN/:/:n\r\nSS1/:/:y/:/:\r\nSS2/:/:n/:/:xxx -porn -sex\r\nPP1/:/:n\r\n"
              "PP2/:/:n\r\nPP3/:/:n\r\nPP4/:/:y/:/:60/:/:D\r\nUSE/:/:1\r\nPST/:/:0\r\n");
}

TEST_F(SettingsDesktopTest, ANumberOutOfRangeEndsTheStartUnlessAListCameBefore) {
    const std::string useCount = "USE/:/:99999999999\r\n";
    const std::string stopped = "PST/:/:99999999999\r\n";
    for (const std::string& number : {useCount, stopped}) {
        const std::string file = number + "SS1/:/:n/:/:\r\n";
        WriteBytes(Path(), file);
        m_guard.emplace(m_folder);
        EXPECT_TRUE(ErrorBox(L"6", L"Overflow")) << number;
        ASSERT_TRUE(m_guard->Program().WaitGone()) << number;
        EXPECT_NE(m_guard->Program().ExitCode(), 0U) << number;
        EXPECT_EQ(m_folder.Settings(), file) << number;
    }
    for (const char* list : {"SS1/:/:n/:/:\r\n", "SS2/:/:n/:/:\r\n", "PP4/:/:n/:/:60/:/:m\r\n"}) {
        WriteBytes(Path(), list + useCount + stopped);
        ASSERT_TRUE(Start()) << list;
        ASSERT_TRUE(m_guard->Close()) << list;
    }
}

TEST_F(SettingsDesktopTest, HundredMegabytesAndHundredThousandSites) {
    std::string file;
    file.resize(100'000'000, '\'');
    file += "\r\nSS1/:/:n/:/:";
    for (int site = 0; site < 100'000; ++site) {
        file += "blocked-site-" + std::to_string(site) + " -";
    }
    WriteBytes(Path(), file + "\r\nPT1/:/:1\r\n");
    ASSERT_TRUE(Start(120'000));
    EXPECT_TRUE(Checked(Control(kPTO1)));
    EXPECT_EQ(Ask(Control(kSiteLST), LB_GETCOUNT), 100'001);
    ASSERT_TRUE(m_guard->Close(120'000));
    const std::string written = m_folder.Settings();
    EXPECT_NE(written.find(" -blocked-site-99999 - -\r\n"), std::string::npos);
    EXPECT_LT(written.size(), 3'000'000U);
}

TEST_F(SettingsDesktopTest, EachRunIsOneUseAndOneEmptyRowMore) {
    WriteBytes(Path(), "SS1/:/:n/:/:casino -\r\nUSE/:/:7\r\n");
    std::string ends;
    for (int run = 1; run <= 3; ++run) {
        ASSERT_TRUE(Start());
        ASSERT_TRUE(m_guard->Close());
        ends += " -";
        const std::string file = m_folder.Settings();
        EXPECT_NE(file.find("SS1/:/:n/:/:casino -" + ends + "\r\n"), std::string::npos) << run;
        EXPECT_NE(file.find("USE/:/:" + std::to_string(7 + run) + "\r\n"), std::string::npos) << run;
    }
}

TEST_F(SettingsDesktopTest, StoredMinimisedStartsMinimised) {
    WriteBytes(Path(), "MIN/:/:y\r\n");
    ASSERT_TRUE(Start());
    EXPECT_TRUE(IsIconic(m_guard->Window()));
    EXPECT_TRUE(Checked(Control(kCOpenM)));
    ASSERT_TRUE(m_guard->Close());
    EXPECT_NE(m_folder.Settings().find("MIN/:/:y\r\n"), std::string::npos);
}

TEST_F(SettingsDesktopTest, ApplyWritesTheChosenMode) {
    ASSERT_TRUE(Start());
    Press(kPTO2);
    EXPECT_TRUE(Enabled(Control(kApplyCmd)));
    EXPECT_EQ(WithoutDate(m_folder.Settings()), kFresh);
    Press(kApplyCmd);
    EXPECT_FALSE(Enabled(Control(kApplyCmd)));
    std::string expected = kFresh;
    expected.replace(expected.find("PT1/:/:0"), 8, "PT1/:/:2");
    EXPECT_EQ(WithoutDate(m_folder.Settings()), expected);
}

TEST_F(SettingsDesktopTest, CancelReadsTheFileOverTheControls) {
    WriteBytes(Path(), "PT1/:/:1\r\nSS1/:/:n/:/:casino -\r\nUSE/:/:4\r\nPST/:/:10\r\n");
    ASSERT_TRUE(Start());
    WriteBytes(Path(), "PT1/:/:1\r\nSS1/:/:n/:/:casino -\r\nUSE/:/:40\r\nPST/:/:30\r\n");
    Press(kPTO2);
    Press(kCOpenM);
    Press(kCancelcmd);
    EXPECT_TRUE(WaitUntil([this] { return m_guard->InTray(); }));
    EXPECT_TRUE(Checked(Control(kPTO1)));
    EXPECT_TRUE(Checked(Control(kCOpenM)));  // a read only ever checks
    EXPECT_FALSE(Enabled(Control(kApplyCmd)));
    EXPECT_EQ(Sites(), (std::vector<std::wstring>{L"casino", L"", L"casino", L""}));
    ASSERT_TRUE(m_guard->Close());
    const std::string file = m_folder.Settings();
    EXPECT_NE(file.find("USE/:/:41\r\nPST/:/:30\r\n"), std::string::npos) << file;
}

TEST_F(SettingsDesktopTest, ACancelThatReadsIsOneUseMore) {
    WriteBytes(Path(), "USE/:/:4\r\n");
    ASSERT_TRUE(Start());
    Press(kPTO2);
    Press(kApplyCmd);
    EXPECT_NE(m_folder.Settings().find("USE/:/:5\r\n"), std::string::npos);
    Press(kPTO1);
    Press(kCancelcmd);
    EXPECT_TRUE(WaitUntil([this] { return m_guard->InTray(); }));
    ASSERT_TRUE(m_guard->Close());
    EXPECT_NE(m_folder.Settings().find("USE/:/:6\r\n"), std::string::npos);
}

TEST_F(SettingsDesktopTest, KillInTheMiddleOfAHundredWritesLeavesAWholeFile) {
    constexpr int kRounds = 8;
    std::string sites;
    for (int site = 0; site < 3000; ++site) {
        sites += "blocked-site-" + std::to_string(site) + " -";
    }
    WriteBytes(Path(), "SS1/:/:n/:/:" + sites + "\r\n");
    for (int round = 0; round < kRounds; ++round) {
        ASSERT_TRUE(Start());
        const HWND apply = Control(kApplyCmd);
        const HWND modes[] = {Control(kPTO2), Control(kPTO1)};
        const int waited = 5 + round * 10;
        for (int write = 0; write < 100; ++write) {
            if (write < waited) {
                ClickAndWait(modes[write % 2]);
                ClickAndWait(apply);
            } else {
                Click(modes[write % 2]);
                Click(apply);
            }
        }
        // The rest is on its way; a different moment of it each time.
        SpinFor(round * 1700);
        m_guard->Program().Kill();

        std::string file = WithoutDate(m_folder.Settings());
        sites += " -";  // the empty row of this read
        EXPECT_EQ(file.compare(0, 8, "HEADER\r\n"), 0);
        ASSERT_GE(file.size(), 18U);
        EXPECT_TRUE(file[15] == '1' || file[15] == '2') << file.substr(0, 18);
        file[15] = '0';
        std::string expected = kFresh;
        expected.insert(expected.find("\r\nSS2"), sites);
        expected.replace(expected.find("USE/:/:0"), 8,
                         round == 0 ? "USE/:/:0" : "USE/:/:" + std::to_string(round));
        EXPECT_TRUE(file == expected) << "round " << round << ", " << file.size() << " bytes";
    }
    ASSERT_TRUE(Start());
    ASSERT_TRUE(m_guard->Close());
    EXPECT_FALSE(FileExists(Path() + L".tmp"));
}

// --- files that do not let themselves be read or written

TEST_F(SettingsDesktopTest, ReadOnlyFileIsToldAndTheProgramLivesOn) {
    ASSERT_TRUE(Start());
    const std::string before = m_folder.Settings();
    ASSERT_TRUE(SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_READONLY));
    Press(kPTO2);
    Click(Control(kApplyCmd));
    EXPECT_TRUE(ErrorBox(L"75", L"Path/File access error"));
    EXPECT_TRUE(Enabled(Control(kApplyCmd)));
    EXPECT_EQ(m_folder.Settings(), before);
    ASSERT_TRUE(SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL));
    Press(kApplyCmd);
    EXPECT_FALSE(Enabled(Control(kApplyCmd)));
    EXPECT_NE(m_folder.Settings().find("PT1/:/:2\r\n"), std::string::npos);
}

TEST_F(SettingsDesktopTest, LockedFileIsToldAndTheProgramLivesOn) {
    ASSERT_TRUE(Start());
    const std::string before = m_folder.Settings();
    Press(kPTO2);
    {
        const File lock(
            CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(lock);
        Click(Control(kApplyCmd));
        EXPECT_TRUE(ErrorBox(L"70", L"Permission denied"));
        // Cancel cannot read it either; Apply is off by then.
        Click(Control(kCancelcmd));
        EXPECT_TRUE(ErrorBox(L"70", L"Permission denied"));
    }
    EXPECT_EQ(m_folder.Settings(), before);
    EXPECT_FALSE(Enabled(Control(kApplyCmd)));
    Press(kPTO1);
    Press(kApplyCmd);
    EXPECT_NE(m_folder.Settings().find("PT1/:/:1\r\n"), std::string::npos);
}

TEST_F(SettingsDesktopTest, FileLockedAtTheStartEndsTheProgram) {
    WriteBytes(Path(), "PT1/:/:1\r\n");
    const File lock(
        CreateFileW(Path().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(lock);
    m_guard.emplace(m_folder);
    EXPECT_TRUE(ErrorBox(L"70", L"Permission denied"));
    ASSERT_TRUE(m_guard->Program().WaitGone());
    EXPECT_NE(m_guard->Program().ExitCode(), 0U);
}

TEST_F(SettingsDesktopTest, FolderThatTakesNoFileAtTheEndIsToldAndTheProgramEnds) {
    ASSERT_TRUE(Start());
    const std::string before = m_folder.Settings();
    // Nothing can be written beside the file: a folder is in the place.
    ASSERT_TRUE(CreateDirectoryW((Path() + L".tmp").c_str(), nullptr));
    PostMessageW(m_guard->Window(), WM_COMMAND, kMnuExit, 0);
    EXPECT_TRUE(ErrorBox(L"75", L"Path/File access error"));
    EXPECT_TRUE(m_guard->Program().WaitGone());
    EXPECT_EQ(m_folder.Settings(), before);
}

}  // namespace
}  // namespace kestrelguard::testing
