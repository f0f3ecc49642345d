#include "runtime/OutOfSight.h"

namespace kestrelguard {

// Must stay in a file of its own, and the program must not be optimised across files.
void CallOutOfSight(void (*call)(void*), void* what) {
    call(what);
}

}  // namespace kestrelguard
