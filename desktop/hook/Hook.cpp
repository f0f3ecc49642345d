// A library that tests put into the program under test, to see there what no other process can see: the items
// of an open menu, the number of USER and GDI objects, the records given to the notification area, its fonts,
// the timers that it sets, what it has the shell open and which keys its threads see held, which
// libraries it loads; and to hold back its timers of a minute.

#include <windows.h>

#include <shellapi.h>
#include <winternl.h>

#include <array>
#include <cstring>
#include <type_traits>

#include "desktop/hook/HookRequest.h"

namespace kestrelguard::hook {

namespace {

constexpr UINT kGetMenu = 0x01E1;  // MN_GETHMENU
constexpr DWORD kMostTrayRecords = 4096;

std::array<TrayRecord, kMostTrayRecords> g_records;
volatile LONG g_recordCount = 0;
BOOL(WINAPI* g_notifyIcon)(DWORD, NOTIFYICONDATAA*) = nullptr;
std::array<TimerRecord, Request::kMostCalls> g_timers;
volatile LONG g_timerCount = 0;
std::array<ExecuteRecord, Request::kMostCalls> g_executes;
volatile LONG g_executeCount = 0;
std::array<LibraryRecord, Request::kMostCalls> g_libraries;
volatile LONG g_libraryCount = 0;
HMODULE(WINAPI* g_loadLibrary)(LPCSTR) = nullptr;
UINT_PTR(WINAPI* g_setTimer)(HWND, UINT_PTR, UINT, TIMERPROC) = nullptr;
UINT_PTR(WINAPI* g_setMinuteTimer)(HWND, UINT_PTR, UINT, TIMERPROC) = nullptr;
HINSTANCE(WINAPI* g_shellExecute)(HWND, LPCSTR, LPCSTR, LPCSTR, LPCSTR, INT) = nullptr;
LRESULT(WINAPI* g_sendMessage)(HWND, UINT, WPARAM, LPARAM) = nullptr;
LRESULT(WINAPI* g_callWindowProc)(WNDPROC, HWND, UINT, WPARAM, LPARAM) = nullptr;

BOOL WINAPI RecordNotifyIcon(DWORD message, NOTIFYICONDATAA* data) noexcept {
    const LONG number = InterlockedIncrement(&g_recordCount) - 1;
    if (number < static_cast<LONG>(kMostTrayRecords)) {
        TrayRecord& record = g_records[static_cast<std::size_t>(number)];
        record.message = message;
        record.size = data->cbSize;
        const std::size_t size = data->cbSize < sizeof(record.bytes) ? data->cbSize : sizeof(record.bytes);
        std::memcpy(record.bytes, data, size);
    }
    return g_notifyIcon(message, data);
}

/// The record for one more call; null when there is no room left.
template <class Records>
auto* NextRecord(Records& records, volatile LONG& count) {
    const auto number = static_cast<std::size_t>(InterlockedIncrement(&count) - 1);
    return number < records.size() ? &records[number] : nullptr;
}

UINT_PTR WINAPI RecordSetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) noexcept {
    if (TimerRecord* record = NextRecord(g_timers, g_timerCount)) {
        *record = {window, static_cast<DWORD>(id), milliseconds};
    }
    return g_setTimer(window, id, milliseconds, procedure);
}

UINT_PTR WINAPI HoldMinuteTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) noexcept {
    constexpr UINT kMinute = 60000;
    return g_setMinuteTimer(window, id, milliseconds == kMinute ? USER_TIMER_MAXIMUM : milliseconds,
                            procedure);
}

template <int size>
void Keep(char (&field)[size], const char* text) {
    lstrcpynA(field, text != nullptr ? text : "(null)", size);
}

/// Answers as where no program opens such a file.
HINSTANCE WINAPI RecordShellExecute(HWND owner, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR folder,
                                    INT show) noexcept {
    if (ExecuteRecord* record = NextRecord(g_executes, g_executeCount)) {
        record->owner = owner;
        Keep(record->verb, verb);
        Keep(record->file, file);
        Keep(record->parameters, parameters);
        Keep(record->folder, folder);
        record->show = show;
    }
    return reinterpret_cast<HINSTANCE>(SE_ERR_NOASSOC);
}

HMODULE WINAPI RecordLoadLibrary(LPCSTR name) noexcept {
    if (LibraryRecord* record = NextRecord(g_libraries, g_libraryCount)) {
        Keep(record->name, name);
    }
    return g_loadLibrary(name);
}

/// Whether a list box of Windows 98 would refuse the message: it takes 32,767 rows.
bool OldListRefuses(HWND window, UINT message) {
    char name[16] = {};
    return message == LB_ADDSTRING && GetClassNameA(window, name, 16) != 0 &&
           lstrcmpiA(name, "ListBox") == 0 && SendMessageA(window, LB_GETCOUNT, 0, 0) >= 32767;
}

LRESULT WINAPI SendToOldLists(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    return OldListRefuses(window, message) ? LB_ERRSPACE : g_sendMessage(window, message, wParam, lParam);
}

