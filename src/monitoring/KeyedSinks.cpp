#include "monitoring/KeyedSinks.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "runtime/Numbers.h"

namespace kestrelguard {

namespace {

/// The counter after this one; the empty one counts as 0.
std::wstring Advanced(const std::wstring& counter) {
    return Decimal(CheckedAdd(RoundToInteger(LeadingNumber(counter)), 1));
}

auto IsOn(const void* identity) {
    return [identity](const KeyedSinks::Sink& sink) { return sink.window->Identity() == identity; };
}

}  // namespace

std::wstring KeyedSinks::KeyOf(std::int32_t handle) const {
    const std::wstring start = L"_" + Decimal(handle) + L"_";
    std::wstring counter;
    while (m_colBrowsers.Contains(start + counter)) {
        counter = Advanced(counter);
    }
    return start + counter;
}

void KeyedSinks::Add(Sink sink) {
    std::wstring key = sink.key;
    m_colBrowsers.Add(std::move(sink), std::move(key));
}

void KeyedSinks::Release() noexcept {
    // Each sink's end lets other calls in: they find the collection empty.
    const KeyedCollection<Sink> sinks = std::exchange(m_colBrowsers, KeyedCollection<Sink>());
    std::copy_if(sinks.begin(), sinks.end(), std::back_inserter(m_resting),
                 [](const Sink& sink) { return !sink.window->Answers(); });
}

bool KeyedSinks::Rests(const DesktopWindowPtr& window) const {
    return std::any_of(m_resting.begin(), m_resting.end(), IsOn(window->Identity()));
}

void KeyedSinks::Wake(const DesktopWindowPtr& window) {
    const auto resting = std::find_if(m_resting.begin(), m_resting.end(), IsOn(window->Identity()));
    Sink sink = *resting;
    sink.key = KeyOf(sink.handle);
    Add(std::move(sink));
    m_resting.erase(resting);
}

void KeyedSinks::ReleaseResting(const DesktopWindow& window) noexcept {
    const auto resting = std::find_if(m_resting.begin(), m_resting.end(), IsOn(window.Identity()));
    if (resting != m_resting.end()) {
        // Its end lets other calls in: they do not find it any more.
        const Sink released = std::move(*resting);
        m_resting.erase(resting);
    }
}

std::vector<KeyedSinks::Sink> KeyedSinks::TakeResting() noexcept {
    return std::exchange(m_resting, {});
}

DesktopWindowPtr KeyedSinks::WindowOf(const void* identity) const {
    const auto resting = std::find_if(m_resting.begin(), m_resting.end(), IsOn(identity));
    if (resting != m_resting.end()) {
        return resting->window;
    }
    const auto found = std::find_if(m_colBrowsers.begin(), m_colBrowsers.end(), IsOn(identity));
    return found != m_colBrowsers.end() ? found->window : nullptr;
}

std::vector<KeyedSinks::Sink> KeyedSinks::All() const {
    return {m_colBrowsers.begin(), m_colBrowsers.end()};
}

std::vector<std::wstring> KeyedSinks::Keys() const {
    std::vector<std::wstring> keys(m_colBrowsers.Count());
    std::transform(m_colBrowsers.begin(), m_colBrowsers.end(), keys.begin(),
                   [](const Sink& sink) { return sink.key; });
    return keys;
}

}  // namespace kestrelguard
