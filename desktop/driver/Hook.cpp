#include "desktop/driver/Hook.h"

#include <shellapi.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace kestrelguard::testing {

namespace {

/// Memory inside another process.
class Block {
 public:
    Block(HANDLE process, std::size_t size)
        : m_process(process), m_block(VirtualAllocEx(process, nullptr, size, MEM_COMMIT, PAGE_READWRITE)) {
        if (m_block == nullptr) {
            throw std::runtime_error("no memory in the program under test");
        }
    }
    ~Block() { VirtualFreeEx(m_process, m_block, 0, MEM_RELEASE); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    void* Get() const { return m_block; }

 private:
    HANDLE m_process;
    void* m_block;
};

/// Runs a function over there with one argument; what it returns.
DWORD RunThere(HANDLE process, void* function, void* argument) {
    LPTHREAD_START_ROUTINE start = nullptr;
    std::memcpy(&start, &function, sizeof(start));
    const Handle thread(CreateRemoteThread(process, nullptr, 0, start, argument, 0, nullptr));
    if (!thread || WaitForSingleObject(thread.Get(), kLimit) != WAIT_OBJECT_0) {
        throw std::runtime_error("the program under test does not answer its hook");
    }
    DWORD result = 0;
    GetExitCodeThread(thread.Get(), &result);
    return result;
}

}  // namespace

std::vector<std::wstring> OpenMenu::Captions() const {
    std::vector<std::wstring> captions;
    for (const MenuEntry& entry : entries) {
        captions.push_back(entry.separator ? L"-" : (entry.checked ? L"* " : L"") + entry.text);
    }
    return captions;
}

Hook::Hook(const Process& process) : m_process(process) {
    const std::wstring path = OwnFolder() + L"\\kg_hook.dll";
    // Where the entry lies in the library is the same everywhere, where the library lies is not.
    const HMODULE here = LoadLibraryW(path.c_str());
    auto* entryHere = reinterpret_cast<char*>(reinterpret_cast<void*>(GetProcAddress(here, hook::kEntry)));
    if (here == nullptr || entryHere == nullptr) {
        throw std::runtime_error("kg_hook.dll does not lie beside the test program");
    }
    const std::ptrdiff_t offset = entryHere - reinterpret_cast<char*>(here);
    const std::size_t size = (path.size() + 1) * sizeof(wchar_t);
    const Block block(m_process.Get(), size);
    WriteProcessMemory(m_process.Get(), block.Get(), path.c_str(), size, nullptr);
    void* load = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "LoadLibraryW"));
    auto* there =
        reinterpret_cast<char*>(static_cast<UINT_PTR>(RunThere(m_process.Get(), load, block.Get())));
    FreeLibrary(here);
    if (there == nullptr) {
        throw std::runtime_error("the program under test does not load its hook");
    }
    m_entry = there + offset;
}

bool Hook::Call(hook::Request& request) const {
    const Block block(m_process.Get(), sizeof(request));
    request.done = 0;
    WriteProcessMemory(m_process.Get(), block.Get(), &request, sizeof(request), nullptr);
    RunThere(m_process.Get(), m_entry, block.Get());
    ReadProcessMemory(m_process.Get(), block.Get(), &request, sizeof(request), nullptr);
    return request.done == 1;
}

OpenMenu Hook::ReadMenu() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::ReadMenu;
    OpenMenu menu;
    if (!Call(*request)) {
        return menu;
    }
    menu.window = request->menuWindow;
    for (DWORD i = 0; i < request->itemCount; ++i) {
        const hook::MenuItem& item = request->items[i];
        MenuEntry entry;
        entry.text = item.text;
        entry.id = item.id;
        entry.separator = (item.type & MFT_SEPARATOR) != 0;
        entry.checked = (item.state & MFS_CHECKED) != 0;
        entry.enabled = (item.state & MFS_DISABLED) == 0;
        entry.isDefault = (item.state & MFS_DEFAULT) != 0;
        menu.entries.push_back(std::move(entry));
    }
    return menu;
}

OpenMenu Hook::WaitMenu(DWORD limit) const {
    OpenMenu menu;
    WaitUntil(
        [&] {
            menu = ReadMenu();
            return menu && !menu.entries.empty();
        },
        limit);
    return menu;
}

bool Hook::Choose(const std::wstring& caption, DWORD limit) const {
    const OpenMenu menu = ReadMenu();
    int downs = 0;
    for (const MenuEntry& entry : menu.entries) {
        downs += entry.separator ? 0 : 1;
        if (!entry.separator && entry.text == caption) {
            PostMessageW(menu.window, WM_KEYDOWN, VK_HOME, 0);
            for (int i = 1; i < downs; ++i) {
                PostMessageW(menu.window, WM_KEYDOWN, VK_DOWN, 0);
            }
            PostMessageW(menu.window, WM_KEYDOWN, VK_RETURN, 0);
            return WaitUntil([&] { return !IsWindow(menu.window) || !IsWindowVisible(menu.window); }, limit);
        }
    }
    return false;
}

