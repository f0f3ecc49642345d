#pragma once

#include <hs/hs.h>
#include <re2/set.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "SiteSubjects.h"

namespace kestrelguard::bench {

/// The libraries that we measure ourselves against, on the same lists and addresses. Native builds only.

/// A buffer that an address is lower-cased into, in the way that is natural for narrow text.
class NarrowLowerCase {
 public:
    NarrowLowerCase();
    const std::string& operator()(const std::string& text);

 private:
    char m_table[256];
    std::string m_text;
};

/// Hyperscan's interface for literal texts; a scan ends with the first match.
class HyperscanPeer {
 public:
    explicit HyperscanPeer(const std::vector<std::string>& entries);
    ~HyperscanPeer();
    HyperscanPeer(const HyperscanPeer&) = delete;
    HyperscanPeer& operator=(const HyperscanPeer&) = delete;

    Measured Scan(const std::vector<std::string>& addresses);
    Measured Build() const { return {m_buildTime}; }
    Measured Memory() const;

 private:
    hs_database_t* m_database = nullptr;
    hs_scratch_t* m_scratch = nullptr;
    double m_buildTime = 0;
    NarrowLowerCase m_lowerCase;
};

/// RE2's set of expressions, each a literal text.
class Re2Peer {
 public:
    explicit Re2Peer(const std::vector<std::string>& entries);

    Measured Scan(const std::vector<std::string>& addresses);
    Measured Build() const { return {m_buildTime}; }

 private:
    std::unique_ptr<RE2::Set> m_set;
    double m_buildTime = 0;
    NarrowLowerCase m_lowerCase;
};

}  // namespace kestrelguard::bench
