#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "monitoring/WatchedDesktop.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/RunTimeError.h"

/// A desktop in memory on which anything may happen in the middle of any call.
namespace kestrelguard::fakes {

/// What a window is, apart from who refers to it.
struct WindowState {
    int number = 0;
    std::int32_t handle = 0;
    bool listed = true;
    /// Every call fails from now on.
    bool dead = false;
    /// Every call would wait for ever.
    bool hung = false;
    /// Calls that were made all the same.
    int waits = 0;
    /// The call after so many hangs, and is cut off; negative for none.
    int hangsAfter = -1;
    /// The call after so many does not come back until `whileStalled` has; negative for none.
    int stallsAfter = -1;
    /// So many of its next calls fail.
    int failures = 0;
    int sinks = 0;
    int references = 0;
    int handleReads = 0;
    int listens = 0;
    /// Opened when somebody was to be told.
    bool came = false;
    int created = 0;
};

/// How an announcement reaches two connections that both listen.
struct Delivery {
    bool newestFirst = false;
    /// The second connection is told at the next call that somebody makes.
    bool secondLater = false;
};

class Desktop final : public WatchedDesktop {
 public:
    /// Runs at every place where a call lets others in; the places are counted from 0.
    std::function<void(int place)> inCall;
    int places = 0;
    /// Runs while a call stalls; the window hangs meanwhile.
    std::function<void(WindowState&)> whileStalled;
    Delivery delivery;
    /// So many of the next calls to the shell fail.
    int shellFailures = 0;
    /// Objects that are no browsers, and empty entries: places in the list.
    std::set<int> strangers;
    std::set<int> empties;
    int connections = 0;
    int connects = 0;
    /// Announcements that came back as failed calls.
    int failedAnnouncements = 0;
    /// Windows and sinks that are kept because letting go would wait for ever.
    std::vector<std::pair<DesktopWindowPtr, std::shared_ptr<WindowSink>>> parked;
    /// Who wants to be reminded of a window that did not answer.
    std::shared_ptr<ShellListener> reminded;

    std::shared_ptr<WindowState> Add(std::int32_t handle) {
        m_windows.push_back(std::make_shared<WindowState>());
        m_windows.back()->number = static_cast<int>(m_windows.size());
        m_windows.back()->handle = handle;
        return m_windows.back();
    }
    const std::vector<std::shared_ptr<WindowState>>& Windows() const { return m_windows; }
    std::vector<std::shared_ptr<WindowState>> Listed() const {
        std::vector<std::shared_ptr<WindowState>> listed;
        std::copy_if(m_windows.begin(), m_windows.end(), std::back_inserter(listed),
                     [](const auto& window) { return window->listed; });
        return listed;
    }

    void Registered() {
        Announce([](ShellListener& listener) { listener.WindowRegistered(); });
    }
    void Revoked() {
        Announce([](ShellListener& listener) { listener.WindowRevoked(); });
    }
    /// What was held back reaches the connections that are still there.
    void DeliverLate() {
        while (!m_late.empty()) {
            const auto late = std::move(m_late.front());
            m_late.pop_front();
            late();
        }
    }
    bool LateWaits() const { return !m_late.empty(); }

    /// A call lets others in.
    void LetIn() {
        DeliverLate();
        if (inCall) {
            inCall(places++);
        }
    }

    std::unique_ptr<ShellConnection> ConnectShell(std::shared_ptr<ShellListener> listener) override {
        ++connects;
        LetIn();
        FailShell();
        auto connection = std::make_unique<Connection>(*this, std::move(listener));
        LetIn();
        return connection;
    }
    std::unique_ptr<WindowSink> Listen(const DesktopWindowPtr& window) override {
        if (!window) {
            return nullptr;
        }
        auto& reference = static_cast<Reference&>(*window);
        ++reference.State().listens;
        reference.Ask();
        auto sink = std::make_unique<Sink>(*this, reference.Shared());
        LetIn();
        return sink;
    }

    void Park(const DesktopWindowPtr& window, std::shared_ptr<WindowSink> sink) noexcept override {
        parked.emplace_back(window, std::move(sink));
    }
    DesktopWindowPtr Parked(const void* identity) const override {
        for (const auto& one : parked) {
            if (one.first->Identity() == identity) {
                return one.first;
            }
        }
        return nullptr;
    }
    void ReleaseAnswering() noexcept override {
        const auto answers = [](const auto& one) { return one.first->Answers(); };
        for (auto one = std::find_if(parked.begin(), parked.end(), answers); one != parked.end();
             one = std::find_if(parked.begin(), parked.end(), answers)) {
            const auto released = std::move(*one);
            parked.erase(one);
        }
    }
    void RemindLater(std::shared_ptr<ShellListener> listener) noexcept override {
        reminded = std::move(listener);
    }
    /// The while is over; false when nobody wanted to be reminded.
    bool Remind() {
        const auto listener = std::exchange(reminded, nullptr);
        if (listener) {
            ErrorsIgnored([&] { listener->Reminded(); });
        }
        return listener != nullptr;
    }

    static WindowState& StateOf(const DesktopWindowPtr& window) {
        return static_cast<Reference&>(*window).State();
    }

