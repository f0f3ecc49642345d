// The installer's whole life on a fresh system, silently.

#include "InstallerFixture.h"
#include "desktop/driver/Controls.h"
#include "desktop/driver/Process.h"
#include "desktop/driver/Windows.h"
#include "runtime/ProgramVersion.h"

namespace kestrelguard::testing {
namespace {

/// The Windows version that new programs are told, as Wine's own settings name it.
class ToldVersion {
 public:
    explicit ToldVersion(const char* name) {
        RegCreateKeyA(HKEY_CURRENT_USER, "Software\\Wine", &m_key);
        RegSetValueExA(m_key, "Version", 0, REG_SZ, reinterpret_cast<const BYTE*>(name),
                       static_cast<DWORD>(lstrlenA(name)) + 1);
    }
    ~ToldVersion() {
        RegDeleteValueA(m_key, "Version");
        RegCloseKey(m_key);
    }
    ToldVersion(const ToldVersion&) = delete;
    ToldVersion& operator=(const ToldVersion&) = delete;

 private:
    HKEY m_key = nullptr;
};

TEST_F(InstallerTest, ASilentInstallationPutsWhatItShouldAndTheUninstallerTakesItAway) {
    ASSERT_EQ(0u, RunToEnd(Installer(), L"/S"));
    EXPECT_EQ(Expected(m_folder, m_menu, "HKCU"), Changes());
    EXPECT_EQ(ReadBytes(OwnFolder() + L"\\kestrelguard.exe"), ReadBytes(m_folder + L"\\kestrelguard.exe"));
    EXPECT_EQ(nullptr, Running());

    EXPECT_EQ("Kestrelguard", Entry(HKEY_CURRENT_USER, "DisplayName"));
    EXPECT_EQ(Narrow(VersionText()), Entry(HKEY_CURRENT_USER, "DisplayVersion"));
    EXPECT_EQ("The Kestrelguard developers", Entry(HKEY_CURRENT_USER, "Publisher"));
    EXPECT_EQ(Narrow(m_folder) + "\\kestrelguard.exe,0", Entry(HKEY_CURRENT_USER, "DisplayIcon"));
    EXPECT_GT(std::stoi(Entry(HKEY_CURRENT_USER, "EstimatedSize")), 400);

    ASSERT_TRUE(UninstallSilently(m_folder));
    EXPECT_EQ(std::vector<std::string>(), Changes());
}

TEST_F(InstallerTest, TheInstalledProgramRunsOnceAndItsSettingsOutliveItsUninstallation) {
    ASSERT_EQ(0u, RunToEnd(Installer(), L"/S"));
    const Program first(m_folder + L"\\kestrelguard.exe");
    ASSERT_TRUE(WaitRunning());
    EXPECT_EQ(0u, RunToEnd(m_folder + L"\\kestrelguard.exe", {}));
    EXPECT_TRUE(first.Running());

    // Uninstalled while it runs: it is closed first, and its settings stay.
    ASSERT_TRUE(UninstallSilently(m_folder));
    EXPECT_TRUE(first.WaitGone());
    EXPECT_EQ(0u, first.ExitCode());
    const std::string place = "+ " + Narrow(m_folder) + "\\";
    EXPECT_EQ(std::vector<std::string>({place, place + "KestrelS.CFG"}), Changes());
}

TEST_F(InstallerTest, AnUpgradeClosesTheRunningProgramKeepsItsFilesAndStartsTheNewOne) {
    ASSERT_EQ(0u, RunToEnd(OldInstaller(), L"/S /STARTUP"));
    EXPECT_EQ("1.9.7", Entry(HKEY_CURRENT_USER, "DisplayVersion"));
    EXPECT_TRUE(FileExists(m_folder + L"\\manual\\old-page.html"));
    const std::wstring startup = m_menu + L"\\StartUp\\Kestrelguard.lnk";
    EXPECT_TRUE(FileExists(startup));
    const std::string cookies = "'1\r\n'2\r\n'3\r\n'4\r\nCookie:jane@bank.example/\r\n";
    WriteBytes(m_folder + L"\\KestrelC.CFG", cookies);

    const Program old(m_folder + L"\\kestrelguard.exe");
    ASSERT_TRUE(WaitRunning());
    // A setting that only the program knows as yet.
    const HWND allow = FindInside(Running(), L"Button", L"Enable New Browser Windows");
    ASSERT_NE(nullptr, allow);
    ClickAndWait(allow);

    ASSERT_EQ(0u, RunToEnd(Installer(), L"/S"));
    EXPECT_TRUE(old.WaitGone());
    EXPECT_EQ(0u, old.ExitCode());
    EXPECT_NE(std::string::npos, ReadBytes(m_folder + L"\\KestrelS.CFG").find("PT1/:/:2"));
    EXPECT_EQ(cookies, ReadBytes(m_folder + L"\\KestrelC.CFG"));
    EXPECT_EQ(Narrow(VersionText()), Entry(HKEY_CURRENT_USER, "DisplayVersion"));
    EXPECT_FALSE(FileExists(m_folder + L"\\manual\\old-page.html"));
    EXPECT_TRUE(FileExists(startup));
    EXPECT_TRUE(WaitRunning());

    CloseRunning();
    ASSERT_TRUE(UninstallSilently(m_folder));
    const std::string place = "+ " + Narrow(m_folder) + "\\";
    EXPECT_EQ(std::vector<std::string>({place, place + "KestrelC.CFG", place + "KestrelS.CFG"}), Changes());
}

TEST_F(InstallerTest, AnyFolderWillDoAndOnlyTheEntrysOwnFolderLosesTheEntry) {
    const std::wstring other = L"C:\\Some place\\of my own";
    EXPECT_EQ(0u, RunToEnd(Installer(), L"/S /D=" + other));
    std::vector<std::string> expected = Expected(other, m_menu, "HKCU");
    expected.push_back("+ C:\\Some place\\");
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, Changes());

