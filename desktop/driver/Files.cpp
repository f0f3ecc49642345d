#include "desktop/driver/Files.h"

#include <windows.h>

#include <stdexcept>

#include "runtime/win32/Owners.h"

namespace kestrelguard::testing {

namespace {

void RemoveAll(const std::wstring& folder) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            const std::wstring path = folder + L"\\" + name;
            if (name == L"." || name == L"..") {
                continue;
            }
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                RemoveAll(path);
            } else {
                SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileW(path.c_str());
            }
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    SetFileAttributesW(folder.c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectoryW(folder.c_str());
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    static LONG number = 0;
    wchar_t base[MAX_PATH];
    const DWORD length = GetTempPathW(MAX_PATH, base);
    m_path = std::wstring(base, length) + L"kg" + std::to_wstring(GetCurrentProcessId()) + L"-" +
             std::to_wstring(InterlockedIncrement(&number));
    RemoveAll(m_path);
    if (!CreateDirectoryW(m_path.c_str(), nullptr)) {
        throw std::runtime_error("no temporary folder");
    }
}

TemporaryFolder::~TemporaryFolder() {
    RemoveAll(m_path);
}

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string ReadBytes(const std::wstring& path) {
    std::string bytes;
    const File file(CreateFileW(path.c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
    char buffer[16384];
    DWORD got = 0;
    while (file && ReadFile(file.Get(), buffer, sizeof(buffer), &got, nullptr) && got > 0) {
        bytes.append(buffer, got);
    }
    return bytes;
}

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    const File file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    if (!file || !WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size()) {
        throw std::runtime_error("cannot write a file");
    }
}

}  // namespace kestrelguard::testing
