// Listens to the events of every browser window that is listed when it starts and does nothing with them, on
// the one thread of a message loop: what the program's own road of an event is compared with.
//
//   NullSink    writes a line when it listens; ends when its process is ended

#include <windows.h>

#include "NullListener.h"

int main() {
    CoInitialize(nullptr);
    static kestrelguard::bench::NullListener sink;
    kestrelguard::bench::RunSink(sink);
}
