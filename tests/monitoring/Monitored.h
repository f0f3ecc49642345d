#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "monitoring/FakeWatchedDesktop.h"
#include "monitoring/WatchSwitch.h"
#include "monitoring/WindowWatch.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/Flagged.h"

namespace kestrelguard::fakes {

/// The program's monitoring on a desktop: the switch, the list, and the tree that its news keep.
class Monitored final : private WindowList, private WindowNews {
 public:
    explicit Monitored(Desktop& windows)
        : desktop(windows),
          watching([this] { return Make(); },
                   [this](const std::shared_ptr<WindowWatch>& watch) { Use(watch); }) {}
    ~Monitored() override { watching.SwitchOff(); }

    /// Switches on as the tree does, which builds its nodes from the list then. What the start throws is
    /// dropped.
    void On() {
        const bool starts = !watching.On() && !m_switchingOn;
        const Flagged switchingOn(m_switchingOn);
        if (ErrorOf([&] { watching.SwitchOn(); }) == 0 && starts) {
            BuildTree();
        }
    }
    void Refresh() {
        if (ErrorOf([&] { watching.Refresh(); }) != 0) {
            failedRefresh = true;
        }
    }
    void OffAndOn() {
        watching.SwitchOff();
        m_switchingOn = false;
        On();
    }

    /// Windows open and close, with or without a word.
    void Open(bool announced = true) {
        const auto window = desktop.Add(m_nextHandle++);
        window->came = listening;
        if (announced) {
            desktop.Registered();
        }
    }
    void CloseWindow(WindowState& window, bool announced = true) {
        window.listed = false;
        window.dead = true;
        if (announced) {
            ++withdrawals;
            desktop.Revoked();
        }
    }
    void CloseFirst(bool announced = true) {
        if (const auto listed = desktop.Listed(); !listed.empty()) {
            CloseWindow(*listed.front(), announced);
        }
    }
    void CloseLast(bool announced = true) {
        if (const auto listed = desktop.Listed(); !listed.empty()) {
            CloseWindow(*listed.back(), announced);
        }
    }

    std::vector<std::wstring> Keys() const {
        const auto watch = m_newest.lock();
        return watch ? watch->Keys() : std::vector<std::wstring>();
    }
    std::vector<int> ListedNumbers() const {
        std::vector<int> numbers;
        for (const auto& window : m_list) {
            numbers.push_back(Desktop::StateOf(window).number);
        }
        return numbers;
    }
    void DropList() { Clear(); }

    Desktop& desktop;
    WatchSwitch<std::shared_ptr<WindowWatch>> watching;
    /// The handles that the tree has nodes for.
    std::set<std::int32_t> tree;
    std::vector<int> created;
    int destroyed = 0;
    int withdrawals = 0;
    bool failedRefresh = false;
    /// Windows that open now are expected to be told.
    bool listening = false;
    /// Runs inside the news, after it was noted.
    std::function<void()> inNews;

 private:
    std::shared_ptr<WindowWatch> Make() {
        auto watch =
            std::make_shared<WindowWatch>(std::shared_ptr<WatchedDesktop>(std::shared_ptr<void>(), &desktop));
        m_newest = watch;
        return watch;
    }
    void Use(const std::shared_ptr<WindowWatch>& watch) {
        watch->TellTo(*this);
        watch->Fill(*this);
        watch->LoadBrowsers();
    }
    void BuildTree() {
        tree.clear();
        for (const auto& window : m_list) {
            tree.insert(Desktop::StateOf(window).handle);
        }
    }

    void Clear() override { const auto old = std::exchange(m_list, {}); }
    void Add(const DesktopWindowPtr& window) override { m_list.push_back(window); }

    void BrowserCreated(const DesktopWindowPtr& window) override {
        WindowState& state = Desktop::StateOf(window);
        ++state.created;
        created.push_back(state.number);
        if (!state.dead) {
            tree.insert(state.handle);
        }
        News();
    }
    void BrowserDestroyed() override {
        ++destroyed;
        const auto live = [this](std::int32_t handle) {
            return std::any_of(m_list.begin(), m_list.end(),
                               [&](const auto& window) { return Desktop::StateOf(window).handle == handle; });
        };
        const auto stale =
            std::find_if(tree.begin(), tree.end(), [&](std::int32_t handle) { return !live(handle); });
        if (stale != tree.end()) {
            tree.erase(stale);
        }
        News();
    }
    void News() {
        desktop.LetIn();
        if (inNews) {
            inNews();
        }
    }

    std::vector<DesktopWindowPtr> m_list;
    std::weak_ptr<WindowWatch> m_newest;
    std::int32_t m_nextHandle = 1000;
    bool m_switchingOn = false;
};

}  // namespace kestrelguard::fakes
