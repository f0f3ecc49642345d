// A small client of ShellWindows and its browsers, independent of the program under test: a single-threaded
// apartment that listens to everything and says on standard output what arrives. Commands come on standard
// input, one a line; each is answered with a line that begins with "ok" or "failed".
//
//   attach       walk the list, advise a sink on every browser and on the list
//   list         walk the list: one line "window HANDLE URL|TITLE|STATUS" for each
//   walk         walk the list without a word to the windows in it
//   item N       ask for entry N of the list
//   navigate URL Navigate2 in the first browser, optional arguments omitted
//   cancel N     write N to every Cancel from now on; 0: leave them alone
//   replace      give the first browser back in ppDisp from now on
//   fail HEX     answer every event with that HRESULT from now on; 0: S_OK
//   except TEXT  answer every event with an exception of that description
//   box          show a message box in NewWindow2 from now on
//   detach       unadvise and release everything
//   quit

#include <windows.h>

#include <exdisp.h>
#include <exdispid.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "desktop/ComObject.h"
#include "desktop/Threads.h"

namespace {

using namespace kestrelguard::desktop;

constexpr UINT kCommand = WM_APP + 1;

struct Behaviour {
    long cancel = 0;
    bool replace = false;
    HRESULT failure = S_OK;
    std::wstring description;
    bool box = false;
};

Behaviour g_behaviour;
std::vector<ComPtr<IWebBrowser2>> g_browsers;

void Say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

std::string Narrow(std::wstring_view text) {
    std::string narrow;
    for (const wchar_t c : text) {
        narrow += c < 128 ? static_cast<char>(c) : '?';
    }
    return narrow;
}

std::string Describe(const VARIANT& value, int depth = 0) {
    if (value.vt == (VT_BYREF | VT_VARIANT)) {
        return "&" + (depth < 4 ? Describe(*value.pvarVal, depth + 1) : std::string("..."));
    }
    char number[32];
    switch (value.vt) {
        case VT_EMPTY:
            return "empty";
        case VT_BSTR:
            return value.bstrVal == nullptr ? "null text" : "\"" + Narrow(value.bstrVal) + "\"";
        case VT_I4:
            return std::to_string(value.lVal);
        case VT_BOOL:
            return value.boolVal == VARIANT_TRUE    ? "true"
                   : value.boolVal == VARIANT_FALSE ? "false"
                                                    : "odd bool";
        case VT_DISPATCH:
            return value.pdispVal != nullptr ? "object" : "no object";
        case VT_BYREF | VT_BOOL:
            return "&bool " + std::to_string(*value.pboolVal);
        case VT_BYREF | VT_DISPATCH:
            return *value.ppdispVal != nullptr ? "&object" : "&no object";
        case VT_ARRAY | VT_UI1: {
            std::string bytes;
            void* data = nullptr;
            LONG last = -1;
            if (SUCCEEDED(SafeArrayGetUBound(value.parray, 1, &last)) &&
                SUCCEEDED(SafeArrayAccessData(value.parray, &data))) {
                bytes.assign(static_cast<const char*>(data), static_cast<std::size_t>(last + 1));
                SafeArrayUnaccessData(value.parray);
            }
            return "bytes " + bytes;
        }
        default:
            std::snprintf(number, sizeof(number), "type 0x%x", value.vt);
            return number;
    }
}

/// Listens to one event source.
class Sink final : public ComObject<IDispatch> {
 public:
    Sink(std::string name, const IID& source) : m_name(std::move(name)), m_source(source) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override {
        return ComObject::QueryInterface(iid == m_source ? IID_IDispatch : iid, object);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*,
                                     EXCEPINFO* exception, UINT*) noexcept override {
        std::string line =
            "event " + m_name + " " + std::to_string(id) + " args " + std::to_string(parameters->cArgs) + ":";
        for (UINT i = parameters->cArgs; i > 0; --i) {
            line += " " + Describe(parameters->rgvarg[i - 1]);
        }
        Say(line);
        if (id == DISPID_NEWWINDOW2 && g_behaviour.box) {
            MessageBoxW(nullptr, L"Wait here", L"Client", MB_OK);
        }
        for (UINT i = 0; i < parameters->cArgs; ++i) {
            VARIANT& argument = parameters->rgvarg[i];
            if (argument.vt == (VT_BYREF | VT_BOOL) && g_behaviour.cancel != 0) {
                *argument.pboolVal = static_cast<VARIANT_BOOL>(g_behaviour.cancel);
            }
            if (argument.vt == (VT_BYREF | VT_DISPATCH) && g_behaviour.replace && !g_browsers.empty()) {
                *argument.ppdispVal = ComPtr<IDispatch>(g_browsers[0].As<IDispatch>()).Detach();
            }
        }
        if (!g_behaviour.description.empty()) {
            if (exception != nullptr) {
                exception->bstrDescription = Bstr(g_behaviour.description).Detach();
                exception->scode = g_behaviour.failure;
            }
            return exception != nullptr ? DISP_E_EXCEPTION : g_behaviour.failure;
        }
        return g_behaviour.failure;
    }

