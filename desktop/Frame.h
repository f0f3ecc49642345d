#pragma once

#include <windows.h>

#include <memory>
#include <string>

namespace kestrelguard::desktop {

class BrowserObject;

/// Makes the window of a browser: with address bar, page and status bar when its options say so, otherwise
/// a bare frame. Call it on the thread for windows; the window keeps the browser until it is destroyed.
HWND CreateFrame(const std::shared_ptr<BrowserObject>& browser);

/// Tells the window that its browser's page, title or status text has changed. From any thread.
void FrameChanged(HWND window);

/// Presses a link or button of the page that a dressed window shows, as the mouse does. On the thread for
/// windows. False when the page has none that leads there.
bool PressLink(HWND window, const std::wstring& link);

/// Where that link or button is on the screen; empty when there is none. On the thread for windows.
RECT LinkPlace(HWND window, const std::wstring& link);

}  // namespace kestrelguard::desktop
