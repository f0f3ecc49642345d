#include "controls/win32/WinsockControl.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>
#include <utility>

#include "controls/WinsockErrors.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

constexpr UINT kFirstMessage = WM_USER + 16;
constexpr UINT kGenerations = 4096;
constexpr UINT kLastMessage = kFirstMessage + 2 * kGenerations - 1;
static_assert(kLastMessage < WM_APP);

constexpr UINT_PTR kReceiveTimer = 1;
constexpr UINT kReceivePause = 10;

/// The longest name that the name service knows.
constexpr std::size_t kLongestHost = 255;

/// The socket library, loaded for as long as the object lives.
class Library {
 public:
    Library() {
        WSADATA data{};
        const int error = WSAStartup(MAKEWORD(1, 1), &data);
        if (error != 0) {
            throw WinsockError(error);
        }
    }
    ~Library() { WSACleanup(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

void RequireLibrary() {
    static const Library library;
}

std::int32_t CheckedPort(std::int32_t port) {
    if (port < 0 || port > USHRT_MAX) {
        throw WinsockError(winsock_errors::kInvalidPropertyValue);
    }
    return port;
}

/// The host's name as the name service takes it. It may come out of the network: whatever cannot be a name is
/// refused here.
std::string CheckedHost(std::wstring_view host) {
    std::string name = ToAnsi(Trim(host));
    if (name.empty() || name.size() > kLongestHost) {
        throw WinsockError(winsock_errors::kInvalidArgument);
    }
    for (const char character : name) {
        if (static_cast<unsigned char>(character) <= ' ' || character == '\x7F') {
            throw WinsockError(winsock_errors::kInvalidArgument);
        }
    }
    return name;
}

sockaddr_in AddressOf(unsigned long address, std::int32_t port) {
    sockaddr_in full{};
    full.sin_family = AF_INET;
    full.sin_port = htons(static_cast<u_short>(port));
    full.sin_addr.s_addr = address;
    return full;
}

}  // namespace

WinsockControl::WinsockControl(Report report)
    : WindowBase(
          [report = std::move(report)](HWND /*window*/, const RunTimeError& error) { report(error); }) {}

WinsockControl::~WinsockControl() {
    WinsockControl::Close();
}

void WinsockControl::RequireClosed() const {
    if (m_state != State::kClosed) {
        throw WinsockError(winsock_errors::kInvalidOperation);
    }
}

void WinsockControl::SetRemoteHost(const std::wstring& host) {
    RequireClosed();
    m_remoteHost = host;
}

void WinsockControl::SetRemotePort(std::int32_t port) {
    RequireClosed();
    m_remotePort = CheckedPort(port);
}

void WinsockControl::SetLocalPort(std::int32_t port) {
    RequireClosed();
    m_localPort = CheckedPort(port);
}

void WinsockControl::Connect() {
    RequireClosed();
    const std::string host = CheckedHost(m_remoteHost);
    RequireLibrary();
    EnsureWindow();
    m_generation = (m_generation + 1) % kGenerations;
    const unsigned long address = inet_addr(host.c_str());
    if (address != INADDR_NONE) {
        StartConnecting(address);
    } else {
        StartLookup(host);
    }
}

void WinsockControl::EnsureWindow() {
    if (Handle() != nullptr) {
        return;
    }
    Create({.name = "Kestrelguard.Winsock"}, {.style = WS_POPUP, .extendedStyle = WS_EX_TOOLWINDOW});
}

void WinsockControl::StartLookup(const std::string& host) {
    auto buffer = std::make_unique<HostBuffer>();
    m_lookup = WSAAsyncGetHostByName(Handle(), LookupMessage(), host.c_str(), buffer->data(),
                                     static_cast<int>(buffer->size()));
    if (m_lookup == nullptr) {
        throw WinsockError(WSAGetLastError());
    }
    m_hostBuffer = std::move(buffer);
    m_state = State::kResolving;
}

void WinsockControl::StartConnecting(unsigned long address) {
    Socket made(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    if (!made) {
        throw WinsockError(WSAGetLastError());
    }
    if (m_localPort != 0) {
        const sockaddr_in local = AddressOf(INADDR_ANY, m_localPort);
        if (bind(made.Get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) == SOCKET_ERROR) {
            throw WinsockError(WSAGetLastError());
        }
    }
    if (WSAAsyncSelect(made.Get(), Handle(), SocketMessage(), FD_CONNECT | FD_READ | FD_WRITE | FD_CLOSE) ==
        SOCKET_ERROR) {
        throw WinsockError(WSAGetLastError());
    }
    const sockaddr_in remote = AddressOf(address, m_remotePort);
    if (connect(made.Get(), reinterpret_cast<const sockaddr*>(&remote), sizeof remote) == SOCKET_ERROR) {
        const int error = WSAGetLastError();
        if (error != WSAEWOULDBLOCK) {
            throw WinsockError(error);
        }
    }
    m_socket = std::move(made);
    m_state = State::kConnecting;
}

void WinsockControl::SendData(const std::wstring& text) {
    if (m_state != State::kConnected) {
        throw WinsockError(winsock_errors::kBadState);
    }
    m_outgoing += ToAnsi(text);
    Flush();
}

void WinsockControl::Flush() {
    while (m_sent < m_outgoing.size()) {
        const int count =
            send(m_socket.Get(), m_outgoing.data() + m_sent,
                 static_cast<int>(std::min<std::size_t>(m_outgoing.size() - m_sent, INT_MAX)), 0);
        if (count == SOCKET_ERROR) {
            const int error = WSAGetLastError();
            if (error == WSAEWOULDBLOCK) {
                return;  // FD_WRITE follows
            }
            throw WinsockError(error);
        }
        m_sent += static_cast<std::size_t>(count);
    }
    m_outgoing.clear();
    m_sent = 0;
}

std::wstring WinsockControl::GetData() {
    if (m_state != State::kConnected) {
        throw WinsockError(winsock_errors::kBadState);
    }
    std::wstring text;
    text.reserve(m_received.size());
    for (const char byte : m_received) {
        text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    }
    m_received.clear();
    if (std::exchange(m_full, false)) {
        ScheduleReceive();
    }
    return text;
}

void WinsockControl::Close() {
    if (m_state == State::kResolving) {
        // A look-up may still write into its buffer after it was cancelled, so the buffer stays for good: a
        // kilobyte for each connection that was given up during its look-up.
        WSACancelAsyncRequest(m_lookup);
        static_cast<void>(m_hostBuffer.release());
    }
    m_state = State::kClosed;
    m_lookup = nullptr;
    m_hostBuffer.reset();
    m_socket.Reset();
    if (Handle() != nullptr) {
        KillTimer(Handle(), kReceiveTimer);
    }
    m_outgoing.clear();
    m_sent = 0;
    m_received.clear();
    m_full = false;
    m_peerHasClosed = false;
    m_readEnded = false;
    m_peerError = 0;
}

std::wstring WinsockControl::LocalHostName() const {
    RequireLibrary();
    std::array<char, 256> name{};
    if (gethostname(name.data(), static_cast<int>(name.size()) - 1) == SOCKET_ERROR) {
        throw WinsockError(WSAGetLastError());
    }
    return FromAnsi(name.data());
}

std::wstring WinsockControl::LocalIP() const {
    // That of the connection; asking for the addresses of the computer's own name could wait for the network.
    sockaddr_in local{};
    int size = sizeof local;
    if (m_state == State::kConnected &&
        getsockname(m_socket.Get(), reinterpret_cast<sockaddr*>(&local), &size) == SOCKET_ERROR) {
        throw WinsockError(WSAGetLastError());
    }
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&local.sin_addr);
    std::wstring dotted = Decimal(bytes[0]);
    for (int part = 1; part < 4; ++part) {
        dotted += L'.' + Decimal(bytes[part]);
    }
    return dotted;
}

UINT WinsockControl::LookupMessage() const noexcept {
    return kFirstMessage + 2 * m_generation;
}

UINT WinsockControl::SocketMessage() const noexcept {
    return LookupMessage() + 1;
}

std::optional<LRESULT> WinsockControl::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_TIMER && wParam == kReceiveTimer) {
        Receive();
        return 0;
    }
    if (message < kFirstMessage || message > kLastMessage) {
        return std::nullopt;
    }
    if (m_state == State::kResolving && message == LookupMessage() &&
        reinterpret_cast<HANDLE>(wParam) == m_lookup) {
        OnLookup(WSAGETASYNCERROR(lParam));
    } else if (m_socket && message == SocketMessage() && wParam == m_socket.Get()) {
        OnSocket(WSAGETSELECTEVENT(lParam), WSAGETSELECTERROR(lParam));
    }
    return 0;
}

