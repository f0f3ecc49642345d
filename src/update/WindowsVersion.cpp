#include "update/WindowsVersion.h"

#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr std::uint32_t kWin32s = 0;
constexpr std::uint32_t kWindows = 1;
constexpr std::uint32_t kNT = 2;

constexpr std::uint32_t kWorkstation = 1;
constexpr std::uint32_t kServer = 3;

constexpr std::int32_t kAny = -1;

using Test = bool (*)(const WindowsVersion&);

bool Always(const WindowsVersion& /*version*/) {
    return true;
}

bool ServiceHasC(const WindowsVersion& version) {
    return Contains(UpperCase(version.service), L"C");
}

bool ServiceHasA(const WindowsVersion& version) {
    return Contains(UpperCase(version.service), L"A");
}

bool Workstation(const WindowsVersion& version) {
    return version.productType == kWorkstation;
}

bool Server(const WindowsVersion& version) {
    return version.productType == kServer;
}

bool ServerOfSuite2(const WindowsVersion& version) {
    return Server(version) && version.suiteMask == 2;
}

bool ServerOfSuite128(const WindowsVersion& version) {
    return Server(version) && version.suiteMask == 128;
}

// Kept: the home edition is told by bit 2 and not by the bit of the personal suite (512), so a plain home
// edition counts as the professional one.
bool WorkstationWithSuiteBit2(const WindowsVersion& version) {
    return Workstation(version) && (version.suiteMask & 2) != 0;
}

bool Suite2(const WindowsVersion& version) {
    return version.suiteMask == 2;
}

struct Row {
    std::uint32_t platform;
    std::int32_t major;
    std::int32_t minor;
    Test further;
    const wchar_t* code;
};

/// The first row that fits gives the code.
constexpr Row kRows[] = {
    {kWin32s, kAny, kAny, Always, L"WIN31"}, {kWindows, kAny, 0, ServiceHasC, L"95OS2"},
    {kWindows, kAny, 0, Always, L"WIN95"},   {kWindows, kAny, 10, ServiceHasA, L"98SEC"},
    {kWindows, kAny, 10, Always, L"WIN98"},  {kWindows, kAny, 90, Always, L"WINME"},
    {kNT, 3, 0, Always, L"NTV30"},           {kNT, 3, 1, Always, L"NTV31"},
    {kNT, 3, 5, Always, L"NTV35"},           {kNT, 3, 51, Always, L"NT351"},
    {kNT, 4, kAny, Always, L"NTV40"},        {kNT, 5, 0, Workstation, L"00PRO"},
    {kNT, 5, 0, ServerOfSuite2, L"00ADV"},   {kNT, 5, 0, ServerOfSuite128, L"00DCE"},
    {kNT, 5, 0, Server, L"00SVR"},           {kNT, 5, 1, WorkstationWithSuiteBit2, L"XPHOM"},
    {kNT, 5, 1, Workstation, L"XPPRO"},      {kNT, 5, 1, Suite2, L"XPNET"},
    {kNT, 5, 1, Always, L"XPSVR"},
};

bool Fits(std::int32_t wanted, std::uint32_t number) {
    return wanted == kAny || static_cast<std::uint32_t>(wanted) == number;
}

}  // namespace

std::wstring WindowsCodeOf(const WindowsVersion& version, std::wstring_view current) {
    for (const Row& row : kRows) {
        if (row.platform == version.platform && Fits(row.major, version.major) &&
            Fits(row.minor, version.minor) && row.further(version)) {
            return row.code;
        }
    }
    return current.empty() ? L"02UNK" : std::wstring(current);
}

}  // namespace kestrelguard
