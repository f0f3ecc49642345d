#pragma once

#include <gtest/gtest.h>

#include "desktop/Desktop.h"
#include "desktop/driver/Wait.h"

namespace kestrelguard::testing {

/// Opens and closes so many windows, one after the other: each is connected to while it is open, and in the
/// end nobody refers to one of them.
inline void LetWindowsPass(desktop::StandInDesktop& desktop, int windows) {
    for (int i = 0; i < windows; ++i) {
        desktop::Browser& browser = desktop.OpenBrowser();
        ASSERT_EQ(1, browser.Sinks().connected);
        browser.Close();
        ASSERT_EQ(0, browser.Sinks().connected);
    }
    ASSERT_TRUE(WaitUntil([&desktop] {
        for (const desktop::Browser* browser : desktop.Browsers()) {
            if (browser->Ended() && browser->OutsideReferences() != 0) {
                return false;
            }
        }
        return true;
    }));
}

}  // namespace kestrelguard::testing
