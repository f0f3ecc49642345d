#include "update/win32/UpdatePlatform.h"

#include <windows.h>

#include <algorithm>

#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"
#include "runtime/win32/Owners.h"
#include "runtime/win32/Win32ProgramFolder.h"

namespace kestrelguard {

namespace {

static_assert(sizeof(OSVERSIONINFOEXA) == 156);

constexpr std::int64_t kTicksOfASecond = 10'000'000;
/// From the zero date-time to the first moment of the file times, 1 January 1601: that many days earlier.
constexpr std::int64_t kDaysFrom1601 = 109'205;

}  // namespace

std::optional<WindowsVersion> PlatformVersion::Version() const {
    OSVERSIONINFOEXA record{};
    record.dwOSVersionInfoSize = sizeof record;
    // Kept: there is no second try with the short record for the systems that know only that one.
    if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record)) == 0) {
        return std::nullopt;
    }
    const char* const end = std::find(std::begin(record.szCSDVersion), std::end(record.szCSDVersion), '\0');
    WindowsVersion version;
    version.platform = record.dwPlatformId;
    version.major = record.dwMajorVersion;
    version.minor = record.dwMinorVersion;
    version.service = FromAnsi(std::string_view(
        record.szCSDVersion, static_cast<std::size_t>(end - std::begin(record.szCSDVersion))));
    version.suiteMask = record.wSuiteMask;
    version.productType = record.wProductType;
    return version;
}

std::int64_t PlatformClock::Now() const {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const std::int64_t ticks = static_cast<std::int64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
    return ticks / kTicksOfASecond - kDaysFrom1601 * 24 * 60 * 60;
}

void StartUpdaterProgram(const std::wstring& arguments) {
    const std::string program = ToAnsi(FolderOfProgram() + L"\\ZEVUpdate.exe");
    std::string command = '"' + program + "\" " + ToAnsi(arguments);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION started{};
    // With the program's full path beside the command line no other program can slip in.
    if (CreateProcessA(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                       &startup, &started) == 0) {
        throw RunTimeError(RunTimeError::kFileNotFound);
    }
    const Handle process(started.hProcess);
    const Handle thread(started.hThread);
}

}  // namespace kestrelguard
