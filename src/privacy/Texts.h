#pragma once

/// The texts of a cache entry's details.
namespace kestrelguard::details_texts {

inline constexpr wchar_t kCutMark[] = L"...";
inline constexpr wchar_t kCacheFile[] = L"Cache File: ";
inline constexpr wchar_t kLastAccessed[] = L"Last accessed: ";
inline constexpr wchar_t kModified[] = L"  |  Modified: ";
inline constexpr wchar_t kLoadComplete[] = L"Load complete: ";
inline constexpr wchar_t kExpires[] = L"  |  Expires: ";
inline constexpr wchar_t kAccessed[] = L"Accessed: ";
inline constexpr wchar_t kNoValue[] = L"No value.";

}  // namespace kestrelguard::details_texts
