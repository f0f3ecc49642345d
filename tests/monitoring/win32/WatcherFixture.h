#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "FakeDesktop.h"
#include "RecordingEvents.h"
#include "monitoring/win32/cBrowserEvents.h"

namespace kestrelguard::fakes {

/// A watcher on windows inside the test's own process.
class WatcherTest : public testing::Test {
 protected:
    ~WatcherTest() override {
        if (watcher) {
            watcher->Close();
        }
    }
    /// A watcher that has taken its first look.
    ComPtr<cBrowserEvents> Create() {
        auto created = MakeCom<cBrowserEvents>(desktop.Maker());
        try {
            created->FirstLook();
        } catch (...) {
            created->Close();
            throw;
        }
        return created;
    }
    /// A watcher as its owner keeps it: with a list and a listener.
    void Watch() {
        watcher = Create();
        watcher->Connect(events);
        watcher->SetBrowsers(list);
        watcher->LoadBrowsers();
    }
    std::vector<IWebBrowser2*> Listed() const {
        std::vector<IWebBrowser2*> listed;
        for (std::int32_t i = 1; i <= list->Count(); ++i) {
            listed.push_back(list->Item(i).Get());
        }
        return listed;
    }
    static IWebBrowser2* Same(const ComPtr<FakeBrowser>& browser) { return browser.Get(); }
    /// Whether each browser has one sink, and its events reach the listener under its own name.
    void ExpectWatched(const std::vector<ComPtr<FakeBrowser>>& browsers) {
        for (const auto& browser : browsers) {
            EXPECT_EQ(1U, browser->connections->Sinks()) << browser->handle;
            const std::size_t before = events.names.size();
            EXPECT_EQ(S_OK, browser->Fire(106));
            ASSERT_EQ(before + 1, events.names.size()) << browser->handle;
            EXPECT_EQ(Same(browser), events.browsers.back());
            events.names.pop_back();
            events.browsers.pop_back();
        }
    }
    template <class Action>
    static std::int32_t NumberThrown(Action&& action) {
        try {
            action();
        } catch (const RunTimeError& error) {
            return error.Number();
        }
        return 0;
    }

    const ComApartment apartment;
    FakeDesktop desktop;
    RecordingEvents events;
    const ComPtr<cBrowsers> list = MakeCom<cBrowsers>();
    ComPtr<cBrowserEvents> watcher;
};

}  // namespace kestrelguard::fakes
