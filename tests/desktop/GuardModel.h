#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
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
    bool hasFile = false;
    std::set<std::string> keywordSet;
    bool keywordsEdited = false;
    bool apply = false;
    bool icon = false;  ///< whether the window is minimised
    long today = 0;
    std::string labelToday;
    std::string labelTotal;
    std::vector<Node> nodes;

    // The automatic wash.
    long washMinutes = 60;
    long washTicks = 0;
    bool timer = false;
    // What the browser has left behind. One cookie is always there: it is saved.
    bool page = false;
    bool cookie = false;
    bool visited = false;

    // The icon's tip: what the next message of the icon would send, and what one has sent last.
    std::string tip;
    std::string sentTip;

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
    void Write() {
        stored = now;
        hasFile = true;
    }
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
        // Kept: rounded before it is multiplied.
        const bool numeric = IsNumber(stored.interval);
        now.interval = numeric ? stored.interval : "60";
        now.unit = stored.unit;
        washMinutes = std::lrint(NumberIn(now.interval)) * MinutesOf(now.unit);
        now.uses = stored.uses + 1;
        now.total = stored.total;
    }

    // --- what a user does

    /// A start in a folder with the stored settings, if there are any.
    void Start() {
        now = {};
        keywordSet.clear();
        keywordsEdited = false;
        today = 0;
        washMinutes = 60;
        washTicks = 0;
        sentTip.clear();
        if (hasFile) {
            Read();
        } else {
            Write();
        }
        icon = now.minimised;
        apply = false;
        timer = now.boxes[5];
        tip = TipText();
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
        timer = now.boxes[5];
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
        tip = TipText();
    }

    // --- the icon

    std::string TipText() const {
        const std::string start = " Kestrelguard v2 - ";
        return now.mode == 0   ? start + "Preventing Popups: " + std::to_string(today)
               : now.mode == 1 ? start + "Prompting for Popups: " + std::to_string(today)
                               : start + "Allowing Popups.";
    }
    /// The pointer moves over the icon.
    void PointAtIcon() {
        // Kept: a tip that has been sent stays, even where the mode has been changed on the settings page.
        if (icon && tip != sentTip) {
            tip = now.mode == 0 ? tip : TipText();
            sentTip = tip;
        }
    }
    void PreventOrAllow() {
        now.mode = now.mode == 0 ? 2 : 0;
        tip = TipText();
    }

    // --- the automatic wash

    static bool IsNumber(const std::string& text) {
        return !text.empty() && text.find_first_not_of("0123456789.") == std::string::npos;
    }
    static double NumberIn(const std::string& text) { return std::strtod(text.c_str(), nullptr); }
    static long MinutesOf(char unit) { return unit == 'D' ? 1440 : unit == 'H' ? 60 : 1; }

    void UpdateWash() {
        washMinutes = std::lrint(NumberIn(now.interval) * static_cast<double>(MinutesOf(now.unit)));
        apply = true;
    }
    void TypeInterval(const std::string& text) {
        now.interval = text;
        // Kept: compared with the minutes, whatever the unit.
        if (IsNumber(text) && NumberIn(text) != static_cast<double>(washMinutes)) {
            UpdateWash();
        }
    }
    void ChooseUnit(char unit) {
        now.unit = unit;
        UpdateWash();
    }
    /// A minute passes.
    void Tick() {
        if (!timer || ++washTicks < washMinutes) {
            return;
        }
        washTicks = 0;
        timer = now.boxes[5];
        if (timer) {
            page = page && !now.boxes[2];
            visited = visited && !now.boxes[3];
            cookie = cookie && !now.boxes[4];
        }
    }
    std::string Traces() const {
        return std::string(page ? "page " : "") + (cookie ? "cookie " : "") + "saved" +
               (visited ? " history" : "");
    }
};

}  // namespace kestrelguard::testing
