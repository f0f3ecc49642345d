#include "SiteSubjects.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Report.h"
#include "SiteWorkload.h"
#include "runtime/Text.h"

namespace kestrelguard::bench {
namespace {

std::vector<std::wstring> Widened(const std::vector<std::string>& texts) {
    std::vector<std::wstring> wide;
    wide.reserve(texts.size());
    for (const std::string& text : texts) {
        wide.emplace_back(text.begin(), text.end());
    }
    return wide;
}

/// The cost of `blocks` for one text, and how many it blocks.
template <class Text, class Blocks>
Measured OverAll(const std::vector<Text>& texts, std::size_t count, const Blocks& blocks) {
    std::size_t blocked = 0;
    const std::uint64_t begin = Nanoseconds();
    for (std::size_t text = 0; text < count; ++text) {
        blocked += blocks(texts[text]) ? 1 : 0;
    }
    const std::uint64_t end = Nanoseconds();
    Use(blocked);
    return {static_cast<double>(end - begin) / static_cast<double>(count), blocked};
}

/// Reads and writes more memory than any cache holds.
void EmptyCaches() {
    static std::vector<unsigned char> memory(std::size_t{48} << 20);
    std::size_t sum = 0;
    for (std::size_t at = 0; at < memory.size(); at += 64) {
        sum += ++memory[at];
    }
    Use(sum);
}

std::vector<std::string_view> Views(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

}  // namespace

SiteSubjects::SiteSubjects(std::size_t entries)
    : m_entries(SiteWorkload::Entries(entries)),
      m_addresses(SiteWorkload::Addresses(kAddresses, m_entries)),
      m_wideEntries(Widened(m_entries)),
      m_wideAddresses(Widened(m_addresses)) {}

SiteMatcher& SiteSubjects::Filled() {
    if (!m_matcher) {
        m_matcher = std::make_unique<SiteMatcher>();
        for (const std::wstring& entry : m_wideEntries) {
            m_matcher->Add(entry);
        }
    }
    return *m_matcher;
}

Measured SiteSubjects::LowerCasePass() {
    site_text::LowerCased lowerCased;
    return OverAll(m_wideAddresses, kAddresses,
                   [&](const std::wstring& address) { return lowerCased(address).empty(); });
}

Measured SiteSubjects::Matcher() {
    const SiteMatcher& matcher = Filled();
    return OverAll(m_wideAddresses, kAddresses,
                   [&](const std::wstring& address) { return matcher.AnyOccursIn(address); });
}

Measured SiteSubjects::Automaton() {
    if (!m_automaton) {
        m_automaton = std::make_unique<SiteAutomaton>(Views(m_entries));
    }
    site_text::LowerCased lowerCased;
    return OverAll(m_wideAddresses, kAddresses, [&](const std::wstring& address) {
        return m_automaton->AnyOccursIn(lowerCased(address));
    });
}

Measured SiteSubjects::NaiveLoop() {
    constexpr std::size_t kCompares = 2'000'000;
    const std::size_t count = std::clamp<std::size_t>(kCompares / m_entries.size(), 20, kAddresses);
    std::vector<bool> verdicts;
    verdicts.reserve(count);
    const Measured measured = OverAll(m_wideAddresses, count, [&](const std::wstring& address) {
        const std::wstring lower = LowerCase(address);
        const bool blocked = std::any_of(m_wideEntries.begin(), m_wideEntries.end(),
                                         [&](const std::wstring& entry) { return Contains(lower, entry); });
        verdicts.push_back(blocked);
        return blocked;
    });
    for (std::size_t address = 0; address < count; ++address) {
        if (Filled().AnyOccursIn(m_wideAddresses[address]) != verdicts[address]) {
            std::printf("The matcher and the plain loop disagree on %s\n", m_addresses[address].c_str());
            std::exit(1);
        }
    }
    return {measured.value, 0};
}

Measured SiteSubjects::Build() {
    const std::uint64_t begin = Nanoseconds();
    SiteMatcher matcher;
    for (const std::wstring& entry : m_wideEntries) {
        matcher.Add(entry);
    }
    return {static_cast<double>(Nanoseconds() - begin)};
}

Measured SiteSubjects::AddOneRow() {
    constexpr std::size_t kTimes = 41;
    SiteMatcher& matcher = Filled();
    // Names that are not in the list, and others each time.
    ++m_addRounds;
    const std::vector<std::wstring> names = Widened(SiteWorkload::Entries(kTimes + m_addRounds));
    std::vector<std::uint64_t> times;
    for (std::size_t time = 0; time < kTimes; ++time) {
        // As when a user adds one: other work has taken the processor's caches since the last time.
        EmptyCaches();
        const std::uint64_t begin = Nanoseconds();
        const SiteMatcher::Row row = matcher.Add(names[time]);
        times.push_back(Nanoseconds() - begin);
        matcher.Remove(row);
    }
    std::nth_element(times.begin(), times.begin() + kTimes / 2, times.end());
    return {static_cast<double>(times[kTimes / 2])};
}

Measured SiteSubjects::Memory() {
    return {static_cast<double>(Filled().MemoryBytes())};
}

HostileSubjects::HostileSubjects() : m_entries(SiteWorkload::TwoLetterTexts(10000, 24)) {
    m_automaton = std::make_unique<SiteAutomaton>(Views(m_entries));
    for (const std::string& address : SiteWorkload::TwoLetterTexts(400, 2000)) {
        if (!m_automaton->AnyOccursIn(address)) {
            m_addresses.push_back(address);
        }
    }
    m_wideAddresses = Widened(m_addresses);
    for (const std::wstring& entry : Widened(m_entries)) {
        m_matcher.Add(entry);
    }
}

Measured HostileSubjects::Matcher() {
    return OverAll(m_wideAddresses, m_wideAddresses.size(),
                   [&](const std::wstring& address) { return m_matcher.AnyOccursIn(address); });
}

Measured HostileSubjects::Automaton() {
    site_text::LowerCased lowerCased;
    return OverAll(m_wideAddresses, m_wideAddresses.size(), [&](const std::wstring& address) {
        return m_automaton->AnyOccursIn(lowerCased(address));
    });
}

SiteSubjects& SiteMeasurements::Of(std::size_t entries) {
    std::unique_ptr<SiteSubjects>& subjects = m_subjects[entries];
    if (!subjects) {
        subjects = std::make_unique<SiteSubjects>(entries);
    }
    return *subjects;
}

HostileSubjects& SiteMeasurements::Hostile() {
    if (!m_hostile) {
        m_hostile = std::make_unique<HostileSubjects>();
    }
    return *m_hostile;
}

Measured SiteMeasurements::Take(const std::string& name, std::size_t entries) {
    if (name == "hostile") {
        return Hostile().Matcher();
    }
    if (name == "hostile-automaton") {
        return Hostile().Automaton();
    }
    using Method = Measured (SiteSubjects::*)();
    static const std::map<std::string, Method> kMethods = {{"lower-case", &SiteSubjects::LowerCasePass},
                                                           {"matcher", &SiteSubjects::Matcher},
                                                           {"automaton", &SiteSubjects::Automaton},
                                                           {"naive", &SiteSubjects::NaiveLoop},
                                                           {"build", &SiteSubjects::Build},
                                                           {"add", &SiteSubjects::AddOneRow},
                                                           {"memory", &SiteSubjects::Memory}};
    const auto method = kMethods.find(name);
    if (method == kMethods.end()) {
        std::printf("There is no measurement \"%s\".\n", name.c_str());
        std::exit(2);
    }
    return (Of(entries).*method->second)();
}

}  // namespace kestrelguard::bench
