#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Snapshot.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Files.h"
#include "desktop/driver/Wait.h"

/// What the tests of the installer share: running it, and all that it leaves on the system.
namespace kestrelguard::testing {

inline constexpr char kUninstallKey[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Kestrelguard";
/// Installing and uninstalling take a while on a busy machine.
inline constexpr DWORD kPatience = 60000;

inline std::wstring WindowsPath(const char* variable) {
    const char* path = std::getenv(variable);
    std::wstring name = L"Z:";
    for (const char* at = path; at != nullptr && *at != '\0'; ++at) {
        name += *at == '/' ? L'\\' : static_cast<wchar_t>(*at);
    }
    return name;
}

inline std::wstring Installer() {
    return WindowsPath("KESTRELGUARD_SETUP");
}

inline std::wstring OldInstaller() {
    return WindowsPath("KESTRELGUARD_OLD_SETUP");
}

inline std::string Narrow(const std::wstring& text) {
    std::string narrow;
    for (const wchar_t character : text) {
        narrow += static_cast<char>(character);
    }
    return narrow;
}

inline std::wstring Environment(const wchar_t* name) {
    wchar_t value[MAX_PATH] = L"";
    GetEnvironmentVariableW(name, value, MAX_PATH);
    return value;
}

/// A text (or a number, as text) of the entry in Add/Remove Programs; empty when there is none.
inline std::string Entry(HKEY root, const char* name) {
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
inline HWND Running() {
    return FindWindowA("Kestrelguard", nullptr);
}

inline DWORD ProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

/// Waits until it has started and shows its window.
inline bool WaitRunning() {
    return WaitUntil([] { return Running() != nullptr && IsWindowVisible(Running()); }, kPatience);
}

/// Closes the running program, if any, and waits until its process has ended.
inline void CloseRunning() {
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

inline DWORD RunToEnd(const std::wstring& exe, const std::wstring& switches) {
    const Program program(exe, switches);
    return program.WaitGone() ? program.ExitCode() : STILL_ACTIVE;
}

inline bool WaitNoEntry(HKEY root) {
    return WaitUntil([root] { return Entry(root, "DisplayName").empty(); }, kPatience);
}

/// Uninstalls silently; the uninstaller works on in a copy of itself, so waits for its last step.
inline bool UninstallSilently(const std::wstring& folder, HKEY root = HKEY_CURRENT_USER) {
    RunToEnd(folder + L"\\uninstall.exe", L"/S");
    return WaitNoEntry(root);
}

/// The names in SHA256SUMS.txt, with backslashes.
inline std::vector<std::string> NamesInSums(const std::string& sums) {
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
inline std::vector<std::string> Expected(const std::wstring& folder, const std::wstring& menu,
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
inline std::vector<std::string> Without(std::vector<std::string> changes,
                                        const std::vector<std::string>& shared) {
    std::erase_if(changes, [&shared](const std::string& change) {
        return std::find(shared.begin(), shared.end(), change) != shared.end();
    });
    return changes;
}

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

}  // namespace kestrelguard::testing
