#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "runtime/FirstFailure.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// The program from its first step to its last: one way in and one way out, whatever comes between.
///
/// Any step may let messages in, and with them a wish to close or the end of the Windows session. During the
/// start a wish waits for the step at hand; during the end a second wish is none. The end of the session
/// waits for nothing and does at once what is left to do: the process may be gone when it returns.
class ProgramLife {
 public:
    using Steps = std::vector<std::function<void()>>;
    struct Parts {
        /// Done in order; the first failure ends the start.
        Steps start;
        /// The start is over: shows the program.
        std::function<void()> show = [] {};
        /// Done in order, each whatever another one throws, and each once.
        Steps end;
        /// Tells the user of the first failure of the end.
        std::function<void(const RunTimeError&)> tell;
        /// The last thing of all: the main window goes.
        std::function<void()> leave;
    };

    explicit ProgramLife(Parts parts) : m_parts(std::move(parts)) {}

    /// Throws what a step throws, unless the program has been told to end meanwhile.
    void Start();
    /// The start is over and the end has not begun: handlers may act.
    bool Running() const noexcept { return m_phase == Phase::Running; }
    /// Whether the program lives: it starts or runs, and its end has not begun.
    bool Alive() const noexcept { return m_phase == Phase::Starting || m_phase == Phase::Running; }
    /// A step does not come back: one of the start is left behind, and what comes after it is done now. What
    /// fails then is told and ends the program.
    void GoOn();
    /// The user, or another program, wants the program to end.
    void Close();
    /// The Windows session ends. Nobody is told of failures.
    void EndSession();

 private:
    enum class Phase { New, Starting, Running, Ending, Over };

    void DoStartSteps();
    void Tell(const FirstFailure& failure);
    void End(bool tellFailure);

    Parts m_parts;
    Phase m_phase = Phase::New;
    bool m_closeWanted = false;
    /// The steps of the start and of the end that come next.
    std::size_t m_nextOfStart = 0;
    std::size_t m_next = 0;
};

}  // namespace kestrelguard
