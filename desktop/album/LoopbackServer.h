#pragma once

#include <winsock2.h>
//
#include <windows.h>

#include <string>

#include "desktop/Threads.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard::desktop {

/// A server on 127.0.0.1 that sends every visitor the same answer once something was asked, on a thread of
/// its own. Ends with this.
class LoopbackServer {
 public:
    /// Throws std::runtime_error when the port cannot be had.
    LoopbackServer(int port, std::string answer);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

 private:
    static DWORD WINAPI Serve(void* server) noexcept;

    const std::string m_answer;
    SOCKET m_listener = INVALID_SOCKET;
    Signal m_ending;
    Handle m_thread;
};

}  // namespace kestrelguard::desktop
