// BareForm that also does what nobody who watches browsers can leave out: loads the system's libraries that
// the program works with, listens to every browser that is listed and reads once what a tree of them shows,
// its handle, title and address. It does nothing with any of it.
//
//   BareWatch FILE

#include <windows.h>

#include "BareWindows.h"
#include "NullListener.h"

namespace {

bool Watch() {
    for (const char* const library : {"wininet.dll", "ws2_32.dll", "oleacc.dll"}) {
        LoadLibraryA(library);
    }
    CoInitialize(nullptr);
    static kestrelguard::bench::NullListener sink;
    return kestrelguard::bench::ListenToAll(sink, true) >= 0;
}

}  // namespace

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR commandLine, int /*show*/) {
    return kestrelguard::bench::RunBareWindows(commandLine, Watch);
}