    // The next installation goes there, too, unless it is told otherwise.
    EXPECT_EQ(0u, RunToEnd(Installer(), L"/S"));
    EXPECT_EQ(expected, Changes());

    ASSERT_TRUE(UninstallSilently(other));
    EXPECT_EQ(std::vector<std::string>({"+ C:\\Some place\\"}), Changes());
    RemoveDirectoryW(L"C:\\Some place");
}

TEST_F(InstallerTest, AFileThatCannotBeWrittenFailsTheInstallation) {
    const std::wstring place = L"C:\\Taken";
    const std::wstring inTheWay = place + L"\\LICENSE.txt";
    ASSERT_TRUE(CreateDirectoryW(place.c_str(), nullptr));
    ASSERT_TRUE(CreateDirectoryW(inTheWay.c_str(), nullptr));
    EXPECT_EQ(2u, RunToEnd(Installer(), L"/S /D=" + place));
    EXPECT_EQ(std::string(), Entry(HKEY_CURRENT_USER, "DisplayName"));
    // What had been put already can be taken away again.
    const std::wstring uninstaller = place + L"\\uninstall.exe";
    RunToEnd(uninstaller, L"/S");
    EXPECT_TRUE(WaitUntil([&] { return !FileExists(uninstaller); }, kPatience));
    EXPECT_TRUE(RemoveDirectoryW(inTheWay.c_str()));
    EXPECT_TRUE(WaitUntil(
        [&] {
            RemoveDirectoryW(place.c_str());
            return Changes().empty();
        },
        kPatience));
}

/// Does not mind being asked to close.
LRESULT CALLBACK StayOpen(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    return message == WM_CLOSE ? 0 : DefWindowProcA(window, message, wParam, lParam);
}

TEST_F(InstallerTest, ACopyThatDoesNotEndStopsTheInstallation) {
    WNDCLASSA type = {};
    type.lpszClassName = "Kestrelguard";
    type.hInstance = GetModuleHandleA(nullptr);
    type.lpfnWndProc = StayOpen;
    RegisterClassA(&type);
    const HWND window =
        CreateWindowA("Kestrelguard", "", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, type.hInstance, nullptr);
    const Program setup(Installer(), L"/S");
    EXPECT_TRUE(WaitUntil([&setup] { return !setup.Running(); }, kPatience));
    EXPECT_EQ(3u, setup.ExitCode());
    DestroyWindow(window);
    UnregisterClassA("Kestrelguard", type.hInstance);
    EXPECT_EQ(std::vector<std::string>(), Changes());
}

/// Where an older or newer system has it.
struct SystemCase {
    const char* version;
    bool ofItsOwn;  ///< for this user alone
};

class InstallerSystemTest : public InstallerTest, public ::testing::WithParamInterface<SystemCase> {};

TEST_P(InstallerSystemTest, TheProgramGoesWhereTheSystemWantsIt) {
    const ToldVersion version(GetParam().version);
    m_before = Snapshot::Take();
    const std::wstring folder = GetParam().ofItsOwn ? m_folder : L"C:\\Program Files\\Kestrelguard";
    const HKEY root = GetParam().ofItsOwn ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    ASSERT_EQ(0u, RunToEnd(Installer(), L"/S"));
    EXPECT_TRUE(FileExists(folder + L"\\kestrelguard.exe"));
    EXPECT_EQ(Narrow(folder), Entry(root, "InstallLocation"));
    const Program program(folder + L"\\kestrelguard.exe");
    EXPECT_TRUE(WaitRunning());
    ASSERT_TRUE(UninstallSilently(folder, root));
    const std::string place = "+ " + Narrow(folder) + "\\";
    const std::string menu = "+ C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\";
    EXPECT_EQ(std::vector<std::string>({place, place + "KestrelS.CFG"}), Without(Changes(), {menu}));
    DeleteFileW((folder + L"\\KestrelS.CFG").c_str());
    RemoveDirectoryW(folder.c_str());
}

INSTANTIATE_TEST_SUITE_P(Systems, InstallerSystemTest,
                         ::testing::Values(SystemCase{"win98", false}, SystemCase{"win2k", false},
                                           SystemCase{"winxp", false}, SystemCase{"vista", true},
                                           SystemCase{"win7", true}, SystemCase{"win10", true}),
                         [](const auto& system) { return std::string(system.param.version); });

}  // namespace
}  // namespace kestrelguard::testing
