#pragma once

#include <cstdint>
#include <string>

namespace kestrelguard {

/// A TCP client socket driven by the message loop: nothing here ever blocks. Its events reach a
/// WinsockEvents of the owner's.
class Winsock {
 public:
    virtual ~Winsock() = default;
    virtual void SetRemoteHost(const std::wstring& host) = 0;
    virtual void SetRemotePort(std::int32_t port) = 0;
    virtual void SetLocalPort(std::int32_t port) = 0;
    /// Starts connecting. Throws RunTimeError when that is refused at once.
    virtual void Connect() = 0;
    /// Throws RunTimeError when not connected. What the connection does not take at once follows later.
    virtual void SendData(const std::wstring& text) = 0;
    /// Takes all bytes received so far, one character a byte. Throws RunTimeError when reading fails.
    virtual std::wstring GetData() = 0;
    virtual void Close() = 0;
    virtual std::wstring LocalHostName() const = 0;
    /// The address that the connection uses on this computer; "0.0.0.0" while there is none.
    virtual std::wstring LocalIP() const = 0;
};

/// What a socket tells its owner.
class WinsockEvents {
 public:
    virtual ~WinsockEvents() = default;
    virtual void OnConnect() = 0;
    virtual void OnDataArrival(std::int32_t bytesTotal) = 0;
    virtual void OnError(std::int32_t number, const std::wstring& description) = 0;
    /// The other side has ended the connection in good order; all it sent has arrived before.
    virtual void OnClose() {}
};

}  // namespace kestrelguard
