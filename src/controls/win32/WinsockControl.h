#pragma once

// The socket library's header stands before that of Windows.
#include <winsock2.h>
//
#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "controls/Winsock.h"
#include "controls/win32/WindowBase.h"
#include "runtime/RunTimeError.h"
#include "runtime/win32/Owners.h"

namespace kestrelguard {

struct SocketTraits {
    using Type = SOCKET;
    static Type Invalid() noexcept { return INVALID_SOCKET; }
    static void Close(Type object) noexcept { closesocket(object); }
};
using Socket = Owner<SocketTraits>;

/// The real socket: name look-up, connecting, sending and receiving all report to a hidden window of the
/// thread that connects, so nothing waits and nothing runs on another thread.
///
/// Bytes received become one character each, with the byte's value, so that positions in the text count
/// bytes; text to send becomes 8-bit text in the system code page. The socket library is not touched before
/// it is needed.
class WinsockControl final : public Winsock, WindowBase {
 public:
    /// Hears of a run-time error that leaves a handler of the events.
    using Report = std::function<void(const RunTimeError&)>;

    explicit WinsockControl(Report report);
    ~WinsockControl() override;
    WinsockControl(const WinsockControl&) = delete;
    WinsockControl& operator=(const WinsockControl&) = delete;

    /// The events' owner must outlive the control or its connection. A handler may do anything with the
    /// control, destroying it included.
    void SetEvents(WinsockEvents& events) { m_events = &events; }

    /// The three throw kInvalidOperation while there is a connection.
    void SetRemoteHost(const std::wstring& host) override;
    void SetRemotePort(std::int32_t port) override;
    void SetLocalPort(std::int32_t port) override;
    void Connect() override;
    void SendData(const std::wstring& text) override;
    std::wstring GetData() override;
    void Close() override;
    std::wstring LocalHostName() const override;
    std::wstring LocalIP() const override;

    /// What is kept of received bytes that nobody has taken; the network holds back the rest.
    static constexpr std::size_t kCapacity = 0x10000;

 private:
    enum class State { kClosed, kResolving, kConnecting, kConnected };
    using HostBuffer = std::array<char, MAXGETHOSTSTRUCT>;

    /// After an event the control may be gone: an event is the last thing that happens.
    std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnLookup(int error);
    void OnSocket(int event, int error);

    void RequireClosed() const;
    void EnsureWindow();
    void StartLookup(const std::string& host);
    void StartConnecting(unsigned long address);
    void Flush();
    void ScheduleReceive();
    void Receive();
    void Fail(int error);
    void End();

    UINT LookupMessage() const noexcept;
    UINT SocketMessage() const noexcept;

    WinsockEvents* m_events = nullptr;
    std::wstring m_remoteHost;
    std::int32_t m_remotePort = 0;
    std::int32_t m_localPort = 0;

    State m_state = State::kClosed;
    /// Each connection has message numbers of its own, so that late messages of an older one are known.
    UINT m_generation = 0;
    HANDLE m_lookup = nullptr;
    std::unique_ptr<HostBuffer> m_hostBuffer;
    Socket m_socket;
    std::string m_outgoing;
    std::size_t m_sent = 0;
    std::string m_received;
    /// Reading waits for GetData to make room.
    bool m_full = false;
    bool m_peerHasClosed = false;
    /// There is nothing more to read; m_peerError tells why, 0 for a good end.
    bool m_readEnded = false;
    int m_peerError = 0;
};

}  // namespace kestrelguard
