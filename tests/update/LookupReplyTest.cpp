#include "update/UpdateCheckFixture.h"

#include <string>

#include "runtime/Maker.h"
#include "runtime/Text.h"

namespace kestrelguard {
namespace {

// --- the look-up's reply

TEST_F(UpdateCheckTest, AReplyInOneChunkStartsTheVersionQuery) {
    LookUp();
    EXPECT_EQ(zev.calls.back(), "Close");
    EXPECT_EQ(check.Data().updateServer, L"update.kestrelguard.example");
    EXPECT_EQ(zevPli.calls, (Calls{"Close", "RemoteHost", "RemotePort", "LocalPort", "Connect"}));
    EXPECT_EQ(zevPli.remoteHost, L"update.kestrelguard.example");
    EXPECT_EQ(zevPli.remotePort, 26144);
    EXPECT_EQ(zevPli.localPort, 0);
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, ASplitBodyCompletesExactlyAtTheAnnouncedLength) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Length: 15\r\nServer: x\r\n\r\n10.9");
    EXPECT_EQ(check.Data().lookupBytes, 4);
    EXPECT_EQ(check.Data().lookupLength, 15);
    Arrive(L".8.7 ");
    Arrive(L"    ");
    EXPECT_TRUE(zevPli.calls.empty());
    Arrive(L"\r\n");
    EXPECT_EQ(zevPli.remoteHost, L"10.9.8.7");
    EXPECT_EQ(zev.calls.back(), "Close");
}

TEST_F(UpdateCheckTest, LineEndsAndOuterBlanksAreNoPartOfTheAddress) {
    LookUp(L"\r\n  update.\r\nkestrel guard.example \r\n ");
    EXPECT_EQ(check.Data().updateServer, L"update.kestrel guard.example");
}

TEST_F(UpdateCheckTest, AnOvershootNeverCompletes) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n10.9.8");
    Arrive(L".7");
    check.ZevEvents().OnClose();
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
    clock.now += 10'000;
    zev.TakeCalls();
    check.DocumentComplete(kPage);
    EXPECT_EQ(zev.TakeCalls(), Calls()) << "busy for the rest of the run";
}

TEST_F(UpdateCheckTest, AMissingPageEndsTheCheckQuietly) {
    for (const wchar_t* const status : {L"HTTP/1.1 404 Not Found", L"HTTP/1.1 404 NOT FOUND"}) {
        UpdateCheck other{With(zev, zevPli), Fresh()};
        other.DocumentComplete(kPage);
        other.ZevEvents().OnConnect();
        zev.data = std::wstring(status) + L"\r\nContent-Length: 4\r\nServer: x\r\n\r\ngone";
        other.ZevEvents().OnDataArrival(static_cast<std::int32_t>(zev.data.size()));
        EXPECT_FALSE(other.Data().checkBusy);
        EXPECT_EQ(zev.calls.back(), "Close");
    }
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(boxes.shown.empty());
}

TEST_F(UpdateCheckTest, TheMissingPageMayBeTheBodysText) {
    LookUp(L"<h1>Error 404 not found</h1>");
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, AReadFailureClosesAndEndsTheCheck) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    zev.TakeCalls();
    zev.errors["GetData"] = 10054;
    check.ZevEvents().OnDataArrival(12);
    EXPECT_EQ(zev.TakeCalls(), (Calls{"GetData", "Close"}));
    EXPECT_EQ(check.Data().lookupBytes, 12) << "counted before it is read";
    EXPECT_EQ(check.Data().lookupBuffer, L"");
    EXPECT_FALSE(Busy());
}

struct LengthCase {
    const wchar_t* rest;
    std::int32_t length;
};

class ContentLength : public UpdateCheckTest, public testing::WithParamInterface<LengthCase> {};

