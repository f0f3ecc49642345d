#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kestrelguard {

/// The wall clock and the user's way of writing numbers, dates and times.
class Locale {
 public:
    virtual ~Locale() = default;

    /// The present local date and time in the system's general date format.
    virtual std::wstring GeneralDateNow() const = 0;

    /// The separator of thousands.
    virtual std::wstring ThousandsSeparator() const = 0;
};

/// The folder of the program, as far as its text files need it. Paths are file names in that folder.
class ProgramFolder {
 public:
    virtual ~ProgramFolder() = default;

    /// Whether a file of that name is there.
    virtual bool Exists(const std::wstring& name) const = 0;

    /// Hands over the lines of a file, one after the other, without their line ends (CR LF, CR or LF; the
    /// last line may lack one). Throws kFileNotFound, kPathNotFound, kPermissionDenied, kPathFileAccess,
    /// kDeviceIOError, kOutOfMemory; what `line` throws passes through.
    virtual void ReadLines(const std::wstring& name,
                           const std::function<void(std::wstring_view)>& line) const = 0;

    /// Replaces a file as a whole: after a kill at any moment there is either the old or the new one.
    /// Throws kPathNotFound, kPermissionDenied, kPathFileAccess, kDiskFull, kDeviceIOError, kOutOfMemory.
    virtual void Write(const std::wstring& name, std::wstring_view text) = 0;
};

}  // namespace kestrelguard
