#pragma once

#include "controls/win32/WinsockControl.h"
//
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kestrelguard {

inline constexpr DWORD kLimit = 20'000;
inline constexpr char kClass[] = "Kestrelguard.Winsock";

inline DWORD Since(DWORD start) {
    return GetTickCount() - start;
}

inline void PumpPending() {
    MSG message{};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        DispatchMessageA(&message);
    }
}

/// Runs messages until the condition holds. Answers whether it did within the limit.
bool PumpUntil(const std::function<bool()>& condition, DWORD limit = kLimit) {
    const DWORD start = GetTickCount();
    while (!condition()) {
        if (Since(start) > limit) {
            return false;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        PumpPending();
    }
    return true;
}

struct Network {
    Network() {
        WSADATA data{};
        WSAStartup(MAKEWORD(1, 1), &data);
    }
    ~Network() { WSACleanup(); }
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;
};

inline sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A server on a free port of the loopback.
class Server {
 public:
    Server() {
        m_listener.Reset(socket(AF_INET, SOCK_STREAM, 0));
        const sockaddr_in address = Loopback(0);
        EXPECT_EQ(bind(m_listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(m_listener.Get(), 5), 0);
        sockaddr_in bound{};
        int size = sizeof bound;
        EXPECT_EQ(getsockname(m_listener.Get(), reinterpret_cast<sockaddr*>(&bound), &size), 0);
        port = ntohs(bound.sin_port);
    }

    /// The connection that has been made.
    void Accept() {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(m_listener.Get(), &readable);
        timeval limit{20, 0};
        ASSERT_EQ(select(0, &readable, nullptr, nullptr, &limit), 1);
        int size = sizeof peer;
        connection.Reset(accept(m_listener.Get(), reinterpret_cast<sockaddr*>(&peer), &size));
        ASSERT_TRUE(connection);
    }

    void Send(const std::string& text) const {
        ASSERT_EQ(send(connection.Get(), text.data(), static_cast<int>(text.size()), 0),
                  static_cast<int>(text.size()));
    }

    /// What has arrived so far; never waits.
    std::string TakeArrived() const {
        std::string all;
        u_long waiting = 0;
        while (ioctlsocket(connection.Get(), FIONREAD, &waiting) == 0 && waiting > 0) {
            std::string piece(std::min<u_long>(waiting, 65'536), '\0');
            const int count = recv(connection.Get(), piece.data(), static_cast<int>(piece.size()), 0);
            if (count <= 0) {
                break;
            }
            all.append(piece, 0, static_cast<std::size_t>(count));
        }
        return all;
    }

    void StopListening() { m_listener.Reset(); }

    int port = 0;
    Socket connection;
    sockaddr_in peer{};

 private:
    Socket m_listener;
};

struct SocketOwner final : WinsockEvents {
    explicit SocketOwner(WinsockControl& watched) : control(&watched) { control->SetEvents(*this); }
    void OnConnect() override {
        ++connects;
        if (onConnect) {
            onConnect();
        }
    }
    void OnDataArrival(std::int32_t bytesTotal) override {
        totals.push_back(bytesTotal);
        if (onData) {
            onData();
        } else {
            received += control->GetData();
        }
    }
    void OnError(std::int32_t number, const std::wstring& description) override {
        errors.push_back(number);
        texts.push_back(description);
        if (onEnd) {
            onEnd();
        }
    }
    void OnClose() override {
        ++closes;
        if (onEnd) {
            onEnd();
        }
    }
    int Events() const { return connects + static_cast<int>(totals.size() + errors.size()) + closes; }

    WinsockControl* control;
    int connects = 0;
    int closes = 0;
    std::vector<std::int32_t> totals;
    std::vector<std::int32_t> errors;
    std::vector<std::wstring> texts;
    std::wstring received;
    std::function<void()> onConnect;
    std::function<void()> onData;
    std::function<void()> onEnd;
};

class WinsockControlTest : public testing::Test {
 protected:
    WinsockControlTest() { control->SetRemoteHost(L"127.0.0.1"); }

    void Connect() {
        control->SetRemotePort(server.port);
        control->Connect();
        ASSERT_TRUE(PumpUntil([&] { return owner.connects == 1; }));
        server.Accept();
    }

    std::vector<std::int32_t> reported;
    Network network;
    std::unique_ptr<WinsockControl> control = std::make_unique<WinsockControl>(
        [this](const RunTimeError& error) { reported.push_back(error.Number()); });
    SocketOwner owner{*control};
    Server server;
};

}  // namespace kestrelguard
