#pragma once

#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// Loads a library of the system, by its full path: one of the same name beside the program is not looked at.
/// Empty when there is none.
Library LoadSystemLibrary(const char* name);

}  // namespace kestrelguard
