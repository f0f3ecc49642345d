#pragma once

#include <windows.h>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// The box that tells the user of an error that nobody handled; in front when its window is in the tray,
/// which stays there. Waits until it is dismissed.
void ShowRunTimeError(HWND owner, const RunTimeError& error);

}  // namespace kestrelguard