 private:
    class Reference final : public DesktopWindow {
     public:
        Reference(Desktop& desktop, std::shared_ptr<WindowState> state)
            : m_desktop(desktop), m_state(std::move(state)) {
            ++m_state->references;
        }
        ~Reference() override {
            m_desktop.LetIn();
            --m_state->references;
            m_state->waits += m_state->hung && m_state->references == 0 ? 1 : 0;
        }
        bool Answers() override { return !m_state->hung; }
        std::int32_t Handle() override {
            ++m_state->handleReads;
            Ask();
            return m_state->handle;
        }
        const void* Identity() const override { return m_state.get(); }

        void Ask() {
            m_state->waits += m_state->hung ? 1 : 0;
            m_desktop.Call(*m_state);
            m_desktop.LetIn();
            if (m_state->dead || m_state->failures > 0) {
                m_state->failures -= m_state->dead ? 0 : 1;
                throw RunTimeError(-5);
            }
        }
        WindowState& State() const { return *m_state; }
        const std::shared_ptr<WindowState>& Shared() const { return m_state; }

     private:
        Desktop& m_desktop;
        std::shared_ptr<WindowState> m_state;
    };

    class Sink final : public WindowSink {
     public:
        Sink(Desktop& desktop, std::shared_ptr<WindowState> state)
            : m_desktop(desktop), m_state(std::move(state)) {
            ++m_state->sinks;
        }
        ~Sink() override {
            m_state->waits += m_state->hung ? 1 : 0;
            m_desktop.LetIn();
            --m_state->sinks;
            m_desktop.LetIn();
        }

     private:
        Desktop& m_desktop;
        std::shared_ptr<WindowState> m_state;
    };

    class Walk final : public WindowWalk {
     public:
        explicit Walk(Desktop& desktop) : m_desktop(desktop), m_windows(desktop.Listed()) {}
        bool Next() override {
            m_desktop.LetIn();
            m_desktop.FailShell();
            return ++m_at < static_cast<int>(m_windows.size());
        }
        const void* Identity() override { return Entry(); }
        bool Answers() override { return Entry() == nullptr || !Entry()->hung; }
        DesktopWindowPtr Window() override {
            if (m_desktop.empties.contains(m_at)) {
                return nullptr;
            }
            m_desktop.Call(*Entry());
            m_desktop.LetIn();
            if (m_desktop.strangers.contains(m_at)) {
                throw RunTimeError(-6);
            }
            return std::make_shared<Reference>(m_desktop, m_windows[static_cast<std::size_t>(m_at)]);
        }

     private:
        WindowState* Entry() const {
            const bool empty = m_desktop.empties.contains(m_at);
            return empty ? nullptr : m_windows[static_cast<std::size_t>(m_at)].get();
        }

        Desktop& m_desktop;
        std::vector<std::shared_ptr<WindowState>> m_windows;
        int m_at = -1;
    };

    class Connection final : public ShellConnection {
     public:
        Connection(Desktop& desktop, std::shared_ptr<ShellListener> listener) : m_desktop(desktop) {
            m_place = desktop.m_listeners.insert(desktop.m_listeners.end(), std::move(listener));
            ++desktop.connections;
        }
        ~Connection() override {
            m_desktop.LetIn();
            m_desktop.m_listeners.erase(m_place);
            --m_desktop.connections;
            m_desktop.LetIn();
        }
        std::unique_ptr<WindowWalk> Walk() override {
            m_desktop.LetIn();
            m_desktop.FailShell();
            return std::make_unique<Desktop::Walk>(m_desktop);
        }

     private:
        Desktop& m_desktop;
        std::list<std::shared_ptr<ShellListener>>::iterator m_place;
    };

    /// A call to a window begins; it may never come back, and is cut off then.
    void Call(WindowState& window) {
        if (window.hangsAfter >= 0 && window.hangsAfter-- == 0) {
            window.hung = true;
            LetIn();
            throw RunTimeError(-9);
        }
        if (window.stallsAfter >= 0 && window.stallsAfter-- == 0) {
            window.hung = true;
            whileStalled(window);
            window.hung = false;
        }
    }
    void FailShell() {
        if (shellFailures > 0) {
            --shellFailures;
            throw RunTimeError(-7);
        }
    }
    template <class Tell>
    void Announce(Tell tell) {
        std::vector<std::weak_ptr<ShellListener>> listeners(m_listeners.begin(), m_listeners.end());
        if (delivery.newestFirst) {
            std::reverse(listeners.begin(), listeners.end());
        }
        for (const auto& weak : listeners) {
            const auto deliver = [this, weak, tell] {
                const auto listener = weak.lock();
                if (!listener ||
                    std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end()) {
                    return;
                }
                try {
                    tell(*listener);
                } catch (const RunTimeError&) {
                    ++failedAnnouncements;
                }
            };
            if (delivery.secondLater && !weak.expired() && weak.lock() != listeners.front().lock()) {
                m_late.emplace_back(deliver);
            } else {
                deliver();
            }
        }
    }

    std::vector<std::shared_ptr<WindowState>> m_windows;
    std::list<std::shared_ptr<ShellListener>> m_listeners;
    std::deque<std::function<void()>> m_late;
};

}  // namespace kestrelguard::fakes
