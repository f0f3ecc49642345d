#pragma once

#include <winsock2.h>
//
#include <windows.h>

#include <string>

#include "desktop/driver/Wait.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard::testing {

struct SocketTraits {
    using Type = SOCKET;
    static Type Invalid() noexcept { return INVALID_SOCKET; }
    static void Close(Type object) noexcept { closesocket(object); }
};
using Socket = Owner<SocketTraits>;

/// Sockets work as long as one of these is there.
class Network {
 public:
    Network();
    ~Network() { WSACleanup(); }
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;
};

sockaddr_in AddressOf(const char* ip, int port);

/// A connection to the program under test. Limits are milliseconds.
class Peer {
 public:
    Peer() = default;
    explicit Peer(Socket connection);
    explicit operator bool() const { return static_cast<bool>(m_socket); }

    /// Waits for that end; everything received so far.
    std::string ReceiveUntil(const std::string& end, DWORD limit = kLimit);
    /// Whether all of it was taken; false when the program has hung up, or takes nothing.
    bool Send(const std::string& text);
    /// Tells the program that nothing more comes.
    void EndSending() { shutdown(m_socket.Get(), SD_SEND); }
    /// Waits for the program to end the connection.
    bool WaitEnded(DWORD limit = kLimit);
    void HangUp() { m_socket.Reset(); }

 private:
    void Take();

    Socket m_socket;
    std::string m_received;
    bool m_ended = false;
};

/// A server that a test plays.
class Server {
 public:
    /// Listens there. Throws std::runtime_error when it cannot.
    Server(const char* ip, int port);
    /// Whether somebody knocks.
    bool Pending() const;
    /// Waits for a connection; an empty one after the limit.
    Peer Accept(DWORD limit = kLimit) const;

 private:
    Socket m_listener;
};

}  // namespace kestrelguard::testing
