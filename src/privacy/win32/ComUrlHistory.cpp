#include "privacy/win32/ComUrlHistory.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <shlguid.h>
#include <urlhist.h>

#include <cstddef>
#include <utility>

#include "controls/win32/WaitCursor.h"
#include "runtime/win32/Com.h"

namespace kestrelguard {

namespace {

static_assert(sizeof(HistoryRecord) == 40);
static_assert(sizeof(HistoryRecord) == sizeof(STATURL));
static_assert(offsetof(HistoryRecord, pwcsTitle) == offsetof(STATURL, pwcsTitle));
static_assert(offsetof(HistoryRecord, ftLastVisited) == offsetof(STATURL, ftLastVisited));
static_assert(offsetof(HistoryRecord, ftLastUpdated) == offsetof(STATURL, ftLastUpdated));
static_assert(offsetof(HistoryRecord, ftExpires) == offsetof(STATURL, ftExpires));
static_assert(offsetof(HistoryRecord, dwFlags) == offsetof(STATURL, dwFlags));
static_assert(sizeof(CalendarTime) == sizeof(SYSTEMTIME));

FileTime From(const FILETIME& time) {
    return FileTime{time.dwLowDateTime, time.dwHighDateTime};
}

FILETIME To(const FileTime& time) {
    return FILETIME{time.low, time.high};
}

char16_t* From(LPWSTR text) {
    return reinterpret_cast<char16_t*>(text);
}

/// A moment that the platform cannot convert.
void CheckTime(BOOL converted) {
    if (!converted) {
        throw RunTimeError(HRESULT_FROM_WIN32(GetLastError()));
    }
}

class ComHistoryEnumerator final : public HistoryEnumerator {
 public:
    explicit ComHistoryEnumerator(ComPtr<IEnumSTATURL> entries) : m_entries(std::move(entries)) {}

    void SetFilter(const std::wstring& startsWith, std::uint32_t flags) override {
        CallOut([&] { return m_entries->SetFilter(startsWith.c_str(), flags); });
    }
    std::uint32_t Next(HistoryRecord& record) override {
        STATURL entry{};
        entry.cbSize = sizeof entry;
        ULONG fetched = 0;
        CallOut([&] { return m_entries->Next(1, &entry, &fetched); });
        record = HistoryRecord{entry.cbSize,
                               From(entry.pwcsUrl),
                               From(entry.pwcsTitle),
                               From(entry.ftLastVisited),
                               From(entry.ftLastUpdated),
                               From(entry.ftExpires),
                               entry.dwFlags};
        return fetched;
    }

 private:
    ComPtr<IEnumSTATURL> m_entries;
};

class ComHistoryStore final : public HistoryStore {
 public:
    explicit ComHistoryStore(ComPtr<IUrlHistoryStg2> store) : m_store(std::move(store)) {}

    void AddUrl(const std::wstring& url, const std::wstring& title, std::uint32_t flags) override {
        CallOut([&] { return m_store->AddUrl(url.c_str(), title.c_str(), flags); });
    }
    void DeleteUrl(const std::wstring& url, std::uint32_t flags) override {
        CallOut([&] { return m_store->DeleteUrl(url.c_str(), flags); });
    }
    std::unique_ptr<HistoryEnumerator> EnumUrls() override {
        ComPtr<IEnumSTATURL> entries;
        CallOut([&] { return m_store->EnumUrls(entries.Put()); });
        if (!entries) {
            throw RunTimeError(RunTimeError::kObjectNotSet);
        }
        return std::make_unique<ComHistoryEnumerator>(std::move(entries));
    }
    void ClearHistory() override {
        PaintWindows();
        const WaitCursor wait;
        CallOut([&] { return m_store->ClearHistory(); });
    }

 private:
    ComPtr<IUrlHistoryStg2> m_store;
};

}  // namespace

std::unique_ptr<HistoryStore> ComUrlHistory::Create() {
    ComPtr<IUrlHistoryStg2> store;
    CallOut([&] {
        return CoCreateInstance(CLSID_CUrlHistory, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IUrlHistoryStg2),
                                reinterpret_cast<void**>(store.Put()));
    });
    return std::make_unique<ComHistoryStore>(std::move(store));
}

void ComUrlHistory::CoTaskMemFree(void* text) noexcept {
    ::CoTaskMemFree(text);
}

std::int32_t ComUrlHistory::lstrlenW(const char16_t* text) {
    return ::lstrlenW(reinterpret_cast<const wchar_t*>(text));
}

void ComUrlHistory::FileTimeToLocalFileTime(const FileTime& time, FileTime& localTime) {
    const FILETIME utc = To(time);
    FILETIME local{};
    CheckTime(::FileTimeToLocalFileTime(&utc, &local));
    localTime = From(local);
}

void ComUrlHistory::FileTimeToSystemTime(const FileTime& time, CalendarTime& calendar) {
    const FILETIME moment = To(time);
    SYSTEMTIME fields{};
    CheckTime(::FileTimeToSystemTime(&moment, &fields));
    calendar = CalendarTime{fields.wYear, fields.wMonth,  fields.wDayOfWeek, fields.wDay,
                            fields.wHour, fields.wMinute, fields.wSecond,    fields.wMilliseconds};
}

double ComUrlHistory::SystemTimeToVariantTime(const CalendarTime& calendar) {
    SYSTEMTIME fields{calendar.year, calendar.month,  calendar.dayOfWeek, calendar.day,
                      calendar.hour, calendar.minute, calendar.second,    calendar.milliseconds};
    double date = 0;
    if (::SystemTimeToVariantTime(&fields, &date) == 0) {
        throw RunTimeError(RunTimeError::kInvalidCall);
    }
    return date;
}

}  // namespace kestrelguard
