// Measures the site filter's matcher side by side with the plain loop, an automaton, RE2::Set and Hyperscan,
// and reports ratios. With --partner COMMAND the matcher's Windows build takes part, as a SiteServe that is
// started by the shell command. All competitors take turns, round by round.
//
//   SiteFilterBench [--quick] [--rounds N] [--entries N] [--report FILE] [--partner COMMAND]

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "Report.h"
#include "SitePeers.h"
#include "SiteSubjects.h"

namespace kestrelguard::bench {
namespace {

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

struct Subject {
    std::string name;
    std::function<Measured()> take;
    double goal = Report::kNoGoal;
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

/// Every measurement, natively and, where there is a partner, in the Windows build.
class Bench {
 public:
    Bench(const Options& options, Partner* partner)
        : m_rounds(options.RoundsOr(9, 3)), m_partner(partner), m_report(options) {}

    /// A goal of 0 is none.
    void Searching(std::size_t entries, double nativeGoal, double windowsGoal) {
        SiteSubjects& subjects = m_measurements.Of(entries);
        HyperscanPeer hyperscan(subjects.Entries());
        Re2Peer re2(subjects.Entries());
        const auto& addresses = subjects.Addresses();
        std::vector<Subject> all = {
            {"Hyperscan", [&] { return hyperscan.Scan(addresses); }},
            {"matcher, native", [&] { return subjects.Matcher(); }, nativeGoal},
            {"RE2::Set", [&] { return re2.Scan(addresses); }},
            {"automaton, native", [&] { return subjects.Automaton(); }},
            {"lower-case pass, native", [&] { return subjects.LowerCasePass(); }},
            {"plain loop, native", [&] { return subjects.NaiveLoop(); }},
        };
        if (m_partner != nullptr) {
            all.push_back(
                {"matcher, Windows", [=, this] { return m_partner->Take("matcher", entries); }, windowsGoal});
            for (const char* const name : {"automaton", "lower-case"}) {
                all.push_back(
                    {std::string(name) + ", Windows", [=, this] { return m_partner->Take(name, entries); }});
            }
        }
        const std::vector<Values> values = Rounds(m_rounds, all);
        for (std::size_t subject = 0; subject < all.size(); ++subject) {
            if (subject > 0) {
                m_report.Compare(
                    "an address among " + std::to_string(entries) + " sites: " + all[subject].name, "ns",
                    values[subject], "Hyperscan", values[0], all[subject].goal);
            }
            m_report.Point("sites", all[subject].name, static_cast<double>(entries), Median(values[subject]));
        }
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
        for (std::size_t subject = 1; subject < all.size(); subject += 2) {
            m_report.Compare(
                "an address of 2000 letters a and b among 10000 such sites: " + all[subject].name, "ns",
                values[subject], "the automaton alone", values[subject - 1], 3);
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
        // The compilation takes seconds.
        const std::vector<Values> values = Rounds(std::min<std::size_t>(m_rounds, 3), all);
        const std::string list = std::to_string(entries) + " sites: ";
        const auto milliseconds = [](Values nanoseconds) {
            for (double& value : nanoseconds) {
                value /= 1e6;
            }
            return nanoseconds;
        };
        for (std::size_t subject = 1; subject < all.size(); ++subject) {
            m_report.Compare("building the index of " + list + all[subject].name, "ms",
                             milliseconds(values[subject]), "Hyperscan's compilation",
                             milliseconds(values[0]), 0.01);
        }
        const auto weigh = [&](const char* name, double bytes) {
            constexpr double kMebibyte = 1 << 20;
            const double ratio = bytes / memory;
            m_report.Compare("memory of the index of " + list + name, "MiB", bytes / kMebibyte, "Hyperscan's",
                             memory / kMebibyte, 0.75, {ratio, ratio, ratio});
        };
        weigh("matcher, native", subjects.Memory().value);
        if (m_partner != nullptr) {
            weigh("matcher, Windows", m_partner->Take("memory", entries).value);
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
        const std::string what =
            "adding one site to " + std::to_string(many) + ", with cold caches: matcher, ";
        const std::string other = "adding it to " + std::to_string(few);
        m_report.Compare(what + "native", "ns", values[1], other, values[0], 3);
        if (m_partner != nullptr) {
            m_report.Compare(what + "Windows", "ns", values[3], other, values[2], 3);
        }
    }

 private:
    std::size_t m_rounds;
    Partner* m_partner;
    Report m_report;
    SiteMeasurements m_measurements;
};

}  // namespace
}  // namespace kestrelguard::bench

int main(int count, char** arguments) {
    using namespace kestrelguard::bench;
    const Options options(count, arguments);
    std::unique_ptr<Partner> partner;
    if (!options.partner.empty()) {
        partner = std::make_unique<Partner>(options.partner);
    }
    Bench bench(options, partner.get());
    struct Goal {
        std::size_t entries;
        double native;
        double windows;
    };
    for (const Goal& goal : {Goal{100, 0, 2.5}, Goal{10000, 0.85, 1.5}, Goal{100000, 0.85, 1.1}}) {
        if (options.entries == 0 || options.entries == goal.entries) {
            bench.Searching(goal.entries, goal.native, goal.windows);
        }
    }
    if (options.entries == 0) {
        bench.Hostile();
        bench.Building(100000);
        bench.Adding(100, 100000);
    }
    return 0;
}
