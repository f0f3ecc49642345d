#pragma once

#include "runtime/win32/Owners.h"

namespace kestrelguard {

/// An icon of `size` pixels from an icon file (.ico) that lies packed among the program's resources
/// (RT_RCDATA): the picture of that size, else the next larger one, else the largest. Null when there is no
/// such resource or it is damaged.
Icon LoadPackedIcon(HMODULE module, int resource, int size);

}  // namespace kestrelguard
