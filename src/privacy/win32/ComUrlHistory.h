#pragma once

#include "privacy/UrlHistory.h"

namespace kestrelguard {

/// The browser's own history (`CUrlHistory`). The calling thread has COM initialised.
class ComUrlHistory final : public HistoryPlatform, public HistoryValues {
 public:
    std::unique_ptr<HistoryStore> Create() override;
    HistoryValues& Values() override { return *this; }

    void CoTaskMemFree(void* text) noexcept override;
    std::int32_t lstrlenW(const char16_t* text) override;
    void FileTimeToLocalFileTime(const FileTime& time, FileTime& localTime) override;
    void FileTimeToSystemTime(const FileTime& time, CalendarTime& calendar) override;
    double SystemTimeToVariantTime(const CalendarTime& calendar) override;
};

}  // namespace kestrelguard
