// The installer's whole life on a fresh system: silent and by clicking.

#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Snapshot.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Controls.h"
#include "desktop/driver/Files.h"
#include "desktop/driver/Process.h"
#include "desktop/driver/Windows.h"
#include "runtime/ProgramVersion.h"

namespace kestrelguard::testing {
namespace {

constexpr char kUninstallKey[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Kestrelguard";
/// Installing and uninstalling take a while on a busy machine.
constexpr DWORD kPatience = 60000;

std::wstring WindowsPath(const char* variable) {
    const char* path = std::getenv(variable);
    std::wstring name = L"Z:";
    for (const char* at = path; at != nullptr && *at != '\0'; ++at) {
        name += *at == '/' ? L'\\' : static_cast<wchar_t>(*at);
    }
    return name;
}

std::wstring Installer() {
    return WindowsPath("KESTRELGUARD_SETUP");
}

std::wstring OldInstaller() {
    return WindowsPath("KESTRELGUARD_OLD_SETUP");
}

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t character : text) {
        narrow += static_cast<char>(character);
    }
    return narrow;
}

std::wstring Environment(const wchar_t* name) {
    wchar_t value[MAX_PATH] = L"";
    GetEnvironmentVariableW(name, value, MAX_PATH);
    return value;
}

/// A text (or a number, as text) of the entry in Add/Remove Programs; empty when there is none.
std::string Entry(HKEY root, const char* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(root, kUninstallKey, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return {};
    }
    char data[512] = "";
    DWORD size = sizeof data;
    DWORD type = 0;
    const LONG outcome = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size);
    RegCloseKey(key);
    if (outcome != ERROR_SUCCESS) {
        return {};
    }
    return type == REG_DWORD ? std::to_string(*reinterpret_cast<const DWORD*>(data)) : std::string(data);
}

/// The window of the running program; null when none runs.
HWND Running() {
    return FindWindowA("Kestrelguard", nullptr);
}

DWORD ProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

/// Waits until it has started and shows its window.
bool WaitRunning() {
    return WaitUntil([] { return Running() != nullptr && IsWindowVisible(Running()); }, kPatience);
}

/// Closes the running program, if any, and waits until its process has ended.
void CloseRunning() {
    const HWND window = Running();
    if (window == nullptr) {
        return;
    }
    const Handle process(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, ProcessOf(window)));
    PostMessageA(window, WM_CLOSE, 0, 0);
    if (WaitForSingleObject(process.Get(), kLimit) != WAIT_OBJECT_0) {
        TerminateProcess(process.Get(), 9);
    }
}

/// A program started with switches as they are: the installer understands none in quotes.
class Program {
 public:
    explicit Program(const std::wstring& exe, const std::wstring& switches = {}) {
        std::wstring line = L"\"" + exe + L"\" " + switches;
        STARTUPINFOW start = {};
        start.cb = sizeof start;
        PROCESS_INFORMATION made = {};
        if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                            &made)) {
            throw std::runtime_error("cannot start " + Narrow(exe));
        }
        CloseHandle(made.hThread);
        m_process.Reset(made.hProcess);
    }
    bool WaitGone() const { return WaitForSingleObject(m_process.Get(), kPatience) == WAIT_OBJECT_0; }
    bool Running() const { return WaitForSingleObject(m_process.Get(), 0) == WAIT_TIMEOUT; }
    DWORD ExitCode() const {
        DWORD code = 0;
        GetExitCodeProcess(m_process.Get(), &code);
        return code;
    }

 private:
    Handle m_process;
};

DWORD RunToEnd(const std::wstring& exe, const std::wstring& switches) {
    const Program program(exe, switches);
    return program.WaitGone() ? program.ExitCode() : STILL_ACTIVE;
}

bool WaitNoEntry(HKEY root) {
    return WaitUntil([root] { return Entry(root, "DisplayName").empty(); }, kPatience);
}

