#include "app/ProgramLife.h"

#include "runtime/Edge.h"

namespace kestrelguard {

void ProgramLife::Start() {
    m_phase = Phase::Starting;
    try {
        DoStartSteps();
    } catch (...) {
        if (m_phase == Phase::Starting && !m_closeWanted) {
            m_phase = Phase::Over;
            throw;
        }
    }
    if (m_phase != Phase::Starting) {
        return;  // the session has ended, or the step that was at hand was left behind
    }
    m_phase = Phase::Running;
    if (m_closeWanted) {
        End(true);
    } else {
        m_parts.show();
    }
}

void ProgramLife::GoOn() {
    if (m_phase != Phase::Starting) {
        return;
    }
    FirstFailure failure;
    failure.Try([this] { Start(); });
    if (failure.Any()) {
        Tell(failure);
        m_phase = Phase::Over;
        m_parts.leave();
    }
}

void ProgramLife::DoStartSteps() {
    while (m_phase == Phase::Starting && !m_closeWanted && m_nextOfStart < m_parts.start.size()) {
        m_parts.start[m_nextOfStart++]();
    }
}

void ProgramLife::Close() {
    if (m_phase == Phase::Running) {
        End(true);
    } else {
        m_closeWanted = true;
    }
}

void ProgramLife::EndSession() {
    if (m_phase == Phase::New) {
        m_closeWanted = true;  // there is nothing to lose yet, and nothing that could be ended
    } else if (m_phase == Phase::Over) {
        m_parts.leave();  // a failed start, whose box is still open
    } else {
        End(false);
    }
}

void ProgramLife::Tell(const FirstFailure& failure) {
    AtEdge([&] { failure.Rethrow(); }, m_parts.tell);
}

void ProgramLife::End(bool tellFailure) {
    m_phase = Phase::Ending;
    FirstFailure failure;
    while (m_next < m_parts.end.size()) {
        failure.Try(m_parts.end[m_next++]);
    }
    if (tellFailure && m_phase == Phase::Ending) {
        Tell(failure);
    }
    if (m_phase == Phase::Ending) {
        m_phase = Phase::Over;
        m_parts.leave();
    }
}

}  // namespace kestrelguard
