#include "controls/win32/WinsockFixture.h"

#include "controls/WinsockErrors.h"
#include "runtime/ErrorsIgnored.h"

namespace kestrelguard {
namespace {

TEST_F(WinsockControlTest, BytesPassThroughBothWaysUnharmed) {
    Connect();
    control->SendData(L"GET / HTTP/1.1\r\n\r\n");
    std::string arrived;
    EXPECT_TRUE(PumpUntil([&] { return (arrived += server.TakeArrived()).size() >= 18; }));
    EXPECT_EQ(arrived, "GET / HTTP/1.1\r\n\r\n");

    std::string bytes;
    std::wstring wide;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
        wide += static_cast<wchar_t>(byte);
    }
    server.Send(bytes);
    EXPECT_TRUE(PumpUntil([&] { return owner.received.size() >= 256; }));
    EXPECT_EQ(owner.received, wide);
    EXPECT_TRUE(owner.errors.empty());
}

TEST_F(WinsockControlTest, ANameIsLookedUp) {
    control->SetRemoteHost(L" localhost ");
    Connect();
    EXPECT_EQ(control->LocalIP(), L"127.0.0.1");
}

TEST_F(WinsockControlTest, ARefusedConnectionIsAnError) {
    control->SetRemotePort(server.port);
    server.StopListening();
    control->Connect();
    ASSERT_TRUE(PumpUntil([&] { return owner.Events() > 0; }));
    EXPECT_EQ(owner.errors, std::vector<std::int32_t>{WSAECONNREFUSED});
    EXPECT_EQ(owner.texts[0], L"The connection was refused");
    EXPECT_EQ(ErrorOf([&] { control->SendData(L"x"); }), winsock_errors::kBadState);
    // It can be used again.
    Server other;
    control->SetRemotePort(other.port);
    control->Connect();
    EXPECT_TRUE(PumpUntil([&] { return owner.connects == 1; }));
}

TEST_F(WinsockControlTest, SlowBytesArriveOneByOne) {
    Connect();
    const std::string text = "HTTP/1.1 200 OK";
    for (std::size_t sent = 0; sent < text.size(); ++sent) {
        server.Send(text.substr(sent, 1));
        ASSERT_TRUE(PumpUntil([&] { return owner.received.size() == sent + 1; }));
    }
    EXPECT_EQ(owner.received, L"HTTP/1.1 200 OK");
    EXPECT_EQ(owner.totals, std::vector<std::int32_t>(text.size(), 1));
}

TEST_F(WinsockControlTest, WhatWasSentBeforeTheEndArrivesBeforeIt) {
    Connect();
    bool whole = false;
    owner.onEnd = [&] { whole = owner.received == L"half a repl"; };
    server.Send("half a repl");
    server.connection.Reset();
    ASSERT_TRUE(PumpUntil([&] { return owner.closes == 1; }));
    EXPECT_TRUE(whole);
    EXPECT_TRUE(owner.errors.empty());
    EXPECT_EQ(ErrorOf([&] { control->GetData(); }), winsock_errors::kBadState);
}

TEST_F(WinsockControlTest, ALongTextBeforeTheEndArrivesWhole) {
    Connect();
    const std::string text(200'000, 'x');
    std::size_t sent = 0;
    u_long nonBlocking = 1;
    ioctlsocket(server.connection.Get(), static_cast<long>(FIONBIO), &nonBlocking);
    EXPECT_TRUE(PumpUntil([&] {
        const int count =
            send(server.connection.Get(), text.data() + sent, static_cast<int>(text.size() - sent), 0);
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
        return sent == text.size();
    }));
    server.connection.Reset();
    ASSERT_TRUE(PumpUntil([&] { return owner.closes + static_cast<int>(owner.errors.size()) > 0; }));
    EXPECT_EQ(owner.closes, 1);
    EXPECT_EQ(owner.received.size(), text.size());
    EXPECT_LE(*std::max_element(owner.totals.begin(), owner.totals.end()),
              static_cast<std::int32_t>(WinsockControl::kCapacity));
}

TEST_F(WinsockControlTest, AResetEndsTheConnection) {
    Connect();
    const linger hard{1, 0};
    setsockopt(server.connection.Get(), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard),
               sizeof hard);
    server.connection.Reset();
    ASSERT_TRUE(PumpUntil([&] { return owner.Events() > 1; }));
    // Wine tells of a reset as of a good end.
    EXPECT_TRUE(owner.closes == 1 || owner.errors == std::vector<std::int32_t>{WSAECONNRESET});
    EXPECT_EQ(owner.Events(), 2);
    EXPECT_EQ(ErrorOf([&] { control->SendData(L"x"); }), winsock_errors::kBadState);
}

TEST_F(WinsockControlTest, ABigTextIsSentBitByBit) {
    Connect();
    const std::size_t size = 8 * 1024 * 1024;
    std::wstring text;
    for (std::size_t at = 0; at < size; ++at) {
        text += static_cast<wchar_t>(L'a' + at % 23);
    }
    const DWORD start = GetTickCount();
    control->SendData(text);  // nobody reads yet
    EXPECT_LT(Since(start), 5000U);
    std::string arrived;
    EXPECT_TRUE(PumpUntil([&] { return (arrived += server.TakeArrived()).size() >= size; }));
    EXPECT_TRUE(std::equal(arrived.begin(), arrived.end(), text.begin(), text.end(),
                           [](char byte, wchar_t letter) { return static_cast<wchar_t>(byte) == letter; }));
    EXPECT_TRUE(owner.errors.empty());
}

TEST_F(WinsockControlTest, BytesThatNobodyTakesAreHeldBack) {
    Connect();
    owner.onData = [] {};
    u_long nonBlocking = 1;
    ioctlsocket(server.connection.Get(), static_cast<long>(FIONBIO), &nonBlocking);
    const std::string text(1024 * 1024, 'y');
    std::size_t sent = 0;
    const auto sendMore = [&] {
        const int count =
            send(server.connection.Get(), text.data() + sent, static_cast<int>(text.size() - sent), 0);
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    };
    const auto isFull = [&] {
        sendMore();
        return !owner.totals.empty() &&
               owner.totals.back() == static_cast<std::int32_t>(WinsockControl::kCapacity);
    };
    ASSERT_TRUE(PumpUntil(isFull));
    EXPECT_EQ(control->GetData().size(), WinsockControl::kCapacity);
    // With the place comes the rest.
    owner.onData = nullptr;
    EXPECT_TRUE(PumpUntil([&] {
        sendMore();
        return owner.received.size() + WinsockControl::kCapacity >= text.size();
    }));
}

/// Sends as fast as it can until the connection is gone.
DWORD WINAPI Flood(void* connection) {
    const std::string text(65'536, 'z');
    while (send(reinterpret_cast<SOCKET>(connection), text.data(), static_cast<int>(text.size()), 0) > 0) {
    }
    return 0;
}

TEST_F(WinsockControlTest, AFloodLeavesTheProgramTimeForEverythingElse) {
    Connect();
    const Handle flood(
        CreateThread(nullptr, 0, Flood, reinterpret_cast<void*>(server.connection.Get()), 0, nullptr));
    ASSERT_TRUE(flood);
    // Timer messages come after all posted ones, as the user's input does.
    const UINT_PTR timer = SetTimer(nullptr, 0, 20, nullptr);
    int ticks = 0;
    const DWORD start = GetTickCount();
    std::size_t taken = 0;
    owner.onData = [&] { taken += control->GetData().size(); };
    while (ticks < 20 && Since(start) < kLimit) {
        MSG message{};
        GetMessageA(&message, nullptr, 0, 0);
        ticks += message.message == WM_TIMER && message.hwnd == nullptr ? 1 : 0;
        DispatchMessageA(&message);
    }
    KillTimer(nullptr, timer);
    EXPECT_EQ(ticks, 20);
    EXPECT_GT(taken, WinsockControl::kCapacity);
    control->Close();
    EXPECT_EQ(WaitForSingleObject(flood.Get(), kLimit), WAIT_OBJECT_0);
}

TEST_F(WinsockControlTest, ALookupNeverWaits) {
    const DWORD start = GetTickCount();
    control->SetRemoteHost(L"no-such-host.invalid");
    control->SetRemotePort(80);
    control->Connect();
    EXPECT_LT(Since(start), 2000U);
    EXPECT_EQ(owner.Events(), 0);
    EXPECT_EQ(ErrorOf([&] { control->Connect(); }), winsock_errors::kInvalidOperation);
    control->Close();
    // The next connection hears nothing of the given-up look-up.
    control->SetRemoteHost(L"127.0.0.1");
    Connect();
    EXPECT_EQ(owner.Events(), 1);
}

TEST_F(WinsockControlTest, MessagesOfAnOlderConnectionAreIgnored) {
    Connect();
    const HWND window = FindWindowA(kClass, nullptr);
    ASSERT_NE(window, nullptr);
    control->Close();
    Server second;
    control->SetRemotePort(second.port);
    control->Connect();
    ASSERT_TRUE(PumpUntil([&] { return owner.connects == 2; }));
    second.Accept();
    const int before = owner.Events();
    for (UINT message = WM_USER; message < WM_APP; ++message) {
        SendMessageA(window, message, 0, MAKELPARAM(FD_CLOSE, WSAECONNRESET));
        SendMessageA(window, message, 4, MAKELPARAM(FD_CONNECT, 0));
    }
    PumpPending();
    EXPECT_EQ(owner.Events(), before);
    second.Send("still here");
    EXPECT_TRUE(PumpUntil([&] { return owner.received == L"still here"; }));
}

TEST_F(WinsockControlTest, ClosingBeforeTheEventsComeSilencesThem) {
    Connect();
    server.Send("too late");
    server.connection.Reset();
    control->Close();
    Server second;
    control->SetRemotePort(second.port);
    control->Connect();
    ASSERT_TRUE(PumpUntil([&] { return owner.connects == 2; }));
    EXPECT_EQ(owner.Events(), 2);
}

TEST_F(WinsockControlTest, HandlersMayDestroyTheControl) {
    enum { kInConnect, kInData, kInEnd, kCases };
    for (int where = 0; where < kCases; ++where) {
        auto victim = std::make_unique<WinsockControl>([](const RunTimeError&) {});
        SocketOwner handler(*victim);
        Server target;
        victim->SetRemoteHost(L"127.0.0.1");
        victim->SetRemotePort(target.port);
        (where == kInConnect ? handler.onConnect
         : where == kInData  ? handler.onData
                             : handler.onEnd) = [&] { victim.reset(); };
        victim->Connect();
        ASSERT_TRUE(PumpUntil([&] { return handler.connects == 1; }));
        target.Accept();
        if (where != kInConnect) {
            target.Send("x");
        }
        if (where == kInEnd) {
            target.connection.Reset();
        }
        EXPECT_TRUE(PumpUntil([&] { return victim == nullptr; })) << where;
    }
}

TEST_F(WinsockControlTest, HandlersMayCloseAndConnectAgain) {
    Connect();
    Server second;
    owner.onData = [&] {
        owner.onData = nullptr;
        control->Close();
        control->SetRemotePort(second.port);
        control->Connect();
    };
    server.Send("x");
    ASSERT_TRUE(PumpUntil([&] { return owner.connects == 2; }));
    second.Accept();
    second.Send("from the second");
    EXPECT_TRUE(PumpUntil([&] { return owner.received == L"from the second"; }));
}

TEST_F(WinsockControlTest, WhatLeavesAHandlerIsReported) {
    owner.onConnect = [] { throw RunTimeError(RunTimeError::kOverflow); };
    Connect();
    EXPECT_EQ(reported, std::vector<std::int32_t>{RunTimeError::kOverflow});
    owner.onData = [] { throw 1; };
    server.Send("x");
    EXPECT_TRUE(PumpUntil([&] { return reported.size() == 2; }));
    // The connection lives on.
    owner.onData = nullptr;
    server.Send("y");
    EXPECT_TRUE(PumpUntil([&] { return owner.received == L"xy"; }));
}

TEST_F(WinsockControlTest, ImpossibleHostsAreRefusedAtOnce) {
    control->SetRemotePort(server.port);
    for (const std::wstring& host :
         {std::wstring(), std::wstring(L"   "), std::wstring(256, L'a'), std::wstring(1'000'000, L'a'),
          std::wstring(L"local\0host", 10), std::wstring(L"two words"), std::wstring(L"a\r\nb"),
          std::wstring(L"127.0.0.1\t")}) {
        control->SetRemoteHost(host);
        EXPECT_EQ(ErrorOf([&] { control->Connect(); }), winsock_errors::kInvalidArgument);
    }
    // A refused Connect leaves the control as it was.
    control->SetRemoteHost(L"127.0.0.1");
    Connect();
}

TEST_F(WinsockControlTest, PortsHaveTheirRange) {
    for (const std::int32_t port : {-1, 65'536, 1'000'000}) {
        EXPECT_EQ(ErrorOf([&] { control->SetRemotePort(port); }), winsock_errors::kInvalidPropertyValue);
        EXPECT_EQ(ErrorOf([&] { control->SetLocalPort(port); }), winsock_errors::kInvalidPropertyValue);
    }
    for (const std::int32_t port : {0, 65'535}) {
        EXPECT_EQ(ErrorOf([&] { control->SetRemotePort(port); }), 0);
        EXPECT_EQ(ErrorOf([&] { control->SetLocalPort(port); }), 0);
    }
}

TEST_F(WinsockControlTest, AConnectionHoldsItsProperties) {
    Connect();
    EXPECT_EQ(ErrorOf([&] { control->SetRemoteHost(L"x"); }), winsock_errors::kInvalidOperation);
    EXPECT_EQ(ErrorOf([&] { control->SetRemotePort(1); }), winsock_errors::kInvalidOperation);
    EXPECT_EQ(ErrorOf([&] { control->SetLocalPort(0); }), winsock_errors::kInvalidOperation);
    EXPECT_EQ(ErrorOf([&] { control->Connect(); }), winsock_errors::kInvalidOperation);
}

TEST_F(WinsockControlTest, WithoutAConnectionThereIsNothingToSendOrRead) {
    EXPECT_EQ(ErrorOf([&] { control->SendData(L"x"); }), winsock_errors::kBadState);
    EXPECT_EQ(ErrorOf([&] { control->GetData(); }), winsock_errors::kBadState);
    EXPECT_EQ(ErrorOf([&] { control->Close(); }), 0);
}

TEST_F(WinsockControlTest, TheLocalPortCanBeChosen) {
    int free = 0;
    {
        const Server other;
        free = other.port;
    }
    control->SetLocalPort(free);
    Connect();
    EXPECT_EQ(ntohs(server.peer.sin_port), free);
}

TEST_F(WinsockControlTest, TheLocalComputerHasANameAndAnAddress) {
    std::array<char, 256> name{};
    ASSERT_EQ(gethostname(name.data(), static_cast<int>(name.size())), 0);
    EXPECT_EQ(control->LocalHostName(),
              std::wstring(name.data(), name.data() + std::string(name.data()).size()));
    EXPECT_EQ(control->LocalIP(), L"0.0.0.0");
    Connect();
    EXPECT_EQ(control->LocalIP(), L"127.0.0.1");
}

}  // namespace
}  // namespace kestrelguard
