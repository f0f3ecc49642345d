#include "desktop/driver/Windows.h"

#include <cwchar>
#include <stdexcept>

namespace kestrelguard::testing {

namespace {

/// Programs that read other programs' windows want the screen's own pixels, as the program under test has
/// them: to one that says nothing a later system tells all places and sizes as if the screen had 96 dots per
/// inch.
bool WantRealPixels() noexcept {
    using SetAware = BOOL(WINAPI*)();
    const auto setAware = reinterpret_cast<SetAware>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("user32.dll"), "SetProcessDPIAware")));
    return setAware != nullptr && setAware() != FALSE;
}

/// Before anything has asked for a size.
[[maybe_unused]] const bool kRealPixels = WantRealPixels();

}  // namespace

bool Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam, LRESULT& answer, DWORD limit) {
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, limit, &result) == 0) {
        return false;
    }
    answer = static_cast<LRESULT>(result);
    return true;
}

LRESULT Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT answer = 0;
    return Ask(window, message, wParam, lParam, answer) ? answer : 0;
}

std::wstring ClassOf(HWND window) {
    wchar_t name[256];
    return std::wstring(name, static_cast<std::size_t>(GetClassNameW(window, name, 256)));
}

std::wstring TextOf(HWND window) {
    const LRESULT length = Ask(window, WM_GETTEXTLENGTH);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    const LRESULT got = Ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(got));
    return text;
}

RECT RectOf(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return rect;
}

int IdOf(HWND window) {
    return GetDlgCtrlID(window);
}

namespace {

BOOL CALLBACK Collect(HWND window, LPARAM list) noexcept {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

}  // namespace

std::vector<HWND> TopWindows(DWORD process) {
    std::vector<HWND> windows;
    EnumWindows(Collect, reinterpret_cast<LPARAM>(&windows));
    std::erase_if(windows, [process](HWND window) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        return owner != process;
    });
    return windows;
}

std::vector<HWND> Inside(HWND window) {
    std::vector<HWND> windows;
    EnumChildWindows(window, Collect, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

HWND FindTop(DWORD process, const WindowTest& test) {
    for (const HWND window : TopWindows(process)) {
        if (test(window)) {
            return window;
        }
    }
    return nullptr;
}

HWND WaitTop(DWORD process, const WindowTest& test, DWORD limit) {
    HWND found = nullptr;
    WaitUntil(
        [&] {
            found = FindTop(process, test);
            return found != nullptr;
        },
        limit);
    return found;
}

HWND FindInside(HWND window, const wchar_t* type, const wchar_t* text) {
    for (const HWND inner : Inside(window)) {
        if (lstrcmpiW(ClassOf(inner).c_str(), type) == 0 && (text == nullptr || TextOf(inner) == text)) {
            return inner;
        }
    }
    return nullptr;
}

RemoteBlock::RemoteBlock(HWND window, std::size_t size) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    m_process = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, process);
    m_block = static_cast<char*>(VirtualAllocEx(m_process, nullptr, size, MEM_COMMIT, PAGE_READWRITE));
    if (m_block == nullptr) {
        CloseHandle(m_process);
        throw std::runtime_error("no memory in the other process");
    }
}

RemoteBlock::~RemoteBlock() {
    VirtualFreeEx(m_process, m_block, 0, MEM_RELEASE);
    CloseHandle(m_process);
}

void RemoteBlock::Write(const void* data, std::size_t size, std::size_t offset) const {
    WriteProcessMemory(m_process, m_block + offset, data, size, nullptr);
}

void RemoteBlock::Read(void* data, std::size_t size, std::size_t offset) const {
    ReadProcessMemory(m_process, m_block + offset, data, size, nullptr);
}

void PostClick(HWND window, POINT point, bool right) {
    const LPARAM position = MAKELPARAM(point.x, point.y);
    PostMessageW(window, right ? WM_RBUTTONDOWN : WM_LBUTTONDOWN, right ? MK_RBUTTON : MK_LBUTTON, position);
    PostMessageW(window, right ? WM_RBUTTONUP : WM_LBUTTONUP, 0, position);
}

void PostDoubleClick(HWND window, POINT point) {
    PostClick(window, point);
    const LPARAM position = MAKELPARAM(point.x, point.y);
    PostMessageW(window, WM_LBUTTONDBLCLK, MK_LBUTTON, position);
    PostMessageW(window, WM_LBUTTONUP, 0, position);
}

HeldKey::HeldKey(BYTE key) : m_key(key) {
    Repeat();
}

void HeldKey::Repeat() const {
    keybd_event(m_key, 0, 0, 0);
}

HeldKey::~HeldKey() {
    keybd_event(m_key, 0, KEYEVENTF_KEYUP, 0);
}

}  // namespace kestrelguard::testing
