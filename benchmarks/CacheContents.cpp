#include "CacheContents.h"

#include <wininet.h>

#include <vector>

#include "Report.h"

namespace kestrelguard::bench {

std::string AddressOf(int number) {
    const std::string index = std::to_string(number);
    return number % 4 == 3
               ? "Cookie:jane@site" + index + ".example/"
               : "http://site" + std::to_string(number % 97) + ".example/pictures/item" + index + ".gif";
}

bool IsCookie(const std::string& address) {
    return address.starts_with("Cookie:");
}

void PutEntries(int from, int to, bool withFiles) {
    const FILETIME never{};
    for (int number = from; number < to; ++number) {
        const std::string address = AddressOf(number);
        char path[MAX_PATH] = {};
        if (withFiles) {
            if (!CreateUrlCacheEntryA(address.c_str(), 1, "gif", path, 0)) {
                Fail("cannot make a cache file");
            }
            const HANDLE file =
                CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
            DWORD written = 0;
            WriteFile(file, "x", 1, &written, nullptr);
            CloseHandle(file);
        }
        if (!CommitUrlCacheEntryA(address.c_str(), withFiles ? path : nullptr, never, never,
                                  NORMAL_CACHE_ENTRY, nullptr, 0, "gif", nullptr)) {
            Fail("cannot make a cache entry");
        }
    }
}

int BareWalk(const std::function<bool(const char*)>& found) {
    int entries = 0;
    DWORD size = 0;
    HANDLE find = FindFirstUrlCacheEntryA("0", nullptr, &size);
    if (find != nullptr || GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return 0;
    }
    void* buffer = LocalAlloc(0, size);
    *static_cast<DWORD*>(buffer) = size;
    find = FindFirstUrlCacheEntryA(nullptr, static_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer), &size);
    std::vector<char> text(4096);
    for (bool more = find != nullptr; more;) {
        const char* const address = static_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer)->lpszSourceUrlName;
        if (lstrlenA(address) < 4096) {
            lstrcpyA(text.data(), address);
        }
        ++entries;
        if (found && found(text.data())) {
            DeleteUrlCacheEntryA(text.data());
        }
        LocalFree(buffer);
        size = 0;
        FindNextUrlCacheEntryA(find, nullptr, &size);
        buffer = LocalAlloc(0, size);
        if (size >= sizeof size) {
            *static_cast<DWORD*>(buffer) = size;
        }
        more = FindNextUrlCacheEntryA(find, static_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer), &size) != FALSE;
    }
    LocalFree(buffer);
    FindCloseUrlCache(find);
    return entries;
}

void EmptyCache() {
    // A deletion may hide another entry from the walk.
    for (int times = 0; BareWalk([](const char*) { return true; }) != 0; ++times) {
        if (times == 10) {
            Fail("the cache cannot be emptied");
        }
    }
}

void PlainList::BeginFill() const {
    SendMessageA(m_list, LB_RESETCONTENT, 0, 0);
    ShowWindow(m_list, SW_HIDE);
    SendMessageA(m_list, WM_SETREDRAW, FALSE, 0);
}

void PlainList::EndFill() const {
    SendMessageA(m_list, WM_SETREDRAW, TRUE, 0);
    ShowWindow(m_list, SW_SHOW);
}

HWND ChildOf(HWND parent, const char* kind, DWORD style, RECT place) {
    return CreateWindowExA(0, kind, "", WS_CHILD | WS_VISIBLE | style, place.left, place.top,
                           place.right - place.left, place.bottom - place.top, parent, nullptr, nullptr,
                           nullptr);
}

}  // namespace kestrelguard::bench
