#include "desktop/driver/Process.h"

#include <stdexcept>
#include <utility>

#include "desktop/Threads.h"

namespace kestrelguard::testing {

struct Process::Output {
    desktop::Lock lock;
    std::vector<std::string> lines;
    std::string rest;
    Handle pipe;

    void Read() {
        char buffer[512];
        DWORD got = 0;
        while (ReadFile(pipe.Get(), buffer, sizeof(buffer), &got, nullptr) && got > 0) {
            const desktop::Hold hold(lock);
            for (DWORD i = 0; i < got; ++i) {
                if (buffer[i] == '\n') {
                    lines.push_back(std::exchange(rest, {}));
                } else if (buffer[i] != '\r') {
                    rest += buffer[i];
                }
            }
        }
    }
};

Process::Process(const std::wstring& exe, const std::vector<std::wstring>& arguments,
                 const std::wstring& folder, bool suspended) {
    Launch(exe, arguments, folder, suspended, nullptr, nullptr);
}

Process Process::WithPipes(const std::wstring& exe, const std::vector<std::wstring>& arguments) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Handle inputRead;
    Handle outputWrite;
    Process process;
    process.m_output = std::make_shared<Output>();
    if (!CreatePipe(inputRead.Put(), process.m_input.Put(), &inherited, 0) ||
        !CreatePipe(process.m_output->pipe.Put(), outputWrite.Put(), &inherited, 0)) {
        throw std::runtime_error("no pipe");
    }
    SetHandleInformation(process.m_input.Get(), HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(process.m_output->pipe.Get(), HANDLE_FLAG_INHERIT, 0);
    process.Launch(exe, arguments, {}, false, inputRead.Get(), outputWrite.Get());
    desktop::RunDetached([output = process.m_output] { output->Read(); });
    return process;
}

void Process::Launch(const std::wstring& exe, const std::vector<std::wstring>& arguments,
                     const std::wstring& folder, bool suspended, HANDLE input, HANDLE output) {
    std::wstring command = L"\"" + exe + L"\"";
    for (const std::wstring& argument : arguments) {
        command += L" \"" + argument + L"\"";
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    if (input != nullptr) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input;
        startup.hStdOutput = output;
        startup.hStdError = output;
    }
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(exe.c_str(), command.data(), nullptr, nullptr, input != nullptr,
                        suspended ? CREATE_SUSPENDED : 0, nullptr, folder.empty() ? nullptr : folder.c_str(),
                        &startup, &started)) {
        throw std::runtime_error("cannot start a program, error " + std::to_string(GetLastError()));
    }
    m_process.Reset(started.hProcess);
    m_thread.Reset(started.hThread);
    m_id = started.dwProcessId;
}

Process::~Process() {
    if (m_process && Running()) {
        Kill();
    }
}

void Process::Resume() {
    ResumeThread(m_thread.Get());
}

DWORD Process::ExitCode() const {
    DWORD code = 0;
    GetExitCodeProcess(m_process.Get(), &code);
    return code;
}

void Process::Kill(DWORD exitCode) {
    TerminateProcess(m_process.Get(), exitCode);
    WaitGone();
}

void Process::WriteLine(const std::string& line) const {
    const std::string whole = line + "\n";
    DWORD written = 0;
    WriteFile(m_input.Get(), whole.data(), static_cast<DWORD>(whole.size()), &written, nullptr);
}

std::vector<std::string> Process::Lines() const {
    const desktop::Hold hold(m_output->lock);
    return m_output->lines;
}

int Process::WaitLine(const std::string& start, int from, DWORD limit) const {
    int found = -1;
    WaitUntil(
        [&] {
            const std::vector<std::string> lines = Lines();
            for (std::size_t i = static_cast<std::size_t>(from); i < lines.size(); ++i) {
                if (lines[i].compare(0, start.size(), start) == 0) {
                    found = static_cast<int>(i);
                    return true;
                }
            }
            return false;
        },
        limit);
    return found;
}

std::wstring OwnFolder() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring whole(path, length);
    return whole.substr(0, whole.find_last_of(L'\\'));
}

}  // namespace kestrelguard::testing
