#include "desktop/driver/Sockets.h"

#include <stdexcept>
#include <utility>

namespace kestrelguard::testing {

Network::Network() {
    WSADATA data{};
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) {
        throw std::runtime_error("there are no sockets");
    }
}

sockaddr_in AddressOf(const char* ip, int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = inet_addr(ip);
    return address;
}

Peer::Peer(Socket connection) : m_socket(std::move(connection)) {
    u_long nonBlocking = 1;
    ioctlsocket(m_socket.Get(), static_cast<long>(FIONBIO), &nonBlocking);
}

void Peer::Take() {
    char piece[4096];
    for (;;) {
        const int count = recv(m_socket.Get(), piece, sizeof piece, 0);
        if (count <= 0) {
            m_ended = m_ended || count == 0 || WSAGetLastError() != WSAEWOULDBLOCK;
            return;
        }
        m_received.append(piece, static_cast<std::size_t>(count));
    }
}

std::string Peer::ReceiveUntil(const std::string& end, DWORD limit) {
    WaitUntil(
        [&] {
            Take();
            return m_received.find(end) != std::string::npos || m_ended;
        },
        limit);
    return m_received;
}

bool Peer::Send(const std::string& text) {
    std::size_t sent = 0;
    bool gone = false;
    WaitUntil([&] {
        const int count = send(m_socket.Get(), text.data() + sent, static_cast<int>(text.size() - sent), 0);
        if (count > 0) {
            sent += static_cast<std::size_t>(count);
        } else {
            gone = WSAGetLastError() != WSAEWOULDBLOCK;
        }
        return gone || sent == text.size();
    });
    return sent == text.size();
}

bool Peer::WaitEnded(DWORD limit) {
    return WaitUntil(
        [&] {
            Take();
            return m_ended;
        },
        limit);
}

Server::Server(const char* ip, int port) : m_listener(socket(AF_INET, SOCK_STREAM, 0)) {
    const sockaddr_in address = AddressOf(ip, port);
    if (bind(m_listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener.Get(), 5) != 0) {
        throw std::runtime_error("port " + std::to_string(port) + " of " + ip + " is taken");
    }
}

bool Server::Pending() const {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(m_listener.Get(), &readable);
    timeval now{0, 0};
    return select(0, &readable, nullptr, nullptr, &now) == 1;
}

Peer Server::Accept(DWORD limit) const {
    if (!WaitUntil([this] { return Pending(); }, limit)) {
        return {};
    }
    return Peer(Socket(accept(m_listener.Get(), nullptr, nullptr)));
}

}  // namespace kestrelguard::testing
