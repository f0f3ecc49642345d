#pragma once

#include <windows.h>

#include <wininet.h>

#include <string>
#include <vector>

namespace kestrelguard {

/// Puts entries with real files into the platform's cache.
class CacheFiller {
 public:
    /// Adds an entry and answers the file behind it; an empty text when that failed.
    static std::string Add(const std::string& address, const std::string& content,
                           DWORD type = NORMAL_CACHE_ENTRY) {
        char path[MAX_PATH] = {};
        if (!CreateUrlCacheEntryA(address.c_str(), static_cast<DWORD>(content.size()), "txt", path, 0)) {
            return {};
        }
        const HANDLE file =
            CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return {};
        }
        DWORD written = 0;
        WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
        CloseHandle(file);
        const FILETIME never{};
        if (!CommitUrlCacheEntryA(address.c_str(), path, never, never, type, nullptr, 0, "txt", nullptr)) {
            return {};
        }
        return path;
    }

    /// Takes everything out of the cache.
    static void Empty() {
        for (const std::string& address : Addresses()) {
            DeleteUrlCacheEntryA(address.c_str());
        }
    }

    static std::vector<std::string> Addresses() {
        std::vector<std::string> addresses;
        std::vector<char> buffer(64 * 1024);
        DWORD size = static_cast<DWORD>(buffer.size());
        auto* const entry = reinterpret_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer.data());
        const HANDLE find = FindFirstUrlCacheEntryA(nullptr, entry, &size);
        if (find == nullptr) {
            return addresses;
        }
        do {
            addresses.emplace_back(entry->lpszSourceUrlName);
            size = static_cast<DWORD>(buffer.size());
        } while (FindNextUrlCacheEntryA(find, entry, &size));
        FindCloseUrlCache(find);
        return addresses;
    }
};

inline bool FileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace kestrelguard
