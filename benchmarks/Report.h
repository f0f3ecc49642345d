#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// What all benchmarks share: turns, ratios, and the rows that the script at the top gathers into one table.
namespace kestrelguard::bench {

/// A clock that only goes forward, in nanoseconds.
std::uint64_t Nanoseconds();

/// Runs something and answers the milliseconds.
double Milliseconds(const std::function<void()>& run);

/// Keeps the compiler from leaving out what is only measured.
void Use(std::size_t value);

/// The values of one competitor, one for each round.
using Values = std::vector<double>;

double Median(Values values);

/// Ratios round by round: the quartiles and what lies in the middle.
struct Spread {
    double low = 0;
    double middle = 0;
    double high = 0;
};
Spread RatioOf(const Values& of, const Values& to);

enum class FirstTurn { NotCounted, Counted };
/// Runs all competitors in turn, so many times, after one turn that is not counted: what takes many seconds
/// does without that one. Nobody always comes first.
std::vector<Values> Turns(std::size_t rounds, const std::vector<std::function<double()>>& competitors,
                          FirstTurn first = FirstTurn::NotCounted);

/// What every benchmark takes from its command line. An unknown option ends the program.
struct Options {
    Options(int count, char** arguments);

    std::size_t rounds = 0;  ///< 0: the benchmark's own number
    std::size_t entries = 0;
    bool quick = false;   ///< the short form: sizes and rounds that show what is wrong, not by how much
    std::string report;   ///< the file that rows and points are appended to
    std::string partner;  ///< how to start the other half

    std::size_t RoundsOr(std::size_t usual, std::size_t inShort) const {
        return rounds != 0 ? rounds : quick ? inShort : usual;
    }
};

[[noreturn]] void Fail(const std::string& what);

/// Prints what was measured and, when there is a file, adds it to the rows of the other benchmarks.
class Report {
 public:
    explicit Report(const Options& options) : m_file(options.report) {}

    static constexpr double kNoGoal = 0;

    /// Ours beside the other, round by round, in the same unit. The goal is the highest ratio.
    void Compare(const std::string& what, const std::string& unit, const Values& ours,
                 const std::string& other, const Values& others, double goal = kNoGoal);
    /// The same when there is one value of each. With a spread where the ratio is one of medians.
    void Compare(const std::string& what, const std::string& unit, double ours, const std::string& other,
                 double others, double goal, Spread ratio);
    /// Something that is counted or weighed and must not pass a limit.
    void Limit(const std::string& what, const std::string& unit, double ours, const std::string& limit,
               double most);
    /// One point of a plot's curve.
    void Point(const std::string& plot, const std::string& curve, double x, double y);

 private:
    std::string m_file;
};

}  // namespace kestrelguard::bench