bool Hook::CloseMenu(DWORD limit) const {
    const OpenMenu menu = ReadMenu();
    if (!menu) {
        return false;
    }
    PostMessageW(menu.window, WM_KEYDOWN, VK_ESCAPE, 0);
    return WaitUntil([&] { return !IsWindow(menu.window) || !IsWindowVisible(menu.window); }, limit);
}

ObjectCounts Hook::Count() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::CountObjects;
    Call(*request);
    return ObjectCounts{static_cast<int>(request->windows), static_cast<int>(request->menus),
                        static_cast<int>(request->icons), static_cast<int>(request->gdiObjects),
                        static_cast<int>(request->handles)};
}

LOGFONTW Hook::FontOf(HWND control) const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::ReadFont;
    request->control = control;
    Call(*request);
    return request->font;
}

std::optional<bool> Hook::SeesHeld(HWND window, BYTE key) const {
    const auto request = KeyRequest(window, key);
    return request ? std::optional<bool>(request->held != 0) : std::nullopt;
}

bool Hook::IsIdle(HWND window) const {
    const auto request = KeyRequest(window, 0);
    return request && request->waiting == 0;
}

std::unique_ptr<hook::Request> Hook::KeyRequest(HWND window, BYTE key) const {
    auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::KeyState;
    request->control = window;
    request->key = key;
    return Call(*request) ? std::move(request) : nullptr;
}

bool Hook::RecordTray() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::RecordTray;
    return Call(*request);
}

bool Hook::RecordCalls() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::RecordCalls;
    return Call(*request);
}

std::unique_ptr<hook::Request> Hook::CallRecords() const {
    auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::CallRecords;
    if (!Call(*request) || request->timerCount > hook::Request::kMostCalls ||
        request->executeCount > hook::Request::kMostCalls) {
        throw std::runtime_error("the calls of the program under test were not all written down");
    }
    return request;
}

std::vector<TimerCall> Hook::TimerCalls() const {
    const auto request = CallRecords();
    return {request->timers, request->timers + request->timerCount};
}

std::vector<ExecuteCall> Hook::ExecuteCalls() const {
    const auto request = CallRecords();
    std::vector<ExecuteCall> calls;
    for (DWORD i = 0; i < request->executeCount; ++i) {
        const hook::ExecuteRecord& record = request->executes[i];
        calls.push_back(
            {record.owner, record.verb, record.file, record.parameters, record.folder, record.show});
    }
    return calls;
}

bool Hook::RecordLibraries() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::RecordLibraries;
    return Call(*request);
}

std::vector<std::string> Hook::LibraryCalls() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::LibraryRecords;
    if (!Call(*request) || request->libraryCount > hook::Request::kMostCalls) {
        throw std::runtime_error("the libraries of the program under test were not all written down");
    }
    std::vector<std::string> calls;
    for (DWORD i = 0; i < request->libraryCount; ++i) {
        calls.emplace_back(request->libraries[i].name);
    }
    return calls;
}

bool Hook::HoldMinutes() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::HoldMinutes;
    return Call(*request);
}

bool Hook::MakeListsOld() const {
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::OldLists;
    return Call(*request);
}

std::vector<TrayCall> Hook::TrayCalls() const {
    std::vector<TrayCall> calls;
    const auto request = std::make_unique<hook::Request>();
    request->operation = hook::Operation::TrayRecords;
    do {
        request->firstRecord = static_cast<DWORD>(calls.size());
        if (!Call(*request)) {
            break;
        }
        const DWORD left = request->recordCount - request->firstRecord;
        for (DWORD i = 0; i < std::min(left, hook::Request::kMostRecords); ++i) {
            const hook::TrayRecord& record = request->records[i];
            NOTIFYICONDATAA data{};
            std::memcpy(&data, record.bytes, std::min<std::size_t>(sizeof(data), sizeof(record.bytes)));
            TrayCall call;
            call.message = record.message;
            call.size = record.size;
            call.window = data.hWnd;
            call.id = data.uID;
            call.flags = data.uFlags;
            call.callback = data.uCallbackMessage;
            call.icon = data.hIcon;
            call.tipBuffer.assign(data.szTip, 64);
            call.tip = call.tipBuffer.substr(0, call.tipBuffer.find('\0'));
            calls.push_back(std::move(call));
        }
    } while (calls.size() < request->recordCount && request->recordCount <= 4096);
    return calls;
}

}  // namespace kestrelguard::testing
