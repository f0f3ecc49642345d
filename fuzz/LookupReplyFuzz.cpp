#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "update/UpdateWorld.h"

// A look-up's reply out of anybody's hands, compared with the steps as they are defined, with texts whose
// positions count from 1.
namespace kestrelguard {
namespace {

void Require(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

std::int64_t InStr(const std::wstring& text, const std::wstring& part) {
    for (std::size_t at = 0; at + part.size() <= text.size(); ++at) {
        if (text.compare(at, part.size(), part) == 0) {
            return static_cast<std::int64_t>(at) + 1;
        }
    }
    return 0;
}

std::wstring Mid(const std::wstring& text, std::int64_t position) {
    std::wstring rest;
    for (std::size_t at = static_cast<std::size_t>(position - 1); at < text.size(); ++at) {
        rest += text[at];
    }
    return rest;
}

std::wstring WithoutLineEnds(const std::wstring& text) {
    std::wstring rest;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == L'\r' && at + 1 < text.size() && text[at + 1] == L'\n') {
            ++at;
        } else {
            rest += text[at];
        }
    }
    return rest;
}

struct Definition {
    std::wstring buffer;
    std::int64_t bytes = 0;
    std::int64_t length = 0;
    std::wstring server;
    bool busy = false;
    bool connected = false;
    /// Whether the look-up is over.
    bool over = false;

    void Arrive(const std::wstring& chunk) {
        bytes += static_cast<std::int64_t>(chunk.size());
        if (const std::int64_t at = InStr(chunk, L"Content-Length: "); at != 0) {
            const std::wstring digits = WithoutLineEnds(Mid(chunk, at + 16).substr(0, 7));
            length = 0;
            for (std::size_t i = 0; i < digits.size() && digits[i] >= L'0' && digits[i] <= L'9'; ++i) {
                length = length * 10 + (digits[i] - L'0');
            }
            bytes -= InStr(chunk, L"\r\n\r\n") + 3;
        }
        buffer += chunk;
        if (bytes != length) {
            return;
        }
        over = true;
        std::wstring lower = buffer;
        std::transform(lower.begin(), lower.end(), lower.begin(), [](wchar_t letter) {
            return letter >= L'A' && letter <= L'Z' ? static_cast<wchar_t>(letter + 32) : letter;
        });
        if (InStr(lower, L"404 not found") != 0) {
            busy = false;
            return;
        }
        server = WithoutLineEnds(Mid(buffer, InStr(buffer, L"\r\n\r\n") + 4));
        while (!server.empty() && server.front() == L' ') {
            server.erase(0, 1);
        }
        while (!server.empty() && server.back() == L' ') {
            server.pop_back();
        }
        connected = true;
    }
};

}  // namespace
}  // namespace kestrelguard

/// 0xFF ends a chunk; 0xFE ends the connection with an error, an hour before the next look-up.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelguard;
    UpdateWorld world;
    Definition expected;
    const auto start = [&] {
        world.clock.now += 3601;
        world.check.DocumentComplete(UpdateWorld::kPage);
        world.check.ZevEvents().OnConnect();
        expected.busy = true;
        expected.over = false;
    };
    start();
    std::wstring chunk;
    for (std::size_t at = 0; at <= size; ++at) {
        if (at < size && data[at] < 0xFE) {
            chunk += static_cast<wchar_t>(data[at]);
            continue;
        }
        if (!chunk.empty() && !expected.over) {
            world.Arrive(chunk);
            expected.Arrive(chunk);
        }
        chunk.clear();
        const UpdateData& seen = world.check.Data();
        Require(seen.lookupBuffer == expected.buffer);
        Require(seen.lookupBytes == expected.bytes);
        Require(seen.lookupLength == expected.length);
        Require(seen.updateServer == expected.server);
        Require(seen.checkBusy == expected.busy);
        Require(std::count(world.zevPli.calls.begin(), world.zevPli.calls.end(), "Connect") ==
                (expected.connected ? 1 : 0));
        if (expected.connected) {
            Require(world.zevPli.remoteHost == expected.server);
            break;
        }
        if (at < size && data[at] == 0xFE) {
            if (!expected.over) {
                world.check.ZevEvents().OnError(10054, L"");
            }
            start();
        }
    }
    return 0;
}
