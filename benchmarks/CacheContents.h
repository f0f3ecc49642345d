#pragma once

#include <windows.h>

#include <functional>
#include <string>

/// What the platform's cache holds for the benchmarks of the cache, and a plain walk over it. All of it works
/// on the prefix's own cache: run in a prefix of its own, with the stand-in's wininet.dll beside the program.
namespace kestrelguard::bench {

/// As many rows as the cache window lists.
inline constexpr int kMostRows = 32764;

/// The address of an entry; every fourth is a cookie's.
std::string AddressOf(int number);
bool IsCookie(const std::string& address);

/// Puts entries into the cache, numbers `from` to `to` - 1. Ends the program when it cannot. The walk does
/// not look at an entry's file, so most have none.
void PutEntries(int from, int to, bool withFiles = false);

/// The platform calls of one walk and nothing else: every entry's address goes to `found` and is deleted when
/// that says so. Answers the number of entries.
int BareWalk(const std::function<bool(const char*)>& found = {});

/// Takes every entry out of the cache.
void EmptyCache();

/// A list box without frame and scroll bars of its own making: hidden, filled with redraw off, shown.
class PlainList {
 public:
    explicit PlainList(HWND list) : m_list(list) {}
    HWND Window() const { return m_list; }

    void BeginFill() const;
    void Append(const char* text) const {
        SendMessageA(m_list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
    void EndFill() const;

 private:
    HWND m_list;
};

/// A child window, shown.
HWND ChildOf(HWND parent, const char* kind, DWORD style, RECT place);

}  // namespace kestrelguard::bench
