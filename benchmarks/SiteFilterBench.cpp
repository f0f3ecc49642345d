// Measures the site filter's matcher side by side with the plain loop, an automaton, RE2::Set and Hyperscan,
// and prints ratios. With --partner COMMAND the matcher's Windows build takes part, as a SiteServe that is
// started by the shell command. All competitors take turns, round by round; a ratio is the median over the
// rounds.
//
//   SiteFilterBench [--rounds N] [--entries N] [--partner COMMAND]

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "SitePeers.h"
#include "SiteSubjects.h"

namespace kestrelguard::bench {
namespace {

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "SiteFilterBench: %s\n", what.c_str());
    std::exit(1);
}

/// A SiteServe in another process.
class Partner {
 public:
    explicit Partner(const std::string& command) {
        int toPartner[2];
        int fromPartner[2];
        if (pipe(toPartner) != 0 || pipe(fromPartner) != 0) {
            Fail("no pipe");
        }
        m_process = fork();
        if (m_process == 0) {
            dup2(toPartner[0], 0);
            dup2(fromPartner[1], 1);
            for (const int end : {toPartner[0], toPartner[1], fromPartner[0], fromPartner[1]}) {
                close(end);
            }
            execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
            _exit(127);
        }
        close(toPartner[0]);
        close(fromPartner[1]);
        m_to = fdopen(toPartner[1], "w");
        m_from = fdopen(fromPartner[0], "r");
    }
    ~Partner() {
        std::fclose(m_to);
        std::fclose(m_from);
        waitpid(m_process, nullptr, 0);
    }
    Partner(const Partner&) = delete;
    Partner& operator=(const Partner&) = delete;

    Measured Take(const char* name, std::size_t entries) {
        Measured measured;
        std::fprintf(m_to, "%s %zu\n", name, entries);
        std::fflush(m_to);
        if (std::fscanf(m_from, "%lf %zu", &measured.value, &measured.blocked) != 2) {
            Fail(std::string("the partner does not answer to ") + name);
        }
        return measured;
    }

 private:
    pid_t m_process = -1;
    FILE* m_to = nullptr;
    FILE* m_from = nullptr;
};

/// The values of one subject, one for each round.
using Values = std::vector<double>;