TEST_P(ContentLength, IsTheLeadingDigitsOfSevenCharacters) {
    check.DocumentComplete(kPage);
    Arrive(L"Content-Length: " + std::wstring(GetParam().rest));
    EXPECT_EQ(check.Data().lookupLength, GetParam().length);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ContentLength,
    testing::Values(LengthCase{L"12\r\nServer: x\r\n\r\n", 12}, LengthCase{L"1234567\r\n\r\n", 1234567},
                    LengthCase{L"123456789\r\n\r\n", 1234567}, LengthCase{L"99999999999999\r\n\r\n", 9999999},
                    LengthCase{L"-5\r\nServer: x\r\n\r\n", 0}, LengthCase{L"+5\r\nServer: x\r\n\r\n", 0},
                    LengthCase{L"1e3\r\nServer: x\r\n\r\n", 1}, LengthCase{L"2.5\r\nServer: x\r\n\r\n", 2},
                    LengthCase{L" 12\r\nServer: x\r\n\r\n", 0}, LengthCase{L"", 0}, LengthCase{L"12", 12},
                    LengthCase{L"x", 0}, LengthCase{L"12\rServer", 12}, LengthCase{L"12\nServer", 12},
                    // At the header's end digits of the body join the number.
                    LengthCase{L"12\r\n\r\n3 and more", 123}, LengthCase{L"12\r\n\r\nbody", 12}));

TEST_F(UpdateCheckTest, ANulEndsTheNumber) {
    check.DocumentComplete(kPage);
    Arrive(
        std::wstring(L"Content-Length: 1\0"
                     L"2\r\n\r\n",
                     23));
    EXPECT_EQ(check.Data().lookupLength, 1);
}

