#pragma once

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

namespace kestrelguard::testing {

/// What the program is bound to show and to write, for a random walk: small, slow and obvious. All texts are
/// ASCII and lower-cased but for the captions.
struct GuardModel {
    /// One browser's nodes in the tree.
    struct Node {
        int window = 0;
        bool atRebuild = false;  ///< made by a rebuild of the tree, not by an announcement
        std::wstring title;
        std::wstring url;
    };

    // What the settings file holds.
    struct Settings {
        int mode = 0;
        bool minimised = false;
        std::array<bool, 6> boxes{};  ///< sites, titles, cache, history, cookies, automatic
        std::vector<std::string> rows;
        std::string keywords = "xxx -porn -sex";
        std::string interval = "60";
        char unit = 'M';
        long uses = 0;
        long total = 0;
    };

    Settings now;
    Settings stored;
    std::set<std::string> keywordSet;
    bool keywordsEdited = false;
    bool apply = false;
    bool icon = false;  ///< whether the window is minimised
    long today = 0;
    std::string labelToday;
    std::string labelTotal;
    std::vector<Node> nodes;

    static std::vector<std::string> Split(const std::string& text) {
        std::vector<std::string> pieces(1);
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text.compare(i, 2, " -") == 0) {
                pieces.emplace_back();
                ++i;
            } else {
                pieces.back() += text[i];
            }
        }
        return pieces;
    }

    // --- the settings file

    std::string File() const {
        std::string rows;
        for (const std::string& row : stored.rows) {
            rows += row + " -";
        }
        const auto yes = [](bool on) { return on ? "y" : "n"; };
        return "PT1/:/:" + std::to_string(stored.mode) + "\r\nMIN/:/:" + yes(stored.minimised) +
               "\r\nSS1/:/:" + yes(stored.boxes[0]) + "/:/:" + rows + "\r\nSS2/:/:" + yes(stored.boxes[1]) +
               "/:/:" + stored.keywords + "\r\nPP1/:/:" + yes(stored.boxes[2]) +
               "\r\nPP2/:/:" + yes(stored.boxes[3]) + "\r\nPP3/:/:" + yes(stored.boxes[4]) +
               "\r\nPP4/:/:" + yes(stored.boxes[5]) + "/:/:" + stored.interval + "/:/:" + stored.unit +
               "\r\nUSE/:/:" + std::to_string(stored.uses) + "\r\nPST/:/:" + std::to_string(stored.total) +
               "\r\n";
    }
    void Write() { stored = now; }
    /// Only ever checks boxes and adds rows and keywords.
    void Read() {
        now.mode = stored.mode;
        now.minimised = now.minimised || stored.minimised;
        for (std::size_t i = 0; i < now.boxes.size(); ++i) {
            now.boxes[i] = now.boxes[i] || stored.boxes[i];
        }
        if (!stored.rows.empty()) {
            now.rows.insert(now.rows.end(), stored.rows.begin(), stored.rows.end());
            now.rows.emplace_back();  // the piece after the last " -"
        }
        const std::vector<std::string> pieces = Split(stored.keywords);
        if (pieces.size() >= 2) {
            now.keywords = stored.keywords;
            keywordSet.insert(pieces.begin(), pieces.end());
        }
        now.interval = stored.interval;
        now.unit = stored.unit;
        now.uses = stored.uses + 1;
        now.total = stored.total;
    }

    // --- what a user does

    /// A start in a folder with the stored settings; none have been stored before the first one.
    void Start(bool first) {
        now = {};
        keywordSet.clear();
        keywordsEdited = false;
        today = 0;
        if (first) {
            Write();
        } else {
            Read();
        }
        icon = now.minimised;
        apply = false;
        ShowCounters();
        Rebuild();
    }
    void Apply() {
        if (keywordsEdited) {
            const std::vector<std::string> pieces = Split(now.keywords);
            keywordSet = std::set<std::string>(pieces.begin(), pieces.end());
            keywordSet.erase("");
            keywordsEdited = false;
        }
        Write();
        apply = false;
    }
    void Cancel() {
        if (apply) {
            apply = false;
            Read();
        }
        icon = true;
    }
    void ShowCounters() {
        labelToday = std::to_string(today);
        labelTotal = std::to_string(now.total);
    }
    void Rebuild() {
        for (Node& node : nodes) {
            node.atRebuild = true;
        }
    }

    // --- what a browser does

    /// Whether the site filter stops the address.
    bool Stops(const std::string& url) const {
        return now.boxes[0] && std::any_of(now.rows.begin(), now.rows.end(), [&](const std::string& row) {
                   return url.find(row) != std::string::npos;
               });
    }
    /// The keyword that bans the title; none when it is empty.
    std::string Bans(const std::string& title) const {
        if (now.boxes[1] && !now.keywords.empty()) {
            for (const std::string& keyword : keywordSet) {
                if (title.find(keyword) != std::string::npos) {
                    return keyword;
                }
            }
        }
        return {};
    }
    /// A new window in prevent mode, no key held.
    void Stopped() {
        ++now.total;
        ++today;
        ShowCounters();
    }
};

}  // namespace kestrelguard::testing
