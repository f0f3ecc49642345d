#include <windows.h>

#include <commctrl.h>

#include <cstdlib>

#include "app/win32/Kestrelguard.h"
#include "app/win32/RunTimeErrorBox.h"
#include "app/win32/SingleInstance.h"
#include "controls/win32/PlatformMessageLoop.h"
#include "monitoring/win32/Answering.h"
#include "monitoring/win32/LongCalls.h"
#include "runtime/Edge.h"
#include "runtime/win32/Com.h"

namespace {

void Report(const kestrelguard::RunTimeError& error) {
    kestrelguard::ShowRunTimeError(nullptr, error);
}

/// The life of the form. Answers the program's exit code.
int RunForm(kestrelguard::LongCalls& longCalls) {
    kestrelguard::Kestrelguard form;
    longCalls.Serve(form.Handle(), [&form] { form.GoOn(); });
    bool loaded = false;
    // Told while the form is still there: its end asks the message loop, that of the box included, to quit.
    kestrelguard::AtEdge(
        [&form, &loaded] {
            form.Form_Load();
            loaded = true;
        },
        Report);
    const int exitCode = loaded ? kestrelguard::PlatformMessageLoop::Run(form.Handle()) : EXIT_FAILURE;
    if (kestrelguard::AnythingHangs()) {
        // A browser hangs: leaving COM in good order would wait for it. Everything is stored by now.
        ExitProcess(static_cast<UINT>(exitCode));
    }
    return exitCode;
}

}  // namespace

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR /*commandLine*/, int /*show*/) {
    int exitCode = EXIT_FAILURE;
    kestrelguard::AtEdge(
        [&exitCode] {
            const kestrelguard::SingleInstance instance;
            if (!instance.First()) {
                exitCode = EXIT_SUCCESS;
                return;
            }
            InitCommonControls();
            const kestrelguard::ComApartment apartment;
            kestrelguard::LongCalls longCalls;
            exitCode = RunForm(longCalls);
        },
        Report);
    return exitCode;
}
