// The least that a program with the windows of another one does: reads what windows there are from a file,
// makes them, puts an icon into the notification area and waits for messages. The benchmark of the start
// compares with this.
//
//   BareForm FILE    the file is made by StartBench: a line for each window, see WindowList.h

#include <windows.h>

#include "BareWindows.h"

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR commandLine, int /*show*/) {
    return kestrelguard::bench::RunBareWindows(commandLine, [] { return true; });
}
