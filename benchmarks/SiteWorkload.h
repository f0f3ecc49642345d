#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

/// Generated block lists and addresses: the same on every platform and in every run.
namespace kestrelguard::bench {

class SiteWorkload {
 public:
    /// A list of different entries, 18 bytes on average: host names, some with a path; two in a hundred are
    /// short words of 4 to 7 letters.
    static std::vector<std::string> Entries(std::size_t count) {
        SiteWorkload make(count);
        std::set<std::string> seen;
        std::vector<std::string> entries;
        while (entries.size() < count) {
            std::string entry = make.Chance(2) ? make.ShortEntry() : make.LongEntry();
            if (seen.insert(entry).second) {
                entries.push_back(std::move(entry));
            }
        }
        return entries;
    }

    /// Addresses of 75 bytes on average, some letters of them capitals; one in twenty holds an entry.
    static std::vector<std::string> Addresses(std::size_t count, const std::vector<std::string>& entries) {
        SiteWorkload make(count + entries.size());
        std::vector<std::string> addresses;
        addresses.reserve(count);
        while (addresses.size() < count) {
            addresses.push_back(make.Address(make.Chance(5) ? entries[make.Below(entries.size())] : ""));
        }
        return addresses;
    }

    /// What is hard on an index by grams: texts of two letters, all alike.
    static std::vector<std::string> TwoLetterTexts(std::size_t count, std::size_t length) {
        SiteWorkload make(length);
        std::vector<std::string> texts;
        for (std::size_t text = 0; text < count; ++text) {
            texts.emplace_back();
            while (texts.back().size() < length) {
                texts.back() += make.Chance(50) ? 'a' : 'b';
            }
        }
        return texts;
    }

 private:
    explicit SiteWorkload(std::size_t seed) : m_random(static_cast<std::uint32_t>(seed)) {}

    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    bool Chance(std::size_t inHundred) { return Below(100) < inHundred; }
    template <std::size_t N>
    std::string OneOf(const std::array<const char*, N>& texts) {
        return texts[Below(N)];
    }

    /// Something that can be pronounced.
    std::string Word(std::size_t leastSyllables, std::size_t mostSyllables) {
        static constexpr std::array<const char*, 24> kBegins = {"b",  "c",  "d",  "f", "g",  "h",  "k", "l",
                                                                "m",  "n",  "p",  "r", "s",  "t",  "v", "w",
                                                                "st", "tr", "cl", "p", "sh", "ch", "",  "j"};
        static constexpr std::array<const char*, 8> kVowels = {"a", "e", "i", "o", "u", "ea", "oo", "y"};
        static constexpr std::array<const char*, 10> kEnds = {"", "", "", "n", "r", "s", "t", "l", "x", "ck"};
        std::string word;
        const std::size_t syllables = leastSyllables + Below(mostSyllables - leastSyllables + 1);
        for (std::size_t syllable = 0; syllable < syllables; ++syllable) {
            word += OneOf(kBegins) + OneOf(kVowels) + OneOf(kEnds);
        }
        return word;
    }

    std::string Host() {
        static constexpr std::array<const char*, 12> kFirst = {
            "www.", "www.", "www.", "", "", "ads.", "img.", "cdn.", "click.", "track.", "web1.", ""};
        static constexpr std::array<const char*, 10> kLast = {".com", ".com", ".com", ".com",   ".net",
                                                              ".org", ".de",  ".biz", ".co.uk", ".info"};
        std::string host = OneOf(kFirst) + Word(2, 4);
        if (Chance(8)) {
            host += '-' + Word(1, 3);
        }
        return host + OneOf(kLast);
    }

    std::string LongEntry() {
        std::string entry = Host();
        if (Chance(12)) {
            entry += '/' + Word(1, 3);
        }
        return entry.size() < 8 ? LongEntry() : entry;
    }

    std::string ShortEntry() {
        static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
        std::string entry;
        for (std::size_t left = 4 + Below(4); left > 0; --left) {
            entry += kLetters[Below(sizeof kLetters - 1)];
        }
        return entry;
    }

    std::string Address(const std::string& entry) {
        static constexpr std::array<const char*, 10> kFolders = {"images", "products", "index",   "articles",
                                                                 "news",   "archive",  "cgi-bin", "static",
                                                                 "forum",  "download"};
        static constexpr std::array<const char*, 8> kFiles = {".html", ".htm", ".gif", ".jpg",
                                                              ".php",  ".asp", "/",    ".css"};
        std::string address = "http://" + (entry.empty() ? Host() : entry);
        const std::size_t length = 26 + Below(54);
        while (address.size() < length) {
            address += '/' + (Chance(40) ? OneOf(kFolders) : Word(1, 4));
        }
        address += '/' + Word(1, 3) + OneOf(kFiles);
        if (Chance(30)) {
            address +=
                '?' + Word(1, 1) + "=" + std::to_string(Below(1000000)) + '&' + Word(1, 2) + '=' + Word(1, 3);
        }
        for (char& letter : address) {
            if (letter >= 'a' && letter <= 'z' && Chance(3)) {
                letter = static_cast<char>(letter - 'a' + 'A');
            }
        }
        return address;
    }

    std::mt19937 m_random;
};

}  // namespace kestrelguard::bench
