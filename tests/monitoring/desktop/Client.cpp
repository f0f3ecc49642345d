// Monitoring in a process of its own: the control with a host that says on standard output what reaches it.
// Commands come on standard input, one a line; each is answered with a line that begins with "ok" or
// "failed".
//
//   on | off | refresh   switch monitoring
//   enabled              whether it is on
//   stored               the value that the control stores for "Enabled"
//   count                the number of watched browsers
//   handles              the handles of the watched browsers, in order
//   cancel               set every Cancel from now on
//   replace              give the first watched browser for every new window from now on
//   fail NUMBER          throw that run-time error in every event from now on; 0: none
//   box                  show a message box in NewWindow
//   in off | in refresh | in renew   do that (renew: off and on) inside the next event
//   quit
//
// An event is "event NAME #PLACE ARGUMENTS"; the place is the browser's in the list, 0 when it is not there.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "monitoring/win32/ComBrowser.h"
#include "monitoring/win32/IEEvents.h"
#include "runtime/Edge.h"
#include "runtime/win32/AnsiText.h"
#include "runtime/win32/Owners.h"

namespace {

using namespace kestrelguard;

constexpr UINT kCommand = WM_APP + 1;

void Say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

class Host final : public BrowserEvents {
 public:
    bool cancel = false;
    bool replace = false;
    bool box = false;
    long fail = 0;
    std::function<void()> inNext;
    IEEvents* control = nullptr;

    void BrowserNavigating(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL, VARIANT& Flags,
                           VARIANT& TargetFrameName, VARIANT& PostData, VARIANT& Headers,
                           VARIANT_BOOL& Cancel) override {
        Tell("BrowserNavigating", Browser,
             Object(pDisp) + " " + Text(URL) + " " + Text(Flags) + " " + Text(TargetFrameName) + " type" +
                 std::to_string(PostData.vt) + " " + Text(Headers),
             &Cancel);
    }
    void DocumentComplete(IWebBrowser2*& Browser, IDispatch*& pDisp, VARIANT& URL) override {
        Tell("DocumentComplete", Browser, Object(pDisp) + " " + Text(URL));
    }
    void DownLoadBegin(IWebBrowser2*& Browser) override { Tell("DownLoadBegin", Browser, {}); }
    void DownLoadComplete(IWebBrowser2*& Browser) override { Tell("DownLoadComplete", Browser, {}); }
    void FileDownload(IWebBrowser2*& Browser, VARIANT_BOOL& Cancel) override {
        Tell("FileDownload", Browser, {}, &Cancel);
    }
    void NavigateComplete(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL) override {
        Tell("NavigateComplete", Browser, Object(pDisp) + " " + Text(URL));
    }
    void NavigateError(IWebBrowser2*& Browser, IDispatch*, VARIANT&, VARIANT&, VARIANT&,
                       VARIANT_BOOL& Cancel) override {
        Tell("NavigateError", Browser, {}, &Cancel);
    }
    void NewWindow(IWebBrowser2*& Browser, IDispatch*& ppDisp, VARIANT_BOOL& Cancel) override {
        const std::string arrived = Object(ppDisp);
        if (replace) {
            ppDisp = control->Browsers()->Item(1).Detach();
        }
        Tell("NewWindow", Browser, arrived, &Cancel);
        if (box) {
            MessageBoxA(nullptr, "Wait here", "Monitoring", MB_OK);
            Tell("NewWindow done", Browser, {});
        }
    }
    void OnFullScreen(IWebBrowser2*& Browser, VARIANT_BOOL FullScreen) override {
        Tell("OnFullScreen", Browser, std::to_string(FullScreen));
    }
    void ProgressChange(IWebBrowser2*& Browser, LONG Progress, LONG ProgressMax) override {
        Tell("ProgressChange", Browser, std::to_string(Progress) + " " + std::to_string(ProgressMax));
    }
    void TitleChange(IWebBrowser2*& Browser, const std::wstring& Text) override {
        Tell("TitleChange", Browser, ToAnsi(Text));
    }
    void WindowClosing(IWebBrowser2*& Browser, VARIANT_BOOL IsChildWindow, VARIANT_BOOL& Cancel) override {
        Tell("WindowClosing", Browser, std::to_string(IsChildWindow), &Cancel);
    }
    void BrowserCreated(IWebBrowser2* Browser) override { Tell("BrowserCreated", Browser, {}); }
    void BrowserDestroyed() override { Tell("BrowserDestroyed", nullptr, {}); }