LRESULT WINAPI CallOldLists(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                            LPARAM lParam) noexcept {
    return OldListRefuses(window, message) ? LB_ERRSPACE
                                           : g_callWindowProc(procedure, window, message, wParam, lParam);
}

/// Leads the program's own import of a function elsewhere; what it led to before. Null when the program does
/// not import it.
void* Redirect(const char* library, const char* function, void* replacement) {
    auto* base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS32*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) {
        return nullptr;
    }
    const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; import->Name != 0; ++import) {
        if (lstrcmpiA(reinterpret_cast<const char*>(base + import->Name), library) != 0) {
            continue;
        }
        const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA32*>(base + import->OriginalFirstThunk);
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA32*>(base + import->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL32(name->u1.Ordinal)) {
                continue;
            }
            const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            if (lstrcmpA(reinterpret_cast<const char*>(byName->Name), function) == 0) {
                void* before = reinterpret_cast<void*>(slot->u1.Function);
                DWORD protection = 0;
                VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
                slot->u1.Function = reinterpret_cast<DWORD>(replacement);
                VirtualProtect(slot, sizeof(*slot), protection, &protection);
                return before;
            }
        }
    }
    return nullptr;
}

/// Redirect, with the way to what was there before kept in `original`. False when the program does not
/// import the function.
template <class Function>
bool RedirectTo(std::type_identity_t<Function> replacement, Function& original, const char* library,
                const char* function) {
    if (original == nullptr) {
        void* before = Redirect(library, function, reinterpret_cast<void*>(replacement));
        std::memcpy(&original, &before, sizeof(before));
    }
    return original != nullptr;
}

BOOL CALLBACK FindMenuWindow(HWND window, LPARAM request) noexcept {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    wchar_t name[16];
    GetClassNameW(window, name, 16);
    if (process == GetCurrentProcessId() && IsWindowVisible(window) && lstrcmpW(name, L"#32768") == 0) {
        reinterpret_cast<Request*>(request)->menuWindow = window;
        return FALSE;
    }
    return TRUE;
}

void ReadMenu(Request& request) {
    request.menuWindow = nullptr;
    request.itemCount = 0;
    EnumWindows(FindMenuWindow, reinterpret_cast<LPARAM>(&request));
    DWORD_PTR answer = 0;
    if (request.menuWindow == nullptr ||
        !SendMessageTimeoutW(request.menuWindow, kGetMenu, 0, 0, SMTO_NORMAL, 5000, &answer)) {
        return;
    }
    const HMENU menu = reinterpret_cast<HMENU>(answer);
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count && i < static_cast<int>(Request::kMostItems); ++i) {
        MenuItem& item = request.items[i];
        MENUITEMINFOW info{};
        info.cbSize = sizeof(info);
        info.fMask = MIIM_ID | MIIM_STATE | MIIM_FTYPE | MIIM_STRING;
        info.dwTypeData = item.text;
        info.cch = 128;
        GetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &info);
        item.id = info.wID;
        item.state = info.fState;
        item.type = info.fType;
        ++request.itemCount;
    }
}

/// One entry of the table of GDI objects that the system shares with its programs.
struct GdiEntry {
    void* object;
    DWORD owner;  // process and reference count
    WORD unique;
    BYTE type;
    BYTE flags;
    void* user;
};

BOOL CALLBACK CountInside(HWND, LPARAM count) noexcept {
    ++*reinterpret_cast<DWORD*>(count);
    return TRUE;
}

BOOL CALLBACK CountWindow(HWND window, LPARAM count) noexcept {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId()) {
        ++*reinterpret_cast<DWORD*>(count);
        EnumChildWindows(window, CountInside, count);
    }
    return TRUE;
}

void CountObjects(Request& request) {
    request.windows = request.menus = request.icons = request.gdiObjects = 0;
    EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&request.windows));
    // A handle's lower half is its place in the process's table; the system takes it without the upper half.
    for (DWORD place = 0x20; place < 0x6000; place += 2) {
        if (IsMenu(reinterpret_cast<HMENU>(static_cast<UINT_PTR>(place)))) {
            ++request.menus;
        }
        ICONINFO info{};
        if (GetIconInfo(reinterpret_cast<HICON>(static_cast<UINT_PTR>(place)), &info)) {
            ++request.icons;
            DeleteObject(info.hbmColor);
            DeleteObject(info.hbmMask);
        }
    }
    // The system does not tell how many handles there are, only whether one is valid.
    request.handles = 0;
    for (UINT_PTR handle = 4; handle < 0x4000; handle += 4) {
        DWORD flags = 0;
        request.handles += GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) ? 1 : 0;
    }
#ifdef __i386__
    // The table's address lies at 0x94 in the process's environment block.
    BYTE* block = nullptr;
    __asm__("movl %%fs:0x30, %0" : "=r"(block));
    const auto* table = *reinterpret_cast<const GdiEntry* const*>(block + 0x94);
    for (DWORD i = 0; table != nullptr && i < 0x4000; ++i) {
        if (table[i].type != 0) {
            ++request.gdiObjects;
        }
    }
