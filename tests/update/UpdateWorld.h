#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "controls/Fakes.h"
#include "update/FakeWinsock.h"
#include "update/UpdateCheck.h"

namespace kestrelguard {

struct FakeUpdateClock : UpdateClock {
    std::int64_t now = 3'900'000'000;
    std::int64_t Now() const override { return now; }
};

struct FakeUpdateProgram : UpdateProgram {
    std::int32_t useCount = 7;
    std::vector<std::wstring> started;
    int settingsWritten = 0;
    /// Runs when the settings are written.
    std::function<void()> whenWritten;
    std::int32_t UseCount() const override { return useCount; }
    std::wstring MainWindowText() const override { return L"Kestrelguard"; }
    void StartUpdater(const std::wstring& arguments) override { started.push_back(arguments); }
    void WriteSettings() override {
        ++settingsWritten;
        if (whenWritten) {
            whenWritten();
        }
    }
};

/// An update check with everything around it.
struct UpdateWorld {
    UpdateWorld() : UpdateWorld(Fresh()) {}
    explicit UpdateWorld(UpdateData data) : check(With(zev, zevPli), std::move(data)) {}

    /// This world's parts around two sockets.
    UpdateCheck::Parts With(Winsock& lookup, Winsock& query) {
        return {.zev = lookup,
                .ZEV_PLI = query,
                .clock = clock,
                .locale = locale,
                .messages = messages,
                .boxes = boxes,
                .program = program};
    }

    static UpdateData Fresh() {
        UpdateData data;
        data.versionText = L"2.0.113";
        data.windowsCode = L"XPPRO";
        return data;
    }

    bool Busy() const { return check.Data().checkBusy; }

    /// Data on the look-up's socket.
    void Arrive(const std::wstring& chunk) {
        zev.data = chunk;
        check.ZevEvents().OnDataArrival(static_cast<std::int32_t>(chunk.size()));
    }
    /// Data on the version query's socket.
    void Reply(const std::wstring& chunk) {
        zevPli.data = chunk;
        check.ZevPliEvents().OnDataArrival(static_cast<std::int32_t>(chunk.size()));
    }
    /// The first leg with a good answer, up to the second one's Connect.
    void LookUp(const std::wstring& server = L"update.kestrelguard.example") {
        check.DocumentComplete(kPage);
        check.ZevEvents().OnConnect();
        Arrive(Page(server));
    }
    void LookUpAndConnect() {
        LookUp();
        check.ZevPliEvents().OnConnect();
    }
    static std::wstring Page(const std::wstring& body) {
        return L"HTTP/1.1 200 OK\r\nContent-Length: " + std::to_wstring(body.size()) +
               L"\r\nContent-Type: text/html\r\n\r\n" + body;
    }

    static constexpr wchar_t kPage[] = L"http://www.site.example/";

    FakeWinsock zev;
    FakeWinsock zevPli;
    FakeUpdateClock clock;
    FakeLocale locale;
    FakeMessageLoop messages;
    FakeMessageBoxes boxes;
    FakeUpdateProgram program;
    UpdateCheck check;
};

}  // namespace kestrelguard
