#pragma once

#include <cstdint>
#include <string>

namespace kestrelguard {

/// The year of an empty file time, and of one that has no calendar fields.
inline constexpr int kEmptyYear = 1601;

/// A file time as calendar fields in its own zone (UTC): the year, and the texts in the user's short formats.
struct CacheTime {
    int year = 0;
    std::wstring date;
    std::wstring time;
};

/// What the details text needs of one cache entry.
struct CacheEntryInfo {
    std::wstring localFileName;
    CacheTime lastAccess;
    CacheTime lastModified;
    CacheTime lastSync;
    CacheTime expire;
    std::int32_t hitRate = 0;
};

/// The three lines that the cache window shows of an entry.
std::wstring CacheEntryDetailsText(const CacheEntryInfo& info, const std::wstring& thousandsSeparator);

}  // namespace kestrelguard