 private:
    const std::string m_name;
    const IID& m_source;
};

/// A sink and where it is advised.
struct Connection {
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
};

std::vector<Connection> g_connections;
ComPtr<IShellWindows> g_list;
// What "walk" and "item" found: letting go is a word with the window, too.
std::vector<ComPtr<IDispatch>> g_kept;

HRESULT Connect(IUnknown* source, const IID& events, const std::string& name) {
    ComPtr<IConnectionPointContainer> container;
    HRESULT hr = source->QueryInterface(IID_IConnectionPointContainer, container.PutVoid());
    if (FAILED(hr)) {
        return hr;
    }
    Connection connection;
    hr = container->FindConnectionPoint(events, connection.point.Put());
    if (FAILED(hr)) {
        return hr;
    }
    const ComPtr<Sink> sink = MakeCom<Sink>(name, events);
    hr = connection.point->Advise(sink.Get(), &connection.cookie);
    if (SUCCEEDED(hr)) {
        g_connections.push_back(std::move(connection));
    }
    return hr;
}

/// Walks the list; `take` gets each object as it is.
template <class Take>
HRESULT Enumerate(Take take, int& entries) {
    ComPtr<IUnknown> unknown;
    HRESULT hr = g_list->_NewEnum(unknown.Put());
    if (FAILED(hr)) {
        return hr;
    }
    const ComPtr<IEnumVARIANT> enumerator = unknown.As<IEnumVARIANT>();
    if (!enumerator) {
        return E_NOINTERFACE;
    }
    for (;;) {
        Variant entry;
        hr = enumerator->Next(1, &entry, nullptr);
        if (hr != S_OK) {
            return FAILED(hr) ? hr : S_OK;
        }
        ++entries;
        if (entry.vt == VT_DISPATCH && entry.pdispVal != nullptr) {
            take(ComPtr<IDispatch>(entry.pdispVal));
        }
    }
}

HRESULT Walk(std::vector<ComPtr<IWebBrowser2>>& browsers, int& entries) {
    return Enumerate(
        [&browsers](const ComPtr<IDispatch>& object) {
            if (ComPtr<IWebBrowser2> browser = object.As<IWebBrowser2>()) {
                browsers.push_back(std::move(browser));
            }
        },
        entries);
}

void Detach() {
    for (const Connection& connection : g_connections) {
        connection.point->Unadvise(connection.cookie);
    }
    g_connections.clear();
    g_browsers.clear();
    g_kept.clear();
    g_list.Reset();
}

void Answer(HRESULT hr, const std::string& text = {}) {
    char number[32];
    std::snprintf(number, sizeof(number), "failed %08lx", static_cast<unsigned long>(hr));
    Say(FAILED(hr) ? number : text.empty() ? "ok" : "ok " + text);
}

HRESULT Open() {
    return g_list ? S_OK
                  : CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_ALL, IID_IShellWindows,
                                     g_list.PutVoid());
}

