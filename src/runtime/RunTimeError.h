#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace kestrelguard {

/// What a failing step throws: a number and a description for the user.
///
/// Positive numbers are the run-time errors below and those of a socket; negative numbers are the HRESULT of
/// a failed automation call.
class RunTimeError : public std::exception {
 public:
    /// The description is the standard text of a number below, or a general one for any other number.
    explicit RunTimeError(std::int32_t number);
    RunTimeError(std::int32_t number, std::wstring description);

    std::int32_t Number() const noexcept { return m_number; }
    const std::wstring& Description() const noexcept { return m_description; }
    const char* what() const noexcept override { return "run-time error"; }

    static constexpr std::int32_t kInvalidCall = 5;
    static constexpr std::int32_t kOverflow = 6;
    static constexpr std::int32_t kOutOfMemory = 7;
    static constexpr std::int32_t kSubscriptOutOfRange = 9;
    static constexpr std::int32_t kTypeMismatch = 13;
    static constexpr std::int32_t kFileNotFound = 53;
    static constexpr std::int32_t kDeviceIOError = 57;
    static constexpr std::int32_t kDiskFull = 61;
    static constexpr std::int32_t kPermissionDenied = 70;
    static constexpr std::int32_t kPathFileAccess = 75;
    static constexpr std::int32_t kPathNotFound = 76;
    static constexpr std::int32_t kObjectNotSet = 91;
    static constexpr std::int32_t kEntryPointNotFound = 453;
    static constexpr std::int32_t kDuplicateKey = 457;
    static constexpr std::int32_t kElementNotFound = 35601;
    static constexpr std::int32_t kKeyNotUnique = 35602;

 private:
    std::int32_t m_number;
    std::wstring m_description;
};

/// The standard description of a run-time error; a general text for a number that has none.
std::wstring DescriptionOf(std::int32_t number);

}  // namespace kestrelguard
