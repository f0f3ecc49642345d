#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "desktop/Desktop.h"
#include "desktop/driver/Process.h"

namespace kestrelguard::desktop {

/// The client in a process of its own, driven line by line.
class Client {
 public:
    Client() : m_process(testing::Process::WithPipes(testing::OwnFolder() + L"\\standin_client.exe")) {}

    /// Sends a command and waits for its answer.
    std::string Ask(const std::string& command) {
        const int from = static_cast<int>(m_process.Lines().size());
        m_process.WriteLine(command);
        int answer = -1;
        testing::WaitUntil([&] {
            const auto lines = m_process.Lines();
            for (std::size_t i = static_cast<std::size_t>(from); i < lines.size(); ++i) {
                if (lines[i].rfind("ok", 0) == 0 || lines[i].rfind("failed", 0) == 0) {
                    answer = static_cast<int>(i);
                    return true;
                }
            }
            return false;
        });
        return answer < 0 ? "no answer" : m_process.Lines()[static_cast<std::size_t>(answer)];
    }
    /// Waits for an event line that begins so and returns it whole.
    std::string Event(const std::string& start, int from = 0) {
        const int line = m_process.WaitLine("event " + start, from);
        return line < 0 ? "no event" : m_process.Lines()[static_cast<std::size_t>(line)];
    }
    /// How many events have come that begin so, once there are at least so many: the client tells of one
    /// before it returns from it, but its words take their own time.
    int Count(const std::string& start, int atLeast) const {
        int count = 0;
        testing::WaitUntil([&] {
            const auto lines = m_process.Lines();
            count = static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
                return line.rfind("event " + start, 0) == 0;
            }));
            return count >= atLeast;
        });
        return count;
    }
    testing::Process& Program() { return m_process; }

 private:
    testing::Process m_process;
};

/// A stand-in desktop with a client in a process of its own.
class StandInTest : public ::testing::Test {
 protected:
    RemoteBrowser& OpenRemote(RemoteOptions options = {L"http://remote.example/", L"Far away"}) {
        return m_desktop.OpenRemoteBrowser(testing::OwnFolder() + L"\\browser_host.exe", std::move(options));
    }

    Apartment m_apartment;
    StandInDesktop m_desktop;
    Client m_client;
};

}  // namespace kestrelguard::desktop
