#include <windows.h>

#include <commctrl.h>

#include "app/win32/Kestrelguard.h"
#include "app/win32/RunTimeErrorBox.h"
#include "app/win32/SingleInstance.h"
#include "controls/win32/Win32Controls.h"
#include "runtime/Edge.h"
#include "runtime/win32/Com.h"

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR /*commandLine*/, int /*show*/) {
    int exitCode = 1;
    kestrelguard::AtEdge(
        [&exitCode] {
            const kestrelguard::SingleInstance instance;
            if (!instance.First()) {
                exitCode = 0;
                return;
            }
            InitCommonControls();
            const kestrelguard::ComApartment apartment;
            kestrelguard::Kestrelguard form;
            form.Form_Load();
            form.FirstShow();
            exitCode = kestrelguard::PlatformMessageLoop::Run();
        },
        [](const kestrelguard::RunTimeError& error) { kestrelguard::ShowRunTimeError(nullptr, error); });
    return exitCode;
}
