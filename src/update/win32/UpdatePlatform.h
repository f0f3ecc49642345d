#pragma once

#include "update/UpdateCheck.h"
#include "update/WindowsVersion.h"

namespace kestrelguard {

/// Asks Windows for its version.
class PlatformVersion final : public WindowsVersionSource {
 public:
    std::optional<WindowsVersion> Version() const override;
};

/// The system's clock, in universal time: a change to or from summer time is no hour.
class PlatformClock final : public UpdateClock {
 public:
    std::int64_t Now() const override;
};

/// Starts ZEVUpdate.exe of the program's folder with the arguments, in a normal window. Throws RunTimeError
/// when it cannot be started.
void StartUpdaterProgram(const std::wstring& arguments);

}  // namespace kestrelguard
