#include "privacy/win32/ComUrlHistory.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>

#include <cmath>
#include <string>
#include <vector>

#include "runtime/RunTimeError.h"

namespace kestrelguard {
namespace {

/// The history of the stand-in desktop, put into the place of the platform's for this test's prefix.
class ComUrlHistoryTest : public ::testing::Test {
 protected:
    static void SetUpTestSuite() {
        const HMODULE library = LoadLibraryA("url_history.dll");
        ASSERT_NE(library, nullptr);
        const auto registration = reinterpret_cast<HRESULT(WINAPI*)()>(
            reinterpret_cast<void*>(GetProcAddress(library, "DllRegisterServer")));
        ASSERT_NE(registration, nullptr);
        ASSERT_EQ(registration(), S_OK);
    }
    ComUrlHistoryTest() {
        CoInitialize(nullptr);
        CURLHistory(platform).Clear();
    }
    ~ComUrlHistoryTest() override { CoUninitialize(); }

    static std::vector<std::wstring> Addresses(const CURLHistory& history) {
        std::vector<std::wstring> addresses;
        for (const auto& item : history) {
            addresses.push_back(item->URL());
        }
        return addresses;
    }

    ComUrlHistory platform;
};

using Texts = std::vector<std::wstring>;

TEST_F(ComUrlHistoryTest, AddsEnumeratesAndClears) {
    CURLHistory history(platform);
    EXPECT_EQ(history.Count(), 0);
    history.AddURL(L"http://news.example/", L"Caf\u00E9 \u65E5", 0);
    history.AddURL(L"http://shop.example/", L"", 0);
    EXPECT_EQ(history.Count(), 0);
    history.Refresh(L"", 0);
    ASSERT_EQ(history.Count(), 2);
    EXPECT_EQ(history.Item(1)->URL(), L"http://news.example/");
    EXPECT_EQ(history.Item(1)->Title(), L"Caf\u00E9 \u65E5");
    EXPECT_EQ(history.Item(2)->Title(), L"");
    history.Clear();
    EXPECT_EQ(history.Count(), 0);
    EXPECT_EQ(CURLHistory(platform).Count(), 0);
}

TEST_F(ComUrlHistoryTest, FiltersByTheBeginningOfTheAddress) {
    CURLHistory history(platform);
    for (const wchar_t* const address :
         {L"http://news.example/", L"http://shop.example/", L"ftp://news.example/"}) {
        history.AddURL(address, L"A page", 0);
    }
    history.Refresh(L"http://", 0);
    EXPECT_EQ(Addresses(history), (Texts{L"http://news.example/", L"http://shop.example/"}));
    history.Refresh(L"", 0);
    EXPECT_EQ(history.Count(), 3);
}

TEST_F(ComUrlHistoryTest, DeletesByItemAndByNumber) {
    CURLHistory history(platform);
    for (const wchar_t* const address : {L"http://news.example/", L"42", L"http://shop.example/"}) {
        history.AddURL(address, L"A page", 0);
    }
    history.Refresh(L"", 0);
    history.Remove(1);
    EXPECT_EQ(Addresses(history), (Texts{L"42", L"http://shop.example/"}));
    history.DeleteURL(42, 0);
    EXPECT_EQ(Addresses(history), (Texts{L"http://shop.example/"}));
    EXPECT_EQ(Addresses(CURLHistory(platform)), (Texts{L"http://shop.example/"}));
}

/// The session's time zone is not UTC (see the test's registration).
TEST_F(ComUrlHistoryTest, EachReadOfATimeShiftsItByTheZone) {
    TIME_ZONE_INFORMATION zone{};
    ASSERT_NE(GetTimeZoneInformation(&zone), TIME_ZONE_ID_INVALID);
    ASSERT_NE(zone.Bias, 0);
    CURLHistory history(platform);
    history.AddURL(L"http://news.example/", L"News", 0);
    history.Refresh(L"", 0);
    URLHistoryItem& item = *history.Item(1);
    const double first = item.LastVisited();
    const double second = item.LastVisited();
    const double third = item.LastVisited();
    const double hours = (second - first) * 24;
    EXPECT_GE(std::fabs(hours), 1.0 / 4);
    EXPECT_NEAR((third - second) * 24, hours, 1.0 / 3600);

    SYSTEMTIME now{};
    GetLocalTime(&now);
    double today = 0;
    SystemTimeToVariantTime(&now, &today);
    EXPECT_NEAR(first, today, 10.0 / (24 * 60));
    EXPECT_NEAR(item.Expires() - item.LastUpdated(), 20.0, 1.0 / 24);
}

TEST_F(ComUrlHistoryTest, AFailingCallRaisesItsResultCode) {
    for (const char* const method : {"EnumUrls", "SetFilter", "Next", "ClearHistory"}) {
        SetEnvironmentVariableA("KESTRELGUARD_HISTORY_FAIL", method);
        try {
            CURLHistory(platform).Clear();
            ADD_FAILURE() << method;
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.Number(), E_FAIL) << method;
        }
    }
    SetEnvironmentVariableA("KESTRELGUARD_HISTORY_FAIL", nullptr);
}

}  // namespace
}  // namespace kestrelguard
