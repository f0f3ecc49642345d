#include "Snapshot.h"

#include <windows.h>

#include <algorithm>

#include "runtime/win32/Owners.h"

namespace kestrelguard::testing {

namespace {

using Things = std::map<std::string, std::string>;

std::string TemporaryFiles() {
    char path[MAX_PATH] = "";
    char longPath[MAX_PATH] = "";
    GetTempPathA(sizeof path, path);
    GetLongPathNameA(path, longPath, sizeof longPath);
    std::string folder = longPath;
    while (!folder.empty() && folder.back() == '\\') {
        folder.pop_back();
    }
    return folder;
}

void AddFiles(const std::string& folder, const std::string& leftOut, Things& things) {
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::string name = found.cFileName;
        const std::string path = folder + "\\" + name;
        if (name == "." || name == ".." || lstrcmpiA(path.c_str(), leftOut.c_str()) == 0) {
            continue;
        }
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            things[path + "\\"] = "";
            AddFiles(path, leftOut, things);
        } else {
            things[path] = std::to_string(found.nFileSizeLow) + " " +
                           std::to_string(found.ftLastWriteTime.dwLowDateTime) + " " +
                           std::to_string(found.ftLastWriteTime.dwHighDateTime);
        }
    } while (FindNextFileA(search, &found));
    FindClose(search);
}

/// Where Wine keeps what programs ask of the mouse and the screen, for the session.
constexpr char kSessionKey[] = "HKCU\\Software\\Wine\\Temporary System Parameters";

void AddKeys(HKEY parent, const std::string& name, const std::string& path, Things& things) {
    if (path == kSessionKey) {
        return;
    }
    HKEY key = nullptr;
    if (RegOpenKeyExA(parent, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return;
    }
    things[path + "\\"] = "";
    std::string value(16384, '\0');
    std::string data(65536, '\0');
    for (DWORD index = 0;; ++index) {
        auto valueSize = static_cast<DWORD>(value.size());
        auto dataSize = static_cast<DWORD>(data.size());
        DWORD type = 0;
        const LONG outcome = RegEnumValueA(key, index, value.data(), &valueSize, nullptr, &type,
                                           reinterpret_cast<BYTE*>(data.data()), &dataSize);
        if (outcome != ERROR_SUCCESS && outcome != ERROR_MORE_DATA) {
            break;
        }
        things[path + "\\@" + value.substr(0, valueSize)] =
            outcome == ERROR_SUCCESS ? std::to_string(type) + ":" + data.substr(0, dataSize) : "long";
    }
    for (DWORD index = 0;; ++index) {
        char child[256] = "";
        if (RegEnumKeyA(key, index, child, sizeof child) != ERROR_SUCCESS) {
            break;
        }
        AddKeys(key, child, path + "\\" + child, things);
    }
    RegCloseKey(key);
}

}  // namespace

Snapshot Snapshot::Take() {
    Snapshot snapshot;
    AddFiles("C:", TemporaryFiles(), snapshot.m_things);
    AddKeys(HKEY_CURRENT_USER, "", "HKCU", snapshot.m_things);
    AddKeys(HKEY_LOCAL_MACHINE, "Software", "HKLM\\Software", snapshot.m_things);
    return snapshot;
}

std::vector<std::string> Snapshot::Changes(const Snapshot& now) const {
    std::vector<std::string> changes;
    for (const auto& [name, what] : m_things) {
        const auto found = now.m_things.find(name);
        if (found == now.m_things.end()) {
            changes.push_back("- " + name);
        } else if (found->second != what) {
            changes.push_back("* " + name);
        }
    }
    for (const auto& [name, what] : now.m_things) {
        if (!m_things.contains(name)) {
            changes.push_back("+ " + name);
        }
    }
    std::sort(changes.begin(), changes.end());
    return changes;
}

}  // namespace kestrelguard::testing
