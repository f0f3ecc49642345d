#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "desktop/driver/Wait.h"

namespace kestrelguard::testing {

/// A message that is answered within the limit or not at all: a window that hangs must not hang the test.
/// False when it was not answered.
bool Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& answer, DWORD limit = kLimit);
/// The answer, or 0 when there was none.
LRESULT Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

std::wstring ClassOf(HWND window);
/// The window's own text (caption, contents of an edit field), of whatever process.
std::wstring TextOf(HWND window);
/// Where it is on the screen.
RECT RectOf(HWND window);
/// Its number within its parent.
int IdOf(HWND window);

/// The top-level windows of a process, hidden ones included.
std::vector<HWND> TopWindows(DWORD process);
/// All windows inside a window, in the order of creation, at any depth.
std::vector<HWND> Inside(HWND window);

using WindowTest = std::function<bool(HWND)>;
/// The first top-level window of the process that passes; null when none does.
HWND FindTop(DWORD process, const WindowTest& test);
/// Waits for one; null after the limit (milliseconds).
HWND WaitTop(DWORD process, const WindowTest& test, DWORD limit = kLimit);
/// The first window inside that has the class (compared without case) and, unless it is null, exactly that
/// text.
HWND FindInside(HWND window, const wchar_t* type, const wchar_t* text = nullptr);

/// A copy of a record in another process's memory, for messages that take a pointer the system does not
/// translate. Throws std::runtime_error when there is no room.
class RemoteBlock {
 public:
    RemoteBlock(HWND window, std::size_t size);
    ~RemoteBlock();
    RemoteBlock(const RemoteBlock&) = delete;
    RemoteBlock& operator=(const RemoteBlock&) = delete;

    LPARAM Address() const { return reinterpret_cast<LPARAM>(m_block); }
    void Write(const void* data, std::size_t size, std::size_t offset = 0) const;
    void Read(void* data, std::size_t size, std::size_t offset = 0) const;

 private:
    HANDLE m_process;
    char* m_block;
};

/// Presses and releases a mouse button inside a window by posted messages, at the point in its client area.
void PostClick(HWND window, POINT point, bool right = false);
/// The same with a double click.
void PostDoubleClick(HWND window, POINT point);

/// Holds a key down, for every process of the desktop, as long as it lives.
class HeldKey {
 public:
    explicit HeldKey(BYTE key);
    ~HeldKey();
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;
    /// Once more, as a key that is held does.
    void Repeat() const;

 private:
    BYTE m_key;
};

}  // namespace kestrelguard::testing
