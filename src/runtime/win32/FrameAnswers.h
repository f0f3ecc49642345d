#pragma once

#include <windows.h>

namespace kestrelguard {

/// Whether the thread of a frame window takes messages, within `patience` milliseconds. True for a window
/// that is not there: calls to it come back, with an error.
bool FrameAnswers(HWND frame, UINT patience);

}  // namespace kestrelguard
