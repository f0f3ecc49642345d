#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "cachewindow/SavedCookiesWorld.h"

namespace kestrelguard {
namespace {

using Texts = std::vector<std::wstring>;

/// The cookies of a file, written down a second time as plainly as can be, to compare with.
Texts CookiesByDefinition(const std::wstring& file) {
    Texts lines(1);
    for (std::size_t at = 0; at < file.size(); ++at) {
        if (file[at] == L'\r' || file[at] == L'\n') {
            lines.emplace_back();
            at += file.compare(at, 2, L"\r\n") == 0 ? 1 : 0;
        } else {
            lines.back() += file[at];
        }
    }
    Texts cookies;
    for (std::size_t line = 4; line < lines.size(); ++line) {
        if (lines[line].find(L"Cookie:") != std::wstring::npos &&
            std::find(cookies.begin(), cookies.end(), lines[line]) == cookies.end()) {
            cookies.push_back(lines[line]);
        }
    }
    return cookies;
}

std::wstring FileByDefinition(const Texts& cookies) {
    std::wstring file =
        L"'# Kestrelguard v2.0 - Saved Cookies\r\n"
        L"'# Configuration Modified: (5/17/2004 3:05:09 PM)\r\n"
        L"'# DO NOT EDIT UNLESS YOU KNOW WHAT YOU ARE DOING\r\n"
        L"'###################\r\n";
    for (const std::wstring& cookie : cookies) {
        file += cookie + L"\r\n";
    }
    return file;
}

using World = SavedCookiesWorld;

/// The file breaks off at its `position`th call; what was read before is kept then.
void ReadThatMayFail(World& world, const std::wstring& text, int position) {
    const Texts before = world.Saved();
    Faults faults;
    faults.FailAt(position, RunTimeError::kDeviceIOError);
    world.folder.faults = &faults;
    bool failed = false;
    try {
        world.Read(text);
    } catch (const RunTimeError&) {
        failed = true;
    }
    world.folder.faults = nullptr;
    Require(failed == faults.Hit());
    Require(world.Saved() == (failed ? before : CookiesByDefinition(text)));
}

void Run(const std::wstring& text, int failAt) {
    const Texts expected = CookiesByDefinition(text);
    World world;
    world.Read(text);
    Require(world.Saved() == expected);

    world.store.SavedCookiesFile(L"WRITE");
    const std::wstring written = world.folder.files[World::kFile];
    Require(written == FileByDefinition(expected));

    World next;
    next.Read(written);
    Require(next.Saved() == expected);
    FakeListRows rows;
    rows.rows.assign(expected.begin(), expected.end());
    next.store.SavedCookiesFile(L"WRITE", &rows);
    Require(next.folder.files[World::kFile] == written);

    World third;
    third.Read(L"\n\n\n\nCookie:before\n");
    ReadThatMayFail(third, text, failAt);
    third.Read(text);
    Require(third.Saved() == expected);
}

}  // namespace
}  // namespace kestrelguard

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrelguard::Run(std::wstring(data, data + size), size == 0 ? 0 : data[size - 1] % 32);
    return 0;
}
