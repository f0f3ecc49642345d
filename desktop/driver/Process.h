#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "desktop/driver/Wait.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard::testing {

/// A program that a test started. What is still running when this goes away is ended.
class Process {
 public:
    /// Starts `exe` with the arguments (each is quoted) in the folder. Throws std::runtime_error when it does
    /// not start.
    explicit Process(const std::wstring& exe, const std::vector<std::wstring>& arguments = {},
                     const std::wstring& folder = {}, bool suspended = false);
    /// With its standard input and output held by the test.
    static Process WithPipes(const std::wstring& exe, const std::vector<std::wstring>& arguments = {});
    Process(Process&&) noexcept = default;
    Process& operator=(Process&&) noexcept = delete;
    ~Process();

    DWORD Id() const { return m_id; }
    HANDLE Get() const { return m_process.Get(); }
    bool Running() const { return WaitForSingleObject(m_process.Get(), 0) == WAIT_TIMEOUT; }
    /// Lets a program go that was started suspended.
    void Resume();
    /// Whether it ends within the limit (milliseconds).
    bool WaitGone(DWORD limit = kLimit) const {
        return WaitForSingleObject(m_process.Get(), limit) == WAIT_OBJECT_0;
    }
    /// Its exit code; STILL_ACTIVE while it runs.
    DWORD ExitCode() const;
    /// Ends it from one moment to the next.
    void Kill(DWORD exitCode = 9);

    // For processes with pipes. Lines end with LF; a CR before it is dropped.
    void WriteLine(const std::string& line) const;
    /// All complete lines read so far.
    std::vector<std::string> Lines() const;
    /// Waits for a line after the first `from` ones that begins with the text; its index, or -1 after the
    /// limit.
    int WaitLine(const std::string& start, int from = 0, DWORD limit = kLimit) const;

 private:
    struct Output;

    Process() = default;
    void Launch(const std::wstring& exe, const std::vector<std::wstring>& arguments,
                const std::wstring& folder, bool suspended, HANDLE input, HANDLE output);

    Handle m_process;
    Handle m_thread;
    DWORD m_id = 0;
    Handle m_input;
    std::shared_ptr<Output> m_output;
};

/// The folder that the running test program lies in, without a backslash at its end.
std::wstring OwnFolder();

}  // namespace kestrelguard::testing
