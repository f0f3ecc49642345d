// The stand-in desktop as a program: small browser windows to try the guard on by hand.
//
//   desktop.exe [ADDRESS...]          a browser for each address, the home page when there is none; ends when
//                                     the last one is closed
//   desktop.exe --scenario NAME [--guard KESTRELGUARD.EXE]
//                                     plays a scene by itself and writes what happens to standard output; see
//                                     desktop/scenario

#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <exception>

#include "desktop/Desktop.h"
#include "desktop/Pages.h"
#include "desktop/scenario/Scenario.h"

namespace kestrelguard::desktop {

namespace {

int ShowBrowsers(const std::vector<std::wstring>& urls) {
    Signal allClosed;
    StandInDesktop desktop;
    desktop.SetNewWindowLook(true, true);
    desktop.OnAllClosed([&allClosed] { allClosed.Set(); });
    for (const std::wstring& url : urls) {
        BrowserOptions options;
        options.url.clear();
        options.title.clear();
        options.dressed = true;
        options.shown = true;
        desktop.OpenBrowser(options).Navigate(CompleteAddress(url));
    }
    allClosed.Wait(INFINITE);
    return 0;
}

int Start(const std::vector<std::wstring>& arguments) {
    std::vector<std::wstring> urls;
    scenario::Request request;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == L"--scenario" && i + 1 < arguments.size()) {
            request.name = arguments[++i];
        } else if (arguments[i] == L"--guard" && i + 1 < arguments.size()) {
            request.guard = arguments[++i];
        } else {
            urls.push_back(arguments[i]);
        }
    }
    if (!request.name.empty()) {
        return scenario::Play(request);
    }
    return ShowBrowsers(urls.empty() ? std::vector<std::wstring>{kHomePage} : urls);
}

}  // namespace

}  // namespace kestrelguard::desktop

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    int count = 0;
    wchar_t** list = CommandLineToArgvW(GetCommandLineW(), &count);
    const std::vector<std::wstring> arguments(list + 1, list + count);
    LocalFree(list);
    try {
        const kestrelguard::desktop::Apartment apartment;
        return kestrelguard::desktop::Start(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "desktop: %s\n", error.what());
        return 1;
    }
}
