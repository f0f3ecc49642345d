// Listens to the events of every browser window that is listed when it starts and does nothing with them, on
// the one thread of a message loop: what the program's own road of an event is compared with.
//
//   NullSink    writes a line when it listens; ends when its process is ended

#include <windows.h>

#include <cstdio>

#include "NullListener.h"

int main() {
    CoInitialize(nullptr);
    static kestrelguard::bench::NullListener sink;
    std::printf("listening %d\n", kestrelguard::bench::ListenToAll(sink, false));
    std::fflush(stdout);
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    return 0;
}
