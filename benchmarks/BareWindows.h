#pragma once

#include <string>

namespace kestrelguard::bench {

/// Makes the windows that a file lists (see WindowList.h), runs `onceMade`, puts an icon into the
/// notification area and waits for messages. Answers the exit code.
int RunBareWindows(std::string file, bool (*onceMade)());

}  // namespace kestrelguard::bench