TEST_F(UpdateCheckTest, HeaderBytesAreTakenOffTheCount) {
    check.DocumentComplete(kPage);
    // 24 characters up to the end of the header, which begins at position 21.
    Arrive(L"Content-Length: 1234\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupBytes, 4);
}

TEST_F(UpdateCheckTest, AHeaderWithoutItsEndTakesThreeOffTheCount) {
    check.DocumentComplete(kPage);
    Arrive(L"Content-Length: 1234\r\n");
    EXPECT_EQ(check.Data().lookupBytes, 22 - 3);
    Arrive(L"\r\nbody");
    EXPECT_EQ(check.Data().lookupBytes, 22 - 3 + 6);
    EXPECT_EQ(check.Data().lookupLength, 1234);
}

TEST_F(UpdateCheckTest, AHeaderBeforeTheChunkOfTheLengthStaysInTheCount) {
    check.DocumentComplete(kPage);
    Arrive(L"HTTP/1.1 200 OK\r\n");
    Arrive(L"Content-Length: 4\r\nA: b\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupBytes, 17 + 4);
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, AHeaderEndBeforeTheLengthOfTheSameChunkCounts) {
    check.DocumentComplete(kPage);
    Arrive(L"\r\n\r\nContent-Length: 9\r\n\r\n");
    EXPECT_EQ(check.Data().lookupBytes, 25 - 4);
}

TEST_F(UpdateCheckTest, ALengthSplitWithinItsNameIsNotSeen) {
    check.DocumentComplete(kPage);
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Len");
    Arrive(L"gth: 4\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupLength, 0);
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, TheNameOfTheLengthIsCaseSensitive) {
    check.DocumentComplete(kPage);
    Arrive(L"HTTP/1.1 200 OK\r\ncontent-length: 4\r\n\r\nbody");
    EXPECT_EQ(check.Data().lookupLength, 0);
    EXPECT_TRUE(Busy());
}

// By the numbered arithmetic a page cut in two completes exactly when the first piece holds the whole
// header, or when the second one holds the name of the length and the header's bytes before it happen to
// even out. Here they never do.
TEST_F(UpdateCheckTest, APageCutAnywhereCompletesExactlyWhenTheFirstPieceHoldsTheHeader) {
    const std::wstring page = Page(L"update.kestrelguard.example");
    const std::size_t headerSize = page.find(L"\r\n\r\n") + 4;
    for (std::size_t cut = 1; cut < page.size(); ++cut) {
        FakeWinsock first;
        FakeWinsock second;
        UpdateCheck one{With(first, second), Fresh()};
        one.DocumentComplete(kPage);
        one.ZevEvents().OnConnect();
        for (const std::wstring& piece : {page.substr(0, cut), page.substr(cut)}) {
            first.data = piece;
            one.ZevEvents().OnDataArrival(static_cast<std::int32_t>(piece.size()));
        }
        EXPECT_EQ(second.remoteHost == L"update.kestrelguard.example", cut >= headerSize) << cut;
        EXPECT_TRUE(one.Data().checkBusy) << cut;
        EXPECT_EQ(one.Data().lookupBuffer, page) << cut;
    }
}

TEST_F(UpdateCheckTest, APageByteByByteStaysBusy) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    const std::wstring page = Page(L"update.kestrelguard.example");
    for (const wchar_t byte : page) {
        Arrive(std::wstring(1, byte));
    }
    EXPECT_TRUE(zevPli.calls.empty());
    EXPECT_TRUE(Busy());
    EXPECT_EQ(check.Data().lookupBuffer, page);
}

TEST_F(UpdateCheckTest, WithoutAHeaderEndTheAddressBeginsAtTheFourthCharacter) {
    check.DocumentComplete(kPage);
    // 18 bytes, no end of the header: 18 - 3 = 15.
    Arrive(L"Content-Length: 15");
    EXPECT_EQ(check.Data().updateServer, L"tent-Length: 15");
    EXPECT_EQ(zevPli.remoteHost, L"tent-Length: 15");
}

TEST_F(UpdateCheckTest, AnEmptyBodyLeavesAnEmptyServer) {
    zevPli.errors["Connect"] = 10049;
    LookUp(L"");
    EXPECT_EQ(zevPli.calls, (Calls{"Close", "RemoteHost", "RemotePort", "LocalPort", "Connect", "Close"}));
    EXPECT_FALSE(Busy());
}

TEST_F(UpdateCheckTest, ASecondLookupAppends) {
    LookUp(L"one.example");
    const std::wstring first = check.Data().lookupBuffer;
    check.ZevPliEvents().OnError(10061, L"refused");
    EXPECT_FALSE(Busy());
    zevPli.TakeCalls();

    clock.now += 3601;
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(Page(L"two.example"));
    EXPECT_EQ(check.Data().lookupBuffer, first + Page(L"two.example"));
    EXPECT_EQ(check.Data().lookupBytes, 22) << "both bodies";
    EXPECT_EQ(zevPli.TakeCalls(), Calls());
    EXPECT_TRUE(Busy());
}

TEST_F(UpdateCheckTest, ASecondLookupAfterOneWithoutDataCompletes) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnError(10061, L"refused");
    clock.now += 3601;
    LookUp();
    EXPECT_EQ(zevPli.remoteHost, L"update.kestrelguard.example");
}

TEST_F(UpdateCheckTest, AnEndlessHeaderIsNotCollectedForEver) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    const std::wstring line(4096, L'x');
    int chunks = 0;
    while (zev.calls.back() != "Close" && chunks < 10'000) {
        Arrive(line);
        ++chunks;
    }
    EXPECT_EQ(zev.calls.back(), "Close");
    EXPECT_LE(check.Data().lookupBuffer.size(), UpdateCheck::kTolerance);
    EXPECT_GT(check.Data().lookupBuffer.size(), UpdateCheck::kTolerance - 2 * line.size());
    EXPECT_TRUE(Busy()) << "a reply whose count never matches";
    EXPECT_TRUE(zevPli.calls.empty());
}

TEST_F(UpdateCheckTest, AnEndlessBodyIsNotCollectedForEver) {
    check.DocumentComplete(kPage);
    check.ZevEvents().OnConnect();
    Arrive(L"HTTP/1.1 200 OK\r\nContent-Length: 9999999\r\n\r\n");
    const std::wstring chunk(65'536, L'b');
    for (int chunks = 0; zev.calls.back() != "Close" && chunks < 1000; ++chunks) {
        Arrive(chunk);
    }
    EXPECT_EQ(zev.calls.back(), "Close");
    EXPECT_LE(check.Data().lookupBuffer.size(), UpdateCheck::kTolerance);
    EXPECT_TRUE(Busy());
}

}  // namespace
}  // namespace kestrelguard
