#include "desktop/Watch.h"

#include <utility>

namespace kestrelguard::desktop {

Faults& Faults::Here() {
    static Faults faults;
    return faults;
}

void Faults::Arm(int position, Fault fault) {
    const Hold hold(m_lock);
    m_armed = true;
    m_position = position;
    m_fault = std::move(fault);
    m_calls.clear();
}

void Faults::Disarm() {
    Fault dropped;
    const Hold hold(m_lock);
    m_armed = false;
    dropped = std::exchange(m_fault, {});
}

std::vector<std::string> Faults::Calls() const {
    const Hold hold(m_lock);
    return m_calls;
}

Fault Faults::Meet(const char* name) {
    const Hold hold(m_lock);
    if (!m_armed) {
        return {};
    }
    m_calls.emplace_back(name);
    return static_cast<int>(m_calls.size()) == m_position + 1 ? m_fault : Fault();
}

int Watch::Calls() const {
    const Hold hold(m_lock);
    return m_calls;
}

void Watch::ResetCalls() {
    const Hold hold(m_lock);
    m_calls = 0;
}

void Watch::Fail(HRESULT hr, int times) {
    const Hold hold(m_lock);
    m_failure = hr;
    m_failures = times;
}

void Watch::Before(Task task, int times) {
    const Hold hold(m_lock);
    m_before = std::move(task);
    m_beforeTimes = times;
}

void Watch::Stall() {
    const Hold hold(m_lock);
    m_stalls = true;
    m_gate.Close();
}

void Watch::LetGo() {
    const Hold hold(m_lock);
    m_stalls = false;
    m_gate.Open();
}

bool Watch::Stalls() const {
    const Hold hold(m_lock);
    return m_stalls;
}

HRESULT Watch::Enter(Callee& callee) {
    Task before;
    {
        const Hold hold(m_lock);
        ++m_calls;
        if (m_beforeTimes > 0) {
            --m_beforeTimes;
            before = m_before;
        }
    }
    if (before) {
        before();
    }
    m_gate.Pass();
    const Fault fault = Faults::Here().Meet(m_name);
    if (fault.before) {
        fault.before();
    }
    if (fault.disconnects) {
        callee.Disconnect();
    }
    if (FAILED(fault.answer)) {
        return fault.answer;
    }
    const Hold hold(m_lock);
    if (m_failures == 0) {
        return S_OK;
    }
    m_failures -= m_failures > 0 ? 1 : 0;
    return m_failure;
}

}  // namespace kestrelguard::desktop
