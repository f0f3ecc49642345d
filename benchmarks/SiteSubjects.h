#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "blocking/matcher/SiteAutomaton.h"
#include "blocking/matcher/SiteMatcher.h"

namespace kestrelguard::bench {

/// What a measurement gives: nanoseconds for one address, row or list, or bytes; and how many addresses the
/// subject blocked, where it looked at any.
struct Measured {
    double value = 0;
    std::size_t blocked = 0;
};

/// A list of entries with addresses, and what is measured on them. Everything is made when first needed.
class SiteSubjects {
 public:
    static constexpr std::size_t kAddresses = 100000;

    explicit SiteSubjects(std::size_t entries);
    virtual ~SiteSubjects() = default;
    SiteSubjects(const SiteSubjects&) = delete;
    SiteSubjects& operator=(const SiteSubjects&) = delete;

    Measured LowerCasePass();
    Measured Matcher();
    Measured Automaton();
    /// The plain definition over the same rows, on as many addresses as take a fraction of a second.
    /// Ends the program when the matcher says otherwise of any of them.
    Measured NaiveLoop();
    Measured Build();
    Measured AddOneRow();
    Measured Memory();

    const std::vector<std::string>& Entries() const { return m_entries; }
    const std::vector<std::string>& Addresses() const { return m_addresses; }

 private:
    SiteMatcher& Filled();

    std::vector<std::string> m_entries;
    std::vector<std::string> m_addresses;
    std::vector<std::wstring> m_wideEntries;
    std::vector<std::wstring> m_wideAddresses;
    std::unique_ptr<SiteMatcher> m_matcher;
    std::unique_ptr<SiteAutomaton> m_automaton;
    std::size_t m_addRounds = 0;
};

/// 10,000 entries of 24 letters, all of them a or b, and addresses of 2,000 of the same letters which hold
/// none of the entries.
class HostileSubjects {
 public:
    HostileSubjects();
    Measured Matcher();
    Measured Automaton();

    const std::vector<std::string>& Entries() const { return m_entries; }
    const std::vector<std::string>& Addresses() const { return m_addresses; }

 private:
    std::vector<std::string> m_entries;
    std::vector<std::string> m_addresses;
    std::vector<std::wstring> m_wideAddresses;
    SiteMatcher m_matcher;
    std::unique_ptr<SiteAutomaton> m_automaton;
};

/// The measurements by name ("matcher", "naive", ...) for a list of so many entries. The lists are kept.
class SiteMeasurements {
 public:
    /// Ends the program for a name that there is not.
    Measured Take(const std::string& name, std::size_t entries);

    SiteSubjects& Of(std::size_t entries);
    HostileSubjects& Hostile();

 private:
    std::map<std::size_t, std::unique_ptr<SiteSubjects>> m_subjects;
    std::unique_ptr<HostileSubjects> m_hostile;
};

}  // namespace kestrelguard::bench
