#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "controls/Winsock.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// Keeps what was asked of it, in order; `data` is what GetData hands out; an operation whose name has an
/// error in `errors` throws it.
class FakeWinsock : public Winsock {
 public:
    void SetRemoteHost(const std::wstring& host) override {
        Note("RemoteHost");
        remoteHost = host;
    }
    void SetRemotePort(std::int32_t port) override {
        Note("RemotePort");
        remotePort = port;
    }
    void SetLocalPort(std::int32_t port) override {
        Note("LocalPort");
        localPort = port;
    }
    void Connect() override { Note("Connect"); }
    void SendData(const std::wstring& text) override {
        Note("SendData");
        sent += text;
    }
    std::wstring GetData() override {
        Note("GetData");
        return std::exchange(data, {});
    }
    void Close() override { Note("Close"); }
    std::wstring LocalHostName() const override {
        Fail("LocalHostName");
        return hostName;
    }
    std::wstring LocalIP() const override {
        Fail("LocalIP");
        return ip;
    }

    /// The calls since the last question.
    std::vector<std::string> TakeCalls() { return std::exchange(calls, {}); }

    std::vector<std::string> calls;
    std::map<std::string, std::int32_t> errors;
    std::wstring remoteHost;
    std::int32_t remotePort = -1;
    std::int32_t localPort = -1;
    std::wstring sent;
    std::wstring data;
    std::wstring hostName = L"WORKBENCH";
    std::wstring ip = L"10.1.2.3";

 private:
    void Fail(const std::string& name) const {
        const auto error = errors.find(name);
        if (error != errors.end()) {
            throw RunTimeError(error->second);
        }
    }
    void Note(const std::string& name) {
        calls.push_back(name);
        Fail(name);
    }
};

}  // namespace kestrelguard
