#include "privacy/UrlHistory.h"

#include "privacy/CircleDetector.h"
#include "runtime/Numbers.h"

namespace kestrelguard {

URLHistoryItem::~URLHistoryItem() {
    m_values.CoTaskMemFree(m_record.pwcsTitle);
    m_values.CoTaskMemFree(m_record.pwcsUrl);
}

double URLHistoryItem::LastVisited() {
    return DateTime(m_record.ftLastVisited);
}

double URLHistoryItem::Expires() {
    return DateTime(m_record.ftExpires);
}

double URLHistoryItem::LastUpdated() {
    return DateTime(m_record.ftLastUpdated);
}

std::wstring URLHistoryItem::URL() const {
    return Text(m_record.pwcsUrl);
}

std::int32_t URLHistoryItem::Flags() const {
    return static_cast<std::int32_t>(m_record.dwFlags);
}

std::wstring URLHistoryItem::Title() const {
    return Text(m_record.pwcsTitle);
}

double URLHistoryItem::DateTime(FileTime& time) {
    m_values.FileTimeToLocalFileTime(time, time);
    CalendarTime calendar{};
    m_values.FileTimeToSystemTime(time, calendar);
    return m_values.SystemTimeToVariantTime(calendar);
}

std::wstring URLHistoryItem::Text(const char16_t* text) const {
    if (text == nullptr) {
        return {};
    }
    return std::wstring(text, text + m_values.lstrlenW(text));
}

CURLHistory::CURLHistory(HistoryPlatform& platform, std::uint32_t mostEntries)
    : m_platform(platform), m_mostEntries(mostEntries), m_store(platform.Create()) {
    Refresh(std::wstring(), 0);
}

void CURLHistory::AddURL(const std::wstring& URL, const std::wstring& Title, std::int32_t Flags) {
    m_store->AddUrl(URL, Title, static_cast<std::uint32_t>(Flags));
}

std::int32_t CURLHistory::Count() const {
    return static_cast<std::int32_t>(m_items.size());
}

void CURLHistory::Clear() {
    m_store->ClearHistory();
    Refresh(std::wstring(), 0);
}

void CURLHistory::Refresh(const std::wstring& URLStartsWith, std::int32_t Flags) {
    const std::unique_ptr<HistoryEnumerator> enumerator = m_store->EnumUrls();
    enumerator->SetFilter(URLStartsWith, static_cast<std::uint32_t>(Flags));
    m_items.clear();
    CircleDetector circle;
    while (m_items.size() < m_mostEntries) {
        // The item is made first, so that the texts have an owner from their arrival on.
        const auto item = std::make_shared<URLHistoryItem>(URLHistoryItem::Maker(), m_platform.Values());
        HistoryRecord record{};
        record.cbSize = sizeof record;
        if (enumerator->Next(record) == 0) {
            return;
        }
        item->SetData(record);
        const std::wstring address = item->URL();
        // Entries without an address are no sign of a circle.
        if (!address.empty() && circle.Next(address)) {
            return;
        }
        m_items.push_back(item);
    }
}

const std::shared_ptr<URLHistoryItem>& CURLHistory::Item(std::int32_t Index) const {
    return m_items[Position(Index)];
}

void CURLHistory::Remove(std::int32_t Index) {
    const std::size_t position = Position(Index);
    m_store->DeleteUrl(m_items[position]->URL(), 0);
    m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(position));
}

void CURLHistory::DeleteURL(std::int32_t URL, std::int32_t Flags) {
    m_store->DeleteUrl(Decimal(URL), static_cast<std::uint32_t>(Flags));
    Refresh(std::wstring(), 0);
}

std::size_t CURLHistory::Position(std::int32_t index) const {
    if (index < 1 || static_cast<std::size_t>(index) > m_items.size()) {
        throw RunTimeError(RunTimeError::kSubscriptOutOfRange);
    }
    return static_cast<std::size_t>(index) - 1;
}

}  // namespace kestrelguard