 private:
    static std::string Object(IDispatch* object) { return object != nullptr ? "object" : "nothing"; }
    static std::string Text(const VARIANT& value) { return "'" + ToAnsi(TextOf(value)) + "'"; }

    void Tell(const std::string& name, IWebBrowser2* browser, const std::string& arguments,
              VARIANT_BOOL* cancelled = nullptr) {
        const cBrowsers& list = *control->Browsers();
        std::int32_t place = list.Count();
        while (place > 0 && list.Item(place).Get() != browser) {
            --place;
        }
        Say("event " + name + " #" + std::to_string(place) + (arguments.empty() ? "" : " ") + arguments);
        if (const auto action = std::exchange(inNext, nullptr)) {
            action();
        }
        if (fail != 0) {
            throw RunTimeError(fail);
        }
        if (cancelled != nullptr && cancel) {
            *cancelled = VARIANT_TRUE;
        }
    }
};

class Stored final : public PropertyBag {
 public:
    std::string text;
    void WriteProperty(std::wstring_view name, bool value, bool defaultValue) override {
        text =
            ToAnsi(name) + (value ? " true" : " false") + (defaultValue ? " default true" : " default false");
    }
};

class Program {
 public:
    Program() { m_host.control = &m_control; }

    /// False for the last one.
    bool Do(const std::string& command) noexcept {
        bool more = true;
        AtEdge(
            [&] {
                more = command != "quit";
                Say("ok" + Answer(command));
            },
            [](const RunTimeError& error) { Say("failed " + std::to_string(error.Number())); });
        return more;
    }

 private:
    std::string Answer(const std::string& command) {
        if (command == "on" || command == "off") {
            m_control.SetEnabled(command == "on");
        } else if (command == "refresh") {
            m_control.Refresh();
        } else if (command == "enabled") {
            return m_control.Enabled() ? " true" : " false";
        } else if (command == "stored") {
            Stored stored;
            m_control.WriteProperties(stored);
            return " " + stored.text;
        } else if (command == "count") {
            return " " + std::to_string(m_control.Browsers()->Count());
        } else if (command == "handles") {
            std::string handles;
            for (const ComBrowser& browser : BrowsersIn(*m_control.Browsers())) {
                handles += " " + std::to_string(browser.Handle());
            }
            return handles;
        } else if (command == "cancel") {
            m_host.cancel = true;
        } else if (command == "replace") {
            m_host.replace = true;
        } else if (command == "box") {
            m_host.box = true;
        } else if (command.starts_with("fail ")) {
            m_host.fail = std::strtol(command.c_str() + 5, nullptr, 10);
        } else if (command == "in off") {
            m_host.inNext = [this] { m_control.SetEnabled(false); };
        } else if (command == "in refresh") {
            m_host.inNext = [this] { m_control.Refresh(); };
        } else if (command == "in renew") {
            m_host.inNext = [this] {
                m_control.SetEnabled(false);
                m_control.SetEnabled(true);
            };
        } else if (command == "quit") {
            m_control.SetEnabled(false);
        } else {
            throw RunTimeError(RunTimeError::kInvalidCall);
        }
        return {};
    }

    Host m_host;
    IEEvents m_control{m_host};
};

/// Hands each line of the standard input to the thread whose id `parameter` points to, which owns it then.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)
DWORD WINAPI ReadCommands(void* parameter) noexcept {
    const DWORD reader = *static_cast<DWORD*>(parameter);
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    std::string line;
    char letter = 0;
    DWORD got = 0;
    while (ReadFile(input, &letter, 1, &got, nullptr) && got == 1) {
        if (letter == '\n') {
            auto command = std::make_unique<std::string>(std::exchange(line, {}));
            PostThreadMessageA(reader, kCommand, 0, reinterpret_cast<LPARAM>(command.release()));
        } else if (letter != '\r') {
            line += letter;
        }
    }
    PostThreadMessageA(reader, WM_QUIT, 0, 0);
    return 0;
}
// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)

}  // namespace

int main() {
    const ComApartment apartment;
    Program program;
    DWORD self = GetCurrentThreadId();
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);  // the queue must exist before anybody posts to it
    const Handle reader(CreateThread(nullptr, 0, ReadCommands, &self, 0, nullptr));
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (message.hwnd == nullptr && message.message == kCommand) {
            const std::unique_ptr<std::string> command(reinterpret_cast<std::string*>(message.lParam));
            if (!program.Do(*command)) {
                break;
            }
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 0;
}
