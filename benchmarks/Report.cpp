#include "Report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <chrono>
#endif

namespace kestrelguard::bench {
namespace {

/// A line of the file; its fields are separated by tabs.
void Append(const std::string& file, const std::string& line) {
    if (file.empty()) {
        return;
    }
    FILE* const out = std::fopen(file.c_str(), "ab");
    if (out == nullptr) {
        Fail("cannot write " + file);
    }
    std::fputs((line + "\n").c_str(), out);
    std::fclose(out);
}

std::string Number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

/// Three digits that count, or all before the point.
std::string Short(double value) {
    char text[40];
    std::snprintf(text, sizeof text, value >= 100 ? "%.0f" : value >= 10 ? "%.1f" : "%.2f", value);
    return text;
}

}  // namespace

std::uint64_t Nanoseconds() {
#ifdef _WIN32
    LARGE_INTEGER ticks;
    LARGE_INTEGER perSecond;
    QueryPerformanceCounter(&ticks);
    QueryPerformanceFrequency(&perSecond);
    return static_cast<std::uint64_t>(static_cast<double>(ticks.QuadPart) * 1e9 /
                                      static_cast<double>(perSecond.QuadPart));
#else
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
#endif
}

double Milliseconds(const std::function<void()>& run) {
    const std::uint64_t begin = Nanoseconds();
    run();
    return static_cast<double>(Nanoseconds() - begin) / 1e6;
}

void Use(std::size_t value) {
    volatile std::size_t used = value;
    static_cast<void>(used);
}

double Median(Values values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

Spread RatioOf(const Values& of, const Values& to) {
    Values ratios;
    for (std::size_t round = 0; round < of.size(); ++round) {
        ratios.push_back(of[round] / to[round]);
    }
    std::sort(ratios.begin(), ratios.end());
    const std::size_t last = ratios.size() - 1;
    return {ratios[last / 4], ratios[ratios.size() / 2], ratios[last - last / 4]};
}

std::vector<Values> Turns(std::size_t rounds, const std::vector<std::function<double()>>& competitors,
                          FirstTurn first) {
    std::vector<Values> values(competitors.size());
    for (std::size_t round = first == FirstTurn::Counted ? 1 : 0; round <= rounds; ++round) {
        for (std::size_t turn = 0; turn < competitors.size(); ++turn) {
            const std::size_t competitor = (turn + round) % competitors.size();
            const double value = competitors[competitor]();
            if (round > 0) {
                values[competitor].push_back(value);
            }
        }
    }
    return values;
}

Options::Options(int count, char** arguments) {
    for (int at = 1; at < count; ++at) {
        const std::string option = arguments[at];
        const bool more = at + 1 < count;
        if (option == "--quick") {
            quick = true;
        } else if (option == "--rounds" && more) {
            rounds = std::strtoul(arguments[++at], nullptr, 10);
        } else if (option == "--entries" && more) {
            entries = std::strtoul(arguments[++at], nullptr, 10);
        } else if (option == "--report" && more) {
            report = arguments[++at];
        } else if (option == "--partner" && more) {
            partner = arguments[++at];
        } else {
            Fail("unknown option " + option);
        }
    }
}

void Fail(const std::string& what) {
    std::fprintf(stderr, "bench: %s\n", what.c_str());
    std::exit(2);
}

void Report::Compare(const std::string& what, const std::string& unit, const Values& ours,
                     const std::string& other, const Values& others, double goal) {
    Compare(what, unit, Median(ours), other, Median(others), goal, RatioOf(ours, others));
}

void Report::Compare(const std::string& what, const std::string& unit, double ours, const std::string& other,
                     double others, double goal, Spread ratio) {
    const bool met = ratio.middle <= goal;
    std::printf("%s\n    %s %s, %s %s %s: %.4g (%.4g to %.4g)", what.c_str(), Short(ours).c_str(),
                unit.c_str(), other.c_str(), Short(others).c_str(), unit.c_str(), ratio.middle, ratio.low,
                ratio.high);
    if (goal != kNoGoal) {
        std::printf(", goal <= %g %s", goal, met ? "met" : "MISSED");
    }
    std::printf("\n");
    std::fflush(stdout);
    Append(m_file, "row\t" + what + "\t" + Short(ours) + "\t" + unit + "\t" + other + "\t" + Short(others) +
                       "\t" + Number(ratio.low) + "\t" + Number(ratio.middle) + "\t" + Number(ratio.high) +
                       "\t" + (goal == kNoGoal ? "" : Number(goal)));
}

void Report::Limit(const std::string& what, const std::string& unit, double ours, const std::string& limit,
                   double most) {
    const double ratio = ours / most;
    Compare(what, unit, ours, limit, most, 1, {ratio, ratio, ratio});
}

void Report::Point(const std::string& plot, const std::string& curve, double x, double y) {
    Append(m_file, "point\t" + plot + "\t" + curve + "\t" + Number(x) + "\t" + Number(y));
}

}  // namespace kestrelguard::bench