bool Do(const std::string& command) {
    const std::size_t blank = command.find(' ');
    const std::string verb = command.substr(0, blank);
    const std::string rest = blank == std::string::npos ? std::string() : command.substr(blank + 1);
    if (verb == "quit") {
        Detach();
        Answer(S_OK);
        return false;
    }
    if (verb == "attach") {
        HRESULT hr = Open();
        int entries = 0;
        if (SUCCEEDED(hr)) {
            hr = Connect(g_list.Get(), DIID_DShellWindowsEvents, "list");
        }
        if (SUCCEEDED(hr)) {
            hr = Walk(g_browsers, entries);
        }
        for (std::size_t i = 0; SUCCEEDED(hr) && i < g_browsers.size(); ++i) {
            hr = Connect(g_browsers[i].Get(), DIID_DWebBrowserEvents2, "browser" + std::to_string(i));
        }
        Answer(hr, std::to_string(g_browsers.size()) + " of " + std::to_string(entries));
    } else if (verb == "list") {
        std::vector<ComPtr<IWebBrowser2>> browsers;
        int entries = 0;
        HRESULT hr = Open();
        LONG count = 0;
        if (SUCCEEDED(hr)) {
            hr = g_list->get_Count(&count);
        }
        if (SUCCEEDED(hr)) {
            hr = Walk(browsers, entries);
        }
        for (const auto& browser : browsers) {
            SHANDLE_PTR handle = 0;
            Bstr url;
            Bstr title;
            Bstr status;
            const HRESULT read = browser->get_HWND(&handle);
            browser->get_LocationURL(url.Put());
            browser->get_LocationName(title.Put());
            browser->get_StatusText(status.Put());
            Say("window " + (FAILED(read) ? "failed" : std::to_string(handle)) + " " + Narrow(url.Text()) +
                "|" + Narrow(title.Text()) + "|" + Narrow(status.Text()));
        }
        Answer(hr, std::to_string(entries) + " count " + std::to_string(count));
    } else if (verb == "walk") {
        int entries = 0;
        LONG count = 0;
        HRESULT hr = Open();
        if (SUCCEEDED(hr)) {
            hr = g_list->get_Count(&count);
        }
        if (SUCCEEDED(hr)) {
            hr = Enumerate([](const ComPtr<IDispatch>& object) { g_kept.push_back(object); }, entries);
        }
        Answer(hr, std::to_string(entries) + " count " + std::to_string(count));
    } else if (verb == "item") {
        HRESULT hr = Open();
        ComPtr<IDispatch> found;
        if (SUCCEEDED(hr)) {
            hr = g_list->Item(Variant::Long(std::strtol(rest.c_str(), nullptr, 10)), found.Put());
        }
        Answer(hr, found ? "object" : "nothing");
        g_kept.push_back(std::move(found));
    } else if (verb == "navigate") {
        Variant url = Variant::Text(std::wstring(rest.begin(), rest.end()));
        Variant none[4] = {Variant::Omitted(), Variant::Omitted(), Variant::Omitted(), Variant::Omitted()};
        Answer(g_browsers.empty() ? E_FAIL
                                  : g_browsers[0]->Navigate2(&url, &none[0], &none[1], &none[2], &none[3]));
    } else if (verb == "cancel") {
        g_behaviour.cancel = std::strtol(rest.c_str(), nullptr, 10);
        Answer(S_OK);
    } else if (verb == "replace") {
        g_behaviour.replace = true;
        Answer(S_OK);
    } else if (verb == "fail") {
        g_behaviour.failure = static_cast<HRESULT>(std::strtoul(rest.c_str(), nullptr, 16));
        Answer(S_OK);
    } else if (verb == "except") {
        g_behaviour.description.assign(rest.begin(), rest.end());
        Answer(S_OK);
    } else if (verb == "box") {
        g_behaviour.box = true;
        Answer(S_OK);
    } else if (verb == "detach") {
        Detach();
        Answer(S_OK);
    } else {
        Answer(E_NOTIMPL);
    }
    return true;
}

Lock g_commandLock;
std::deque<std::string> g_commands;

DWORD WINAPI ReadCommands(void* parameter) noexcept {
    const DWORD mainThread = *static_cast<DWORD*>(parameter);
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    std::string line;
    char c = 0;
    DWORD got = 0;
    while (ReadFile(input, &c, 1, &got, nullptr) && got == 1) {
        if (c == '\n') {
            {
                const Hold hold(g_commandLock);
                g_commands.push_back(std::exchange(line, {}));
            }
            PostThreadMessageW(mainThread, kCommand, 0, 0);
        } else if (c != '\r') {
            line += c;
        }
    }
    PostThreadMessageW(mainThread, WM_QUIT, 0, 0);
    return 0;
}

}  // namespace

int main() {
    CoInitialize(nullptr);
    static DWORD mainThread = GetCurrentThreadId();
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // the queue must exist before anybody posts to it
    const HANDLE reader = CreateThread(nullptr, 0, ReadCommands, &mainThread, 0, nullptr);
    CloseHandle(reader);
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.hwnd == nullptr && message.message == kCommand) {
            std::string command;
            {
                const Hold hold(g_commandLock);
                command = g_commands.front();
                g_commands.pop_front();
            }
            if (!Do(command)) {
                break;
            }
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    Detach();
    CoUninitialize();
    return 0;
}