/// Uninstalls silently; the uninstaller works on in a copy of itself, so waits for its last step.
bool UninstallSilently(const std::wstring& folder, HKEY root = HKEY_CURRENT_USER) {
    RunToEnd(folder + L"\\uninstall.exe", L"/S");
    return WaitNoEntry(root);
}

/// The names in SHA256SUMS.txt, with backslashes.
std::vector<std::string> NamesInSums(const std::string& sums) {
    std::vector<std::string> names;
    std::istringstream lines(sums);
    for (std::string line; std::getline(lines, line);) {
        if (line.size() > 66) {
            std::string name = line.substr(66, line.find('\r') - 66);
            std::replace(name.begin(), name.end(), '/', '\\');
            names.push_back(name);
        }
    }
    return names;
}

/// All that an installation adds, as Snapshot tells it.
std::vector<std::string> Expected(const std::wstring& folder, const std::wstring& menu,
                                  const std::string& root) {
    const std::string place = Narrow(folder);
    std::vector<std::string> names = {"+ " + place + "\\",
                                      "+ " + place + "\\manual\\",
                                      "+ " + place + "\\manual\\pictures\\",
                                      "+ " + place + "\\SHA256SUMS.txt",
                                      "+ " + place + "\\uninstall.exe",
                                      "+ " + Narrow(menu) + "\\Kestrelguard\\",
                                      "+ " + Narrow(menu) + "\\Kestrelguard\\Kestrelguard.lnk",
                                      "+ " + Narrow(menu) + "\\Kestrelguard\\Kestrelguard manual.lnk"};
    for (const std::string& name : NamesInSums(ReadBytes(folder + L"\\SHA256SUMS.txt"))) {
        names.push_back(std::string("+ ").append(place).append("\\").append(name));
    }
    names.push_back("+ " + root + "\\" + kUninstallKey + "\\");
    for (const char* value :
         {"DisplayIcon", "DisplayName", "DisplayVersion", "EstimatedSize", "InstallLocation", "NoModify",
          "NoRepair", "Publisher", "QuietUninstallString", "UninstallString"}) {
        names.push_back("+ " + root + "\\" + kUninstallKey + "\\@" + value);
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// The changes that are not of that place: for folders that several products share.
std::vector<std::string> Without(std::vector<std::string> changes, const std::vector<std::string>& shared) {
    std::erase_if(changes, [&shared](const std::string& change) {
        return std::find(shared.begin(), shared.end(), change) != shared.end();
    });
    return changes;
}

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

class InstallerTest : public ::testing::Test {
 protected:
    void SetUp() override {
        // A first installation and its end make folders that the system keeps, such as that of the start
        // menu.
        static const bool warm = [this] {
            RunToEnd(Installer(), L"/S");
            return UninstallSilently(m_folder);
        }();
        ASSERT_TRUE(warm) << Narrow(m_folder);
        m_before = Snapshot::Take();
    }

    void TearDown() override {
        CloseRunning();
        if (FileExists(m_folder + L"\\uninstall.exe")) {
            UninstallSilently(m_folder);
        }
        DeleteFileW((m_folder + L"\\KestrelS.CFG").c_str());
        DeleteFileW((m_folder + L"\\KestrelC.CFG").c_str());
        RemoveDirectoryW(m_folder.c_str());
    }

    std::vector<std::string> Changes() const { return m_before.Changes(Snapshot::Take()); }

    // The program wants a list of shell windows.
    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    std::wstring m_folder = Environment(L"LOCALAPPDATA") + L"\\Programs\\Kestrelguard";
    std::wstring m_menu = Environment(L"APPDATA") + L"\\Microsoft\\Windows\\Start Menu\\Programs";
    Snapshot m_before;
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

// --- by clicking

/// A program with dialog boxes that is clicked through.
class Clicked {
 public:
    explicit Clicked(const std::wstring& exe) : m_program(exe) {}

    const Program& Process() const { return m_program; }

    /// Waits until a button of a dialog of any process can be pressed, and presses it as the mouse does.
    static bool Press(const wchar_t* caption) {
        HWND button = nullptr;
        const bool there = WaitUntil(
            [&] {
                button = Find(L"Button", caption);
                return button != nullptr && IsWindowVisible(button) && IsWindowEnabled(button);
            },
            kPatience);
        if (there) {
            RECT place = {};
            GetClientRect(button, &place);
            PostClick(button, {place.right / 2, place.bottom / 2});
        }
        return there;
    }

    /// A control in a dialog on the screen: the installer's, the uninstaller's (whose process is a copy of
    /// it) or a message box.
    static HWND Find(const wchar_t* type, const wchar_t* caption = nullptr) {
        Search search = {type, caption, nullptr};
        EnumWindows(LookInside, reinterpret_cast<LPARAM>(&search));
        return search.found;
    }

 private:
    struct Search {
        const wchar_t* type;
        const wchar_t* caption;
        HWND found;
    };

    static BOOL CALLBACK LookInside(HWND window, LPARAM parameter) noexcept {
        auto& search = *reinterpret_cast<Search*>(parameter);
        if (ClassOf(window) == L"#32770" && IsWindowVisible(window)) {
            search.found = FindInside(window, search.type, search.caption);
        }
        return search.found == nullptr;
    }

    Program m_program;
};

TEST_F(InstallerTest, EverythingCanBeClicked) {
    const std::wstring folder = L"C:\\Clicked";
    const Clicked setup(Installer());
    // The component "Start with Windows" is ticked by the keyboard.
    HWND tree = nullptr;
    ASSERT_TRUE(WaitUntil(
        [&tree] { return (tree = Clicked::Find(L"SysTreeView32")) != nullptr && IsWindowVisible(tree); },
        kPatience));
    std::vector<TreeNode> nodes;
    ASSERT_TRUE(WaitUntil([&] { return (nodes = TreeNodes(tree)).size() == 2; }));
    SelectNode(tree, nodes[1].item);
    PostMessageA(tree, WM_KEYDOWN, VK_SPACE, 0);
    ASSERT_TRUE(Clicked::Press(L"&Next >"));
    HWND edit = nullptr;
    ASSERT_TRUE(WaitUntil(
        [&edit] { return (edit = Clicked::Find(L"Edit")) != nullptr && IsWindowVisible(edit); }, kPatience));
    EXPECT_EQ(m_folder, TextOf(edit));
    TypeText(edit, folder);
    ASSERT_TRUE(Clicked::Press(L"&Install"));
    ASSERT_TRUE(Clicked::Press(L"&Yes"));  // start it now
    ASSERT_TRUE(WaitRunning());
    EXPECT_TRUE(setup.Process().WaitGone());
    EXPECT_EQ(0u, setup.Process().ExitCode());
    std::vector<std::string> expected = Expected(folder, m_menu, "HKCU");
    expected.push_back("+ " + Narrow(m_menu) + "\\StartUp\\Kestrelguard.lnk");
    expected.push_back("+ C:\\Clicked\\KestrelS.CFG");
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(WaitUntil([&] { return Changes() == expected; }));
    EXPECT_EQ(expected, Changes());

    const Clicked uninstall(folder + L"\\uninstall.exe");
    ASSERT_TRUE(Clicked::Press(L"&Uninstall"));
    ASSERT_TRUE(Clicked::Press(L"&Yes"));  // the settings, too
    ASSERT_TRUE(Clicked::Press(L"&Close"));
    ASSERT_TRUE(WaitNoEntry(HKEY_CURRENT_USER));
    EXPECT_EQ(nullptr, Running());
    EXPECT_EQ(std::vector<std::string>(), Changes());
}

TEST_F(InstallerTest, ACancelledInstallationLeavesNothing) {
    const Clicked setup(Installer());
    ASSERT_TRUE(Clicked::Press(L"Cancel"));
    EXPECT_TRUE(setup.Process().WaitGone());
    EXPECT_EQ(1u, setup.Process().ExitCode());
    EXPECT_EQ(std::vector<std::string>(), Changes());
}

}  // namespace
}  // namespace kestrelguard::testing
