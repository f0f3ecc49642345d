#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "desktop/driver/Wait.h"

namespace kestrelguard::testing {

/// One icon in the notification area of the session's task bar, as a person sees it.
struct TrayIcon {
    std::wstring tip;
    RECT place{};  ///< on the screen
    HWND bar = nullptr;
};

/// The icons that are there, in no particular order.
std::vector<TrayIcon> TrayIcons();
/// Waits until exactly that many icons are there; false after the limit (milliseconds).
bool WaitTrayIcons(std::size_t count, DWORD limit = kLimit);
/// Puts the pointer over an icon and clicks it: the task bar gets the messages of the mouse and passes them
/// on to the icon's owner.
void ClickTrayIcon(const TrayIcon& icon, bool right = false, bool twice = false);
/// Moves the pointer over an icon; the owner hears of it through the task bar.
void PointAtTrayIcon(const TrayIcon& icon);
/// Moves the pointer to a place on the screen and clicks there: real input.
void ClickScreen(POINT point, bool right = false);

}  // namespace kestrelguard::testing
