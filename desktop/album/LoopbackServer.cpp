#include "desktop/album/LoopbackServer.h"

#include <stdexcept>
#include <utility>

namespace kestrelguard::desktop {

LoopbackServer::LoopbackServer(int port, std::string answer) : m_answer(std::move(answer)) {
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    m_listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener, 5) != 0) {
        closesocket(m_listener);
        WSACleanup();
        throw std::runtime_error("port " + std::to_string(port) + " cannot be listened to");
    }
    m_thread.Reset(CreateThread(nullptr, 0, Serve, this, 0, nullptr));
}

LoopbackServer::~LoopbackServer() {
    m_ending.Set();
    WaitForSingleObject(m_thread.Get(), INFINITE);
    closesocket(m_listener);
    WSACleanup();
}

DWORD WINAPI LoopbackServer::Serve(void* server) noexcept {
    const auto& self = *static_cast<const LoopbackServer*>(server);
    while (!self.m_ending.Wait(0)) {
        fd_set knocking;
        FD_ZERO(&knocking);
        FD_SET(self.m_listener, &knocking);
        timeval patience{0, 50000};
        if (select(0, &knocking, nullptr, nullptr, &patience) != 1) {
            continue;
        }
        const SOCKET visitor = accept(self.m_listener, nullptr, nullptr);
        char question[4096];
        if (recv(visitor, question, sizeof question, 0) > 0) {
            send(visitor, self.m_answer.data(), static_cast<int>(self.m_answer.size()), 0);
        }
        closesocket(visitor);
    }
    return 0;
}

}  // namespace kestrelguard::desktop