void WinsockControl::OnLookup(int error) {
    const std::unique_ptr<HostBuffer> buffer = std::move(m_hostBuffer);
    m_lookup = nullptr;
    m_state = State::kClosed;
    if (error == 0) {
        const auto* const host = reinterpret_cast<const hostent*>(buffer->data());
        if (host->h_addrtype == AF_INET && host->h_length == static_cast<short>(sizeof(unsigned long)) &&
            host->h_addr_list[0] != nullptr) {
            unsigned long address = 0;
            std::memcpy(&address, host->h_addr_list[0], sizeof address);
            try {
                StartConnecting(address);
                return;
            } catch (const RunTimeError& failure) {
                error = failure.Number();
            }
        } else {
            error = WSANO_DATA;
        }
    }
    Fail(error);
}

void WinsockControl::OnSocket(int event, int error) {
    switch (event) {
        case FD_CONNECT:
            if (error != 0) {
                Fail(error);
                return;
            }
            m_state = State::kConnected;
            if (m_events != nullptr) {
                m_events->OnConnect();
            }
            return;
        case FD_WRITE:
            try {
                Flush();
            } catch (const RunTimeError& failure) {
                Fail(failure.Number());
            }
            return;
        case FD_READ:
            ScheduleReceive();
            return;
        case FD_CLOSE:
            m_peerHasClosed = true;  // what it sent before may still have to be read
            m_peerError = error;
            ScheduleReceive();
            return;
        default:
            return;
    }
}