double Median(Values values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

double Ratio(const Values& of, const Values& to) {
    Values ratios;
    for (std::size_t round = 0; round < of.size(); ++round) {
        ratios.push_back(of[round] / to[round]);
    }
    return Median(ratios);
}

/// Prints a ratio beside its goal.
void Print(const std::string& what, double ratio, double goal) {
    std::printf("  %-62s %8.4f   goal <= %-6g %s\n", what.c_str(), ratio, goal,
                ratio <= goal ? "met" : "MISSED");
}

struct Subject {
    std::string name;
    std::function<Measured()> take;
};

/// Runs all subjects in turn, so many times. Where subjects say how many addresses they blocked, all must
/// agree.
std::vector<Values> Rounds(std::size_t rounds, const std::vector<Subject>& subjects) {
    std::vector<Values> values(subjects.size());
    // The first round fills caches and is not counted.
    for (std::size_t round = 0; round <= rounds; ++round) {
        std::size_t blocked = 0;
        for (std::size_t subject = 0; subject < subjects.size(); ++subject) {
            const Measured measured = subjects[subject].take();
            if (blocked != 0 && measured.blocked != 0 && measured.blocked != blocked) {
                Fail(subjects[subject].name + " blocks another number of addresses");
            }
            blocked = measured.blocked != 0 ? measured.blocked : blocked;
            if (round > 0) {
                values[subject].push_back(measured.value);
            }
        }
    }
    return values;
}

/// Something that the Windows build answers when there is one.
class Bench {
 public:
    Bench(std::size_t rounds, Partner* partner) : m_rounds(rounds), m_partner(partner) {}

    void Searching(std::size_t entries, double nativeGoal, double windowsGoal) {
        SiteSubjects& subjects = m_measurements.Of(entries);
        HyperscanPeer hyperscan(subjects.Entries());
        Re2Peer re2(subjects.Entries());
        const auto& addresses = subjects.Addresses();
        std::vector<Subject> all = {
            {"Hyperscan", [&] { return hyperscan.Scan(addresses); }},
            {"matcher, native", [&] { return subjects.Matcher(); }},
            {"RE2::Set", [&] { return re2.Scan(addresses); }},
            {"automaton, native", [&] { return subjects.Automaton(); }},
            {"lower-case pass, native", [&] { return subjects.LowerCasePass(); }},
            {"plain loop, native", [&] { return subjects.NaiveLoop(); }},
        };
        if (m_partner != nullptr) {
            for (const char* const name : {"matcher", "automaton", "lower-case"}) {
                all.push_back(
                    {std::string(name) + ", Windows", [=, this] { return m_partner->Take(name, entries); }});
            }
        }
        const std::vector<Values> values = Rounds(m_rounds, all);
        std::printf("%zu entries, one address; times of Hyperscan\n", entries);
        for (std::size_t subject = 1; subject < all.size(); ++subject) {
            const double ratio = Ratio(values[subject], values[0]);
            if (all[subject].name == "matcher, native" && nativeGoal > 0) {
                Print(all[subject].name, ratio, nativeGoal);
            } else if (all[subject].name == "matcher, Windows") {
                Print(all[subject].name, ratio, windowsGoal);
            } else {
                std::printf("  %-62s %8.2f\n", all[subject].name.c_str(), ratio);
            }
        }
        std::printf("  (");
        for (std::size_t subject = 0; subject < all.size(); ++subject) {
            std::printf("%s%s %.0f", subject == 0 ? "" : ", ", all[subject].name.c_str(),
                        Median(values[subject]));
        }
        std::printf(" ns)\n");
    }

    void Hostile() {
        HostileSubjects& subjects = m_measurements.Hostile();
        std::vector<Subject> all = {{"automaton, native", [&] { return subjects.Automaton(); }},
                                    {"matcher, native", [&] { return subjects.Matcher(); }}};
        if (m_partner != nullptr) {
            all.push_back({"automaton, Windows", [this] { return m_partner->Take("hostile-automaton", 0); }});
            all.push_back({"matcher, Windows", [this] { return m_partner->Take("hostile", 0); }});
        }
        const std::vector<Values> values = Rounds(m_rounds, all);
        std::printf(
            "10000 entries of two letters, an address of 2000 of them; times of the automaton alone\n");
        for (std::size_t subject = 1; subject < all.size(); subject += 2) {
            Print(all[subject].name, Ratio(values[subject], values[subject - 1]), 3);
        }
    }

    void Building(std::size_t entries) {
        SiteSubjects& subjects = m_measurements.Of(entries);
        double memory = 0;
        std::vector<Subject> all = {{"Hyperscan",
                                     [&] {
                                         const HyperscanPeer hyperscan(subjects.Entries());
                                         memory = hyperscan.Memory().value;
                                         return hyperscan.Build();
                                     }},
                                    {"matcher, native", [&] { return subjects.Build(); }}};
        if (m_partner != nullptr) {
            all.push_back({"matcher, Windows", [=, this] { return m_partner->Take("build", entries); }});
        }
        const std::vector<Values> values = Rounds(std::min<std::size_t>(m_rounds, 3), all);
        std::printf("building the list of %zu entries; times of Hyperscan's compilation\n", entries);
        for (std::size_t subject = 1; subject < all.size(); ++subject) {
            Print(all[subject].name, Ratio(values[subject], values[0]), 0.01);
        }
        std::printf("memory of %zu entries; times of Hyperscan's (%.1f MiB)\n", entries, memory / (1 << 20));
        Print("matcher, native", subjects.Memory().value / memory, 0.75);
        if (m_partner != nullptr) {
            Print("matcher, Windows", m_partner->Take("memory", entries).value / memory, 0.75);
        }
    }

    void Adding(std::size_t few, std::size_t many) {
        std::vector<Subject> all = {{"few", [&] { return m_measurements.Take("add", few); }},
                                    {"many", [&] { return m_measurements.Take("add", many); }}};
        if (m_partner != nullptr) {
            all.push_back({"few", [=, this] { return m_partner->Take("add", few); }});
            all.push_back({"many", [=, this] { return m_partner->Take("add", many); }});
        }
        const std::vector<Values> values = Rounds(m_rounds, all);
        std::printf(
            "adding one row to %zu entries, as a user does, with cold caches; times of adding it to %zu\n",
            many, few);
        Print("matcher, native", Ratio(values[1], values[0]), 3);
        if (m_partner != nullptr) {
            Print("matcher, Windows", Ratio(values[3], values[2]), 3);
        }
    }

 private:
    std::size_t m_rounds;
    Partner* m_partner;
    SiteMeasurements m_measurements;
};

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    using namespace kestrelguard::bench;
    std::size_t rounds = 9;
    std::size_t only = 0;
    std::unique_ptr<Partner> partner;
    for (int at = 1; at + 1 < count; at += 2) {
        if (std::strcmp(arguments[at], "--rounds") == 0) {
            rounds = std::strtoul(arguments[at + 1], nullptr, 10);
        } else if (std::strcmp(arguments[at], "--entries") == 0) {
            only = std::strtoul(arguments[at + 1], nullptr, 10);
        } else if (std::strcmp(arguments[at], "--partner") == 0) {
            partner = std::make_unique<Partner>(arguments[at + 1]);
        } else {
            Fail(std::string("unknown option ") + arguments[at]);
        }
    }
    Bench bench(rounds, partner.get());
    struct Goal {
        std::size_t entries;
        double native;
        double windows;
    };
    for (const Goal& goal : {Goal{100, 0, 2.5}, Goal{10000, 0.85, 1.5}, Goal{100000, 0.85, 1.1}}) {
        if (only == 0 || only == goal.entries) {
            bench.Searching(goal.entries, goal.native, goal.windows);
        }
    }
    if (only == 0) {
        bench.Hostile();
        bench.Building(100000);
        bench.Adding(100, 100000);
    }
    return 0;
}
