#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "RunningGuard.h"
#include "desktop/Desktop.h"

/// What nearly every test of the program beside the stand-in desktop has.
namespace kestrelguard::testing {

using desktop::Browser;
using desktop::BrowserOptions;
using desktop::EventCall;
using desktop::EventResult;
using desktop::PendingEvent;
using desktop::Property;
using desktop::StandInDesktop;

inline constexpr wchar_t kCacheCaption[] = L"Kestrelguard v2.0 - IE Cache Details and Advanced Configuration";

/// Holds a file of the program's folder open: nobody else writes it, nor reads it unless that is shared.
inline File Locked(const GuardFolder& folder, const wchar_t* name, DWORD shared) {
    File file(
        CreateFileW(folder.File(name).c_str(), GENERIC_READ, shared, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(file) << "the file cannot be locked";
    return file;
}

/// The box that tells why the end of the program failed.
inline MessageBoxSeen CloseAndWaitBox(Guard& guard) {
    PostMessageW(guard.Window(), WM_CLOSE, 0, 0);
    return WaitMessageBox(guard.Program().Id());
}

/// A desktop, on which no program runs yet.
class DesktopTest : public ::testing::Test {
 protected:
    /// A browser that the running program has connected to.
    Browser& Watched(const BrowserOptions& options = {}) {
        Browser& browser = m_desktop.OpenBrowser(options);
        EXPECT_TRUE(WaitUntil([&] { return browser.Sinks().connected == 1; }));
        return browser;
    }

    desktop::Apartment m_apartment;
    StandInDesktop m_desktop;
};

/// ... and one program, which the test starts when its desktop is laid out.
class OneGuardTest : public DesktopTest {
 protected:
    /// `settings` are the bytes of the settings file; without them there is none.
    void Start(std::optional<std::string> settings = {}) {
        m_folder = std::make_unique<GuardFolder>(std::move(settings));
        m_guard = std::make_unique<Guard>(*m_folder);
        ASSERT_TRUE(m_guard->WaitReady());
    }
    void ClickOn(const wchar_t* caption) const {
        const HWND button = m_guard->Button(caption);
        ASSERT_NE(nullptr, button) << "no such button";
        ClickAndWait(button);
    }

    std::unique_ptr<GuardFolder> m_folder;
    std::unique_ptr<Guard> m_guard;
};

}  // namespace kestrelguard::testing
