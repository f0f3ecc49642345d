#include "update/win32/UpdatePlatform.h"

#include <windows.h>
//
#include <gtest/gtest.h>
#include <oleauto.h>

#include "runtime/ErrorsIgnored.h"

namespace kestrelguard {
namespace {

TEST(UpdatePlatform, TheVersionIsThatOfTheSystem) {
    OSVERSIONINFOEXA record{};
    record.dwOSVersionInfoSize = sizeof record;
    ASSERT_NE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record)), 0);
    const std::optional<WindowsVersion> version = PlatformVersion().Version();
    ASSERT_TRUE(version.has_value());
    EXPECT_EQ(version->platform, record.dwPlatformId);
    EXPECT_EQ(version->major, record.dwMajorVersion);
    EXPECT_EQ(version->minor, record.dwMinorVersion);
    const std::string service = record.szCSDVersion;
    EXPECT_EQ(version->service, std::wstring(service.begin(), service.end()));
    EXPECT_EQ(version->suiteMask, record.wSuiteMask);
    EXPECT_EQ(version->productType, record.wProductType);
}

TEST(UpdatePlatform, TheClockCountsSecondsFromTheZeroDateTime) {
    // The platform's own conversion: days since the zero date-time.
    const auto now = [] {
        SYSTEMTIME time{};
        GetSystemTime(&time);
        DOUBLE days = 0;
        SystemTimeToVariantTime(&time, &days);
        return days * 24 * 60 * 60;
    };
    const double before = now();
    const auto seconds = static_cast<double>(PlatformClock().Now());
    EXPECT_GE(seconds, before - 1.5);
    EXPECT_LE(seconds, now() + 1.5);
}

TEST(UpdatePlatform, AMissingUpdaterIsAnError) {
    EXPECT_EQ(ErrorOf([] { StartUpdaterProgram(L"/v2.0.114 /tKestrelguard"); }), RunTimeError::kFileNotFound);
}

}  // namespace
}  // namespace kestrelguard
