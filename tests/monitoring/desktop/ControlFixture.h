#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "desktop/Desktop.h"
#include "desktop/driver/Process.h"

namespace kestrelguard::desktop {

using kestrelguard::testing::OwnFolder;
using kestrelguard::testing::Process;
using kestrelguard::testing::WaitUntil;
using Lines = std::vector<std::string>;

/// The client, driven line by line.
class Client {
 public:
    Client() : m_process(Process::WithPipes(OwnFolder() + L"\\monitoring_client.exe")) {}

    /// Sends a command; its answer without the "ok ".
    std::string Ask(const std::string& command) {
        const std::size_t from = m_process.Lines().size();
        m_process.WriteLine(command);
        std::string answer = "no answer";
        WaitUntil([&] {
            const Lines lines = m_process.Lines();
            for (std::size_t i = from; i < lines.size(); ++i) {
                if (lines[i].rfind("ok", 0) == 0 || lines[i].rfind("failed", 0) == 0) {
                    answer = lines[i].rfind("ok ", 0) == 0 ? lines[i].substr(3) : lines[i];
                    return true;
                }
            }
            return false;
        });
        return answer;
    }
    /// The events so far, those that were asked for before left out. The client must not be waiting for a
    /// box.
    Lines Events() {
        // What it said before this answer has been read when the answer has.
        Ask("count");
        const Lines lines = m_process.Lines();
        Lines events;
        for (; m_seen < lines.size(); ++m_seen) {
            if (lines[m_seen].rfind("event ", 0) == 0) {
                events.push_back(lines[m_seen].substr(6));
            }
        }
        return events;
    }
    Process& Program() { return m_process; }

 private:
    Process m_process;
    std::size_t m_seen = 0;
};

class ControlDesktopTest : public ::testing::Test {
 protected:
    /// How many handles the client has read since the last call, in all browsers.
    int HandleReads() {
        int reads = 0;
        for (Browser* browser : m_desktop.Browsers()) {
            reads += browser->Reads(Property::Hwnd);
            browser->ResetReads();
        }
        return reads;
    }
    std::string Handles() const {
        std::string handles;
        for (const Browser* browser : m_desktop.OpenBrowsers()) {
            handles += (handles.empty() ? "" : " ") + std::to_string(browser->Handle());
        }
        return handles;
    }
    void ExpectOneSinkEach() const {
        for (const Browser* browser : m_desktop.OpenBrowsers()) {
            EXPECT_EQ(1, browser->Sinks().connected) << browser->Handle();
        }
        EXPECT_EQ(1, m_desktop.Sinks().connected);
    }
    static BrowserOptions Quiet() {
        BrowserOptions options;
        options.announced = false;
        return options;
    }

    Apartment m_apartment;
    StandInDesktop m_desktop;
    Client m_client;
};

}  // namespace kestrelguard::desktop
