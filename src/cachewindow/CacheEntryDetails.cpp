#include "cachewindow/CacheEntryDetails.h"

#include "cachewindow/Texts.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr std::size_t kShownFileName = 75;

/// The year of an empty file time.
constexpr int kEmptyYear = 1601;

std::wstring TimeText(const CacheTime& time) {
    return time.year == kEmptyYear ? std::wstring(cache_texts::kNoValue) : time.date + L" " + time.time;
}

}  // namespace

std::wstring CacheEntryDetailsText(const CacheEntryInfo& info, const std::wstring& thousandsSeparator) {
    return cache_texts::kCacheFile + info.localFileName.substr(0, kShownFileName) + cache_texts::kCutMark +
           kLineEnd + cache_texts::kLastAccessed + TimeText(info.lastAccess) + cache_texts::kModified +
           TimeText(info.lastModified) + kLineEnd + cache_texts::kLoadComplete + TimeText(info.lastSync) +
           cache_texts::kExpires + TimeText(info.expire) + cache_texts::kAccessed +
           GroupedWithoutZero(info.hitRate, thousandsSeparator);
}

}  // namespace kestrelguard
