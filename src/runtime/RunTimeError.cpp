#include "runtime/RunTimeError.h"

#include <utility>

#include "runtime/NumberedText.h"

namespace kestrelguard {

namespace {

constexpr NumberedText kTexts[] = {
    {RunTimeError::kInvalidCall, L"Invalid procedure call or argument"},
    {RunTimeError::kOverflow, L"Overflow"},
    {RunTimeError::kOutOfMemory, L"Out of memory"},
    {RunTimeError::kSubscriptOutOfRange, L"Subscript out of range"},
    {RunTimeError::kTypeMismatch, L"Type mismatch"},
    {RunTimeError::kFileNotFound, L"File not found"},
    {RunTimeError::kDeviceIOError, L"Device I/O error"},
    {RunTimeError::kDiskFull, L"Disk full"},
    {RunTimeError::kPermissionDenied, L"Permission denied"},
    {RunTimeError::kPathFileAccess, L"Path/File access error"},
    {RunTimeError::kPathNotFound, L"Path not found"},
    {RunTimeError::kObjectNotSet, L"Object variable not set"},
    {RunTimeError::kEntryPointNotFound, L"Specified DLL function not found"},
    {RunTimeError::kDuplicateKey, L"This key is already associated with an element of this collection"},
    {RunTimeError::kElementNotFound, L"Element not found"},
    {RunTimeError::kKeyNotUnique, L"Key is not unique in collection"},
};

}  // namespace

RunTimeError::RunTimeError(std::int32_t number) : RunTimeError(number, DescriptionOf(number)) {}

RunTimeError::RunTimeError(std::int32_t number, std::wstring description)
    : m_number(number), m_description(std::move(description)) {}

std::wstring DescriptionOf(std::int32_t number) {
    if (const wchar_t* const text = TextOf(kTexts, number)) {
        return text;
    }
    return number < 0 ? L"Automation error" : L"Application-defined or object-defined error";
}

}  // namespace kestrelguard
