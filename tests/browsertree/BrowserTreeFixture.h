#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "browsertree/BrowserTree.h"
#include "controls/Fakes.h"
#include "runtime/ErrorsIgnored.h"

namespace kestrelguard {

inline constexpr std::int32_t kDied = -2147023174;  // the browser's process is gone

using Calls = std::vector<std::wstring>;

/// One line a node: what stands in the tree, details indented.
using Picture = std::vector<std::wstring>;

/// A tree that also writes down its calls.
class LoggedTree : public FakeTree {
 public:
    explicit LoggedTree(Calls& log) : m_log(log) {}
    void Clear() override {
        m_log.emplace_back(L"clear");
        FakeTree::Clear();
    }
    void Add(const std::wstring& parent, const std::wstring& key, const std::wstring& text,
             int image) override {
        m_log.push_back(L"add " + parent + L">" + key + L" '" + text + L"' " + std::to_wstring(image));
        FakeTree::Add(parent, key, text, image);
    }
    void Expand(const std::wstring& key) override {
        m_log.push_back(L"expand " + key);
        FakeTree::Expand(key);
    }
    void SetText(const std::wstring& key, const std::wstring& text) override {
        m_log.push_back(L"text " + key + L" '" + text + L"'");
        FakeTree::SetText(key, text);
    }
    void Remove(const std::wstring& key) override {
        m_log.push_back(L"remove " + key);
        FakeTree::Remove(key);
    }

 private:
    Calls& m_log;
};

/// A browser that writes down what it is asked and lets something happen meanwhile, as a call to another
/// process does.
class LoggedBrowser : public FakeBrowser {
 public:
    LoggedBrowser(Calls& log, std::int32_t window, const std::wstring& name, const std::wstring& url)
        : FakeBrowser(window), m_log(log) {
        locationName = name;
        locationURL = url;
    }
    std::int32_t Handle() const override {
        m_log.emplace_back(L"handle?");
        Meanwhile();
        return FakeBrowser::Handle();
    }
    std::int32_t KnownHandle() const override { return known ? FakeBrowser::Handle() : Handle(); }
    std::wstring LocationName() const override {
        m_log.emplace_back(L"name?");
        Meanwhile();
        return FakeBrowser::LocationName();
    }
    std::wstring LocationURL() const override {
        m_log.emplace_back(L"url?");
        Meanwhile();
        return FakeBrowser::LocationURL();
    }

    /// The list knows its handle.
    bool known = false;
    /// Runs once, within the next call.
    mutable std::function<void()> meanwhile;

 private:
    void Meanwhile() const {
        if (const auto event = std::exchange(meanwhile, nullptr)) {
            event();
        }
    }
    Calls& m_log;
};

class FakeBrowserEventsControl : public BrowserEventsControl, public Fallible {
 public:
    explicit FakeBrowserEventsControl(Calls& log) : m_log(log) {}
    void SetEnabled(bool enabled) override {
        m_log.emplace_back(enabled ? L"on" : L"off");
        Call();
        on = enabled;
    }
    void Refresh() override {
        m_log.emplace_back(L"refresh");
        Call();
    }
    std::int16_t Count() const override {
        m_log.emplace_back(L"count?");
        Call();
        if (browsers.size() > 32767) {
            throw RunTimeError(RunTimeError::kOverflow);
        }
        return static_cast<std::int16_t>(browsers.size());
    }
    std::vector<std::shared_ptr<Browser>> Browsers() const override {
        m_log.emplace_back(L"browsers?");
        Call();
        return browsers;
    }
    std::vector<std::shared_ptr<Browser>> browsers;
    bool on = false;

 private:
    Calls& m_log;
};

class FakeWindowActions : public BrowserWindowActions, public Fallible {
 public:
    void ShowNormal(std::int32_t handle) override { Act(L"show ", handle); }
    void SetForeground(std::int32_t handle) override { Act(L"foreground ", handle); }
    void PostClose(std::int32_t handle) override { Act(L"close ", handle); }
    Calls done;

 private:
    void Act(const std::wstring& action, std::int32_t handle) {
        done.push_back(action + std::to_wstring(handle));
        Call();
    }
};

class FakeBrowserMenu : public BrowserMenu, public Fallible {
 public:
    void PopUp() override {
        ++opened;
        Call();
    }
    int opened = 0;
};

class BrowserTreeTest : public testing::Test {
 protected:
    BrowserTreeTest() {
        tree.faults = &faults;
        control.faults = &faults;
        actions.faults = &faults;
        menu.faults = &faults;
    }

    std::shared_ptr<LoggedBrowser> NewBrowser(std::int32_t handle, const std::wstring& name = L"News",
                                              const std::wstring& url = L"http://news.example/") {
        auto browser = std::make_shared<LoggedBrowser>(log, handle, name, url);
        browser->faults = &faults;
        return browser;
    }
    std::shared_ptr<LoggedBrowser> Open(std::int32_t handle, const std::wstring& name = L"News",
                                        const std::wstring& url = L"http://news.example/") {
        auto browser = NewBrowser(handle, name, url);
        control.browsers.push_back(browser);
        return browser;
    }
    void Close(const std::shared_ptr<Browser>& browser) { std::erase(control.browsers, browser); }

    Picture Seen() const {
        Picture picture;
        const std::function<void(const std::wstring&, const std::wstring&)> draw =
            [&](const std::wstring& parent, const std::wstring& indent) {
                for (const TreeNode& node : tree.nodes) {
                    if (node.parent == parent) {
                        picture.push_back(indent + node.text);
                        draw(node.key, indent + L"- ");
                    }
                }
            };
        draw({}, {});
        return picture;
    }

    /// The calls that `action` makes, in order.
    Calls CallsOf(const std::function<void()>& action) {
        log.clear();
        action();
        return log;
    }

    Calls log;
    Faults faults;
    LoggedTree tree{log};
    FakeBrowserEventsControl control{log};
    FakeMessageLoop messageLoop;
    FakeWindowActions actions;
    FakeBrowserMenu menu;
    BrowserTree browserTree{BrowserTree::Parts{.tvBrowsers = tree,
                                               .IEEvents1 = control,
                                               .messageLoop = messageLoop,
                                               .windows = actions,
                                               .bMnu = menu}};
};

}  // namespace kestrelguard
