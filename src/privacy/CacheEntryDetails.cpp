#include "privacy/CacheEntryDetails.h"

#include "privacy/Texts.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr std::size_t kShownFileName = 75;

std::wstring TimeText(const CacheTime& time) {
    return time.year == kEmptyYear ? std::wstring(details_texts::kNoValue) : time.date + L" " + time.time;
}

}  // namespace

std::wstring CacheEntryDetailsText(const CacheEntryInfo& info, const std::wstring& thousandsSeparator) {
    return details_texts::kCacheFile + info.localFileName.substr(0, kShownFileName) +
           details_texts::kCutMark + kLineEnd + details_texts::kLastAccessed + TimeText(info.lastAccess) +
           details_texts::kModified + TimeText(info.lastModified) + kLineEnd + details_texts::kLoadComplete +
           TimeText(info.lastSync) + details_texts::kExpires + TimeText(info.expire) +
           details_texts::kAccessed + GroupedWithoutZero(info.hitRate, thousandsSeparator);
}

}  // namespace kestrelguard