#endif
}

/// A font's handle means something in its own process only.
void ReadFont(Request& request) {
    request.font = {};
    DWORD_PTR font = 0;
    if (SendMessageTimeoutW(request.control, WM_GETFONT, 0, 0, SMTO_NORMAL, 5000, &font) && font != 0) {
        GetObjectW(reinterpret_cast<HGDIOBJ>(font), sizeof(request.font), &request.font);
    }
}

struct KeyAnswer {
    DWORD held;
    DWORD waiting;
};

UINT KeyMessage() {
    return RegisterWindowMessageA("KestrelguardTestKeyState");
}

/// On the thread that owns the window: wParam is the key, lParam leads to the answer.
LRESULT CALLBACK AnswerKeyState(int code, WPARAM sender, LPARAM parameter) noexcept {
    const auto& message = *reinterpret_cast<const CWPSTRUCT*>(parameter);
    if (code == HC_ACTION && message.message == KeyMessage()) {
        auto& answer = *reinterpret_cast<KeyAnswer*>(message.lParam);
        answer.held = GetAsyncKeyState(static_cast<int>(message.wParam)) < 0 ? 1 : 0;
        answer.waiting = HIWORD(GetQueueStatus(QS_KEY | QS_POSTMESSAGE)) != 0 ? 1 : 0;
    }
    return CallNextHookEx(nullptr, code, sender, parameter);
}

/// Every thread may be told something else: Wine keeps what it told one for a while.
bool ReadKeyState(Request& request) {
    const DWORD thread = GetWindowThreadProcessId(request.control, nullptr);
    const HHOOK hook = SetWindowsHookExW(WH_CALLWNDPROC, &AnswerKeyState, nullptr, thread);
    if (hook == nullptr) {
        return false;
    }
    // Not in the request itself: a late answer must not be written where nobody waits any more.
    static KeyAnswer there;
    DWORD_PTR answer = 0;
    const bool answered =
        SendMessageTimeoutW(request.control, KeyMessage(), request.key, reinterpret_cast<LPARAM>(&there),
                            SMTO_NORMAL, 5000, &answer) != 0;
    UnhookWindowsHookEx(hook);
    request.held = there.held;
    request.waiting = there.waiting;
    return answered;
}

}  // namespace

}  // namespace kestrelguard::hook

extern "C" __declspec(dllexport) DWORD WINAPI KestrelguardTestHook(void* parameter) noexcept {
    using namespace kestrelguard::hook;
    auto& request = *static_cast<Request*>(parameter);
    switch (request.operation) {
        case Operation::ReadMenu:
            ReadMenu(request);
            break;
        case Operation::CountObjects:
            CountObjects(request);
            break;
        case Operation::RecordTray:
            if (!RedirectTo(&RecordNotifyIcon, g_notifyIcon, "SHELL32.dll", "Shell_NotifyIconA")) {
                return 1;
            }
            break;
        case Operation::OldLists:
            if (!RedirectTo(&SendToOldLists, g_sendMessage, "USER32.dll", "SendMessageA") ||
                !RedirectTo(&CallOldLists, g_callWindowProc, "USER32.dll", "CallWindowProcA")) {
                return 1;
            }
            break;
        case Operation::TrayRecords: {
            request.recordCount = static_cast<DWORD>(g_recordCount);
            for (DWORD i = 0; i < Request::kMostRecords; ++i) {
                const DWORD number = request.firstRecord + i;
                if (number < request.recordCount && number < kMostTrayRecords) {
                    request.records[i] = g_records[number];
                }
            }
            break;
        }
        case Operation::RecordCalls:
            if (!RedirectTo(&RecordSetTimer, g_setTimer, "USER32.dll", "SetTimer") ||
                !RedirectTo(&RecordShellExecute, g_shellExecute, "SHELL32.dll", "ShellExecuteA")) {
                return 1;
            }
            break;
        case Operation::HoldMinutes:
            if (!RedirectTo(&HoldMinuteTimer, g_setMinuteTimer, "USER32.dll", "SetTimer")) {
                return 1;
            }
            break;
        case Operation::CallRecords:
            request.timerCount = static_cast<DWORD>(g_timerCount);
            std::memcpy(request.timers, g_timers.data(), sizeof(request.timers));
            request.executeCount = static_cast<DWORD>(g_executeCount);
            std::memcpy(request.executes, g_executes.data(), sizeof(request.executes));
            break;
        case Operation::RecordLibraries:
            if (!RedirectTo(&RecordLoadLibrary, g_loadLibrary, "KERNEL32.dll", "LoadLibraryA")) {
                return 1;
            }
            break;
        case Operation::LibraryRecords:
            request.libraryCount = static_cast<DWORD>(g_libraryCount);
            std::memcpy(request.libraries, g_libraries.data(), sizeof(request.libraries));
            break;
        case Operation::KeyState:
            if (!ReadKeyState(request)) {
                return 1;
            }
            break;
        case Operation::ReadFont:
            ReadFont(request);
            break;
        default:
            return 1;
    }
    request.done = 1;
    return 0;
}
