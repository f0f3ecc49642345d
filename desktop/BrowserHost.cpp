// A browser in a process of its own: opens one window, registers it with the system's window list as real
// browsers do, and ends when the window is closed. Usage: browser_host URL TITLE [dressed]

#include <windows.h>

#include <shellapi.h>

#include <cstdio>

#include "desktop/BrowserObject.h"
#include "desktop/KeptInterfaces.h"

namespace kestrelguard::desktop {

namespace {

class Host final : public BrowserOwner {
 public:
    void CloseRequested(BrowserObject&) noexcept override { m_close.Set(); }
    void OpenWindow(BrowserObject&, const std::wstring&, ComPtr<IDispatch>) noexcept override {}

    int Run(const BrowserOptions& options) {
        UiThread ui;
        ComPtr<IShellWindows> list;
        if (FAILED(CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_ALL, IID_IShellWindows,
                                    list.PutVoid()))) {
            return 2;
        }
        const std::shared_ptr<BrowserObject> browser = BrowserObject::Create(*this, ui, options);
        LONG cookie = 0;
        const LONG window = static_cast<LONG>(reinterpret_cast<LONG_PTR>(browser->Window()));
        if (FAILED(list->Register(browser->Dispatch(), window, SWC_BROWSER, &cookie))) {
            return 3;
        }
        m_close.Wait(INFINITE);
        browser->Events().Deliver(EventCall::OnQuit());
        list->Revoke(cookie);
        browser->End(true);
        return browser->WaitIdle(30000) ? 0 : 4;
    }

 private:
    Signal m_close;
};

}  // namespace

}  // namespace kestrelguard::desktop

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    using namespace kestrelguard::desktop;
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    BrowserOptions options;
    options.url = count > 1 ? arguments[1] : options.url;
    options.title = count > 2 ? arguments[2] : options.title;
    options.dressed = options.shown = count > 3;
    LocalFree(arguments);
    try {
        const Apartment apartment;
        const KeptInterfaces keptInterfaces;
        return Host().Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "browser_host: %s\n", error.what());
        return 1;
    }
}
