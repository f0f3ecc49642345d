#include "SitePeers.h"

#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "Report.h"

namespace kestrelguard::bench {
namespace {

void Expect(bool holds, const char* what) {
    if (!holds) {
        std::printf("%s failed\n", what);
        std::exit(1);
    }
}

template <class Blocks>
Measured OverAll(const std::vector<std::string>& addresses, const Blocks& blocks) {
    std::size_t blocked = 0;
    const std::uint64_t begin = Nanoseconds();
    for (const std::string& address : addresses) {
        blocked += blocks(address) ? 1 : 0;
    }
    const std::uint64_t end = Nanoseconds();
    Use(blocked);
    return {static_cast<double>(end - begin) / static_cast<double>(addresses.size()), blocked};
}

}  // namespace

NarrowLowerCase::NarrowLowerCase() {
    for (int code = 0; code < 256; ++code) {
        m_table[code] = static_cast<char>(code >= 'A' && code <= 'Z' ? code + ('a' - 'A') : code);
    }
}

const std::string& NarrowLowerCase::operator()(const std::string& text) {
    m_text.resize(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        m_text[at] = m_table[static_cast<unsigned char>(text[at])];
    }
    return m_text;
}

HyperscanPeer::HyperscanPeer(const std::vector<std::string>& entries) {
    std::vector<const char*> texts;
    std::vector<std::size_t> lengths;
    // No flags: what would report each entry once at most costs a little, and the scan ends with the first
    // match.
    std::vector<unsigned> flags(entries.size(), 0);
    // All different: equal ones make the compilation take minutes and many gigabytes.
    std::vector<unsigned> ids(entries.size());
    std::iota(ids.begin(), ids.end(), 0U);
    for (const std::string& entry : entries) {
        texts.push_back(entry.data());
        lengths.push_back(entry.size());
    }
    const std::uint64_t begin = Nanoseconds();
    hs_compile_error_t* error = nullptr;
    Expect(hs_compile_lit_multi(texts.data(), flags.data(), ids.data(), lengths.data(),
                                static_cast<unsigned>(texts.size()), HS_MODE_BLOCK, nullptr, &m_database,
                                &error) == HS_SUCCESS,
           "hs_compile_lit_multi");
    m_buildTime = static_cast<double>(Nanoseconds() - begin);
    Expect(hs_alloc_scratch(m_database, &m_scratch) == HS_SUCCESS, "hs_alloc_scratch");
}

HyperscanPeer::~HyperscanPeer() {
    hs_free_scratch(m_scratch);
    hs_free_database(m_database);
}

Measured HyperscanPeer::Scan(const std::vector<std::string>& addresses) {
    const auto stop = [](unsigned, unsigned long long, unsigned long long, unsigned, void*) { return 1; };
    return OverAll(addresses, [&](const std::string& address) {
        const std::string& lower = m_lowerCase(address);
        return hs_scan(m_database, lower.data(), static_cast<unsigned>(lower.size()), 0, m_scratch, stop,
                       nullptr) == HS_SCAN_TERMINATED;
    });
}

Measured HyperscanPeer::Memory() const {
    std::size_t database = 0;
    std::size_t scratch = 0;
    Expect(hs_database_size(m_database, &database) == HS_SUCCESS, "hs_database_size");
    Expect(hs_scratch_size(m_scratch, &scratch) == HS_SUCCESS, "hs_scratch_size");
    return {static_cast<double>(database + scratch)};
}

Re2Peer::Re2Peer(const std::vector<std::string>& entries) {
    RE2::Options options;
    options.set_literal(true);
    options.set_encoding(RE2::Options::EncodingLatin1);
    options.set_max_mem(std::int64_t{1} << 30);
    const std::uint64_t begin = Nanoseconds();
    m_set = std::make_unique<RE2::Set>(options, RE2::UNANCHORED);
    for (const std::string& entry : entries) {
        Expect(m_set->Add(entry, nullptr) >= 0, "RE2::Set::Add");
    }
    Expect(m_set->Compile(), "RE2::Set::Compile");
    m_buildTime = static_cast<double>(Nanoseconds() - begin);
}

Measured Re2Peer::Scan(const std::vector<std::string>& addresses) {
    return OverAll(addresses,
                   [&](const std::string& address) { return m_set->Match(m_lowerCase(address), nullptr); });
}

}  // namespace kestrelguard::bench
