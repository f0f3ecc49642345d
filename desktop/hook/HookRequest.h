#pragma once

#include <windows.h>

namespace kestrelguard::hook {

/// What the test asks of the library inside the program under test.
enum class Operation : DWORD {
    ReadMenu = 1,      ///< the pop-up menu that is open
    CountObjects = 2,  ///< windows, menus, icons, GDI objects, kernel handles
    RecordTray = 3,    ///< write down every Shell_NotifyIconA call from now on
    TrayRecords = 4,   ///< what was written down
    ReadFont = 5,      ///< the font of one of its controls
    OldLists = 6,      ///< list boxes take no more rows than those of Windows 98 from now on
    RecordCalls = 7,   ///< write down every SetTimer and ShellExecuteA call from now on; nothing is opened
    CallRecords = 8,   ///< what was written down
    KeyState = 9,      ///< what the thread of one of its windows is told about a key, and what lies before it
    RecordLibraries = 10,  ///< write down every LoadLibraryA call from now on
    LibraryRecords = 11,   ///< what was written down
    HoldMinutes = 12,      ///< timers of a minute, set from now on, do not tick
};

struct MenuItem {
    DWORD id;
    DWORD state;  ///< MFS_...
    DWORD type;   ///< MFT_...
    wchar_t text[128];
};

struct TrayRecord {
    DWORD message;  ///< NIM_...
    DWORD size;     ///< the size that the record states
    BYTE bytes[504];
};

/// One call of SetTimer.
struct TimerRecord {
    HWND window;
    DWORD id;
    DWORD milliseconds;
};

/// One call of ShellExecuteA. Texts are cut where they do not fit.
struct ExecuteRecord {
    HWND owner;
    char verb[16];
    char file[MAX_PATH];
    char parameters[16];
    char folder[MAX_PATH];
    int show;
};

/// One call of LoadLibraryA.
struct LibraryRecord {
    char name[MAX_PATH];
};

/// One request and its answer: travels into the program and back as it lies in memory.
struct Request {
    static constexpr DWORD kMostItems = 32;
    static constexpr DWORD kMostRecords = 64;
    static constexpr DWORD kMostCalls = 16;  ///< of each of the functions; later ones are not kept

    Operation operation;
    DWORD done;  ///< 1 when the library has dealt with it
    HWND menuWindow;
    DWORD itemCount;
    MenuItem items[kMostItems];
    DWORD windows;
    DWORD menus;
    DWORD icons;
    DWORD gdiObjects;
    DWORD handles;
    DWORD firstRecord;  ///< in: the first record to fetch
    DWORD recordCount;  ///< all records so far
    TrayRecord records[kMostRecords];
    HWND control;   ///< in: whose font to read, or whose thread to ask about a key
    LOGFONTW font;  ///< all zero when the control has none of its own
    DWORD key;      ///< in: a virtual-key code
    DWORD held;     ///< 1 when the thread is told that the key is down
    DWORD waiting;  ///< 1 when keys or posted messages wait for the thread
    DWORD timerCount;
    TimerRecord timers[kMostCalls];
    DWORD executeCount;
    ExecuteRecord executes[kMostCalls];
    DWORD libraryCount;
    LibraryRecord libraries[kMostCalls];
};

/// The exported function; runs on a thread of its own inside the program.
inline constexpr char kEntry[] = "KestrelguardTestHook";

}  // namespace kestrelguard::hook