void WinsockControl::ScheduleReceive() {
    // Not at once: posted messages go before the user's input, so a fast sender would leave the program no
    // time for it. A timer's message comes after everything else.
    if (SetTimer(Handle(), kReceiveTimer, kReceivePause, nullptr) == 0) {
        PostMessageA(Handle(), WM_TIMER, kReceiveTimer, 0);
    }
}

void WinsockControl::Receive() {
    KillTimer(Handle(), kReceiveTimer);
    if (m_state != State::kConnected) {
        return;
    }
    const std::size_t before = m_received.size();
    std::array<char, 4096> piece{};
    bool waits = false;
    while (m_received.size() < kCapacity && !waits && !m_readEnded) {
        const int count = recv(m_socket.Get(), piece.data(),
                               static_cast<int>(std::min(piece.size(), kCapacity - m_received.size())), 0);
        if (count > 0) {
            m_received.append(piece.data(), static_cast<std::size_t>(count));
            continue;
        }
        const int error = count == 0 ? 0 : WSAGetLastError();
        waits = error == WSAEWOULDBLOCK && !m_peerHasClosed;
        m_readEnded = !waits;
        if (m_readEnded && error != WSAEWOULDBLOCK && error != 0) {
            m_peerError = error;
        }
    }
    m_full = m_received.size() >= kCapacity;
    if (m_received.size() > before) {
        if (m_readEnded) {
            ScheduleReceive();
        }
        if (m_events != nullptr) {
            m_events->OnDataArrival(static_cast<std::int32_t>(m_received.size()));
        }
    } else if (m_readEnded) {
        if (m_peerError != 0) {
            Fail(m_peerError);
        } else {
            End();
        }
    }
}

void WinsockControl::Fail(int error) {
    Close();
    if (m_events != nullptr) {
        m_events->OnError(error, WinsockErrorText(error));
    }
}

void WinsockControl::End() {
    Close();
    if (m_events != nullptr) {
        m_events->OnClose();
    }
}

}  // namespace kestrelguard
