#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeDesktop.h"
#include "monitoring/win32/ComBrowser.h"

namespace kestrelguard {

using namespace fakes;

namespace {

class ComBrowserTest : public testing::Test {
 protected:
    const ComApartment apartment;
    const ComPtr<FakeBrowser> window = MakeCom<FakeBrowser>(655412);
};

TEST_F(ComBrowserTest, PropertiesAreReadInFull) {
    window->name = std::wstring(L"a\0b", 3);
    window->url = L"http://x.example/";
    window->status = L"";
    const ComBrowser browser(window.Get());
    EXPECT_EQ(655412, browser.Handle());
    EXPECT_EQ(std::wstring(L"a\0b", 3), browser.LocationName());
    EXPECT_EQ(L"http://x.example/", browser.LocationURL());
    EXPECT_EQ(L"", browser.StatusText());
}

TEST_F(ComBrowserTest, NavigationOmitsTheOptionalArguments) {
    ComBrowser browser(window.Get());
    const std::wstring address(L"about:\0\xFFFDx", 9);
    browser.Navigate(address);
    browser.Navigate2(address);
    ASSERT_EQ(2U, window->navigations.size());
    EXPECT_FALSE(window->navigations[0].second);
    EXPECT_TRUE(window->navigations[1].second);
    for (const auto& navigation : window->navigations) {
        EXPECT_EQ(address, navigation.address);
        ASSERT_EQ(4U, navigation.optional.size());
        for (const VARIANT& omitted : navigation.optional) {
            EXPECT_EQ(VT_ERROR, omitted.vt);
            EXPECT_EQ(DISP_E_PARAMNOTFOUND, omitted.scode);
        }
    }
}

template <class Action>
RunTimeError Thrown(Action&& action) {
    try {
        action();
    } catch (const RunTimeError& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was thrown";
    return RunTimeError(0);
}

TEST_F(ComBrowserTest, AFailedCallIsThrownWithItsNumberAndDescription) {
    window->failure = HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
    ComBrowser browser(window.Get());
    EXPECT_EQ(window->failure, Thrown([&] { browser.Handle(); }).Number());
    EXPECT_EQ(window->failure, Thrown([&] { browser.LocationName(); }).Number());
    EXPECT_EQ(window->failure, Thrown([&] { browser.LocationURL(); }).Number());
    EXPECT_EQ(window->failure, Thrown([&] { browser.StatusText(); }).Number());
    EXPECT_EQ(window->failure, Thrown([&] { browser.Navigate(L"x"); }).Number());
    window->description = L"gone for good";
    const RunTimeError error = Thrown([&] { browser.Navigate2(L"x"); });
    EXPECT_EQ(window->failure, error.Number());
    EXPECT_EQ(L"gone for good", error.Description());
}

TEST_F(ComBrowserTest, AnOldDescriptionIsNotTakenForANewFailure) {
    LeaveErrorInfo(RunTimeError(5, L"somebody else's"));
    window->failure = E_FAIL;
    const ComBrowser browser(window.Get());
    EXPECT_NE(L"somebody else's", Thrown([&] { browser.Handle(); }).Description());
}

TEST_F(ComBrowserTest, NoBrowserIsAnObjectThatIsNotSet) {
    const ComBrowser browser(nullptr);
    EXPECT_EQ(RunTimeError::kObjectNotSet, Thrown([&] { browser.Handle(); }).Number());
}

TEST_F(ComBrowserTest, ItHoldsOneReference) {
    {
        const ComBrowser browser(window.Get());
        EXPECT_EQ(2U, window->References());
        const std::vector<ComBrowser> copies(2, browser);
        EXPECT_EQ(4U, window->References());
    }
    EXPECT_EQ(1U, window->References());
}

TEST_F(ComBrowserTest, ErrorsTravelAsHResultsAndComeBack) {
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), HResultOf(RunTimeError(6)));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0000 | 35602), HResultOf(RunTimeError(35602)));
    EXPECT_EQ(E_ACCESSDENIED, HResultOf(RunTimeError(E_ACCESSDENIED)));
    EXPECT_TRUE(FAILED(HResultOf(RunTimeError(0))));
    const RunTimeError own(457, L"taken");
    LeaveErrorInfo(own);
    const RunTimeError back = TakeRunTimeError(HResultOf(own));
    EXPECT_EQ(457, back.Number());
    EXPECT_EQ(L"taken", back.Description());
    // The description is taken away with it.
    EXPECT_EQ(DescriptionOf(457), TakeRunTimeError(HResultOf(own)).Description());
    EXPECT_EQ(35602, TakeRunTimeError(HResultOf(RunTimeError(35602))).Number());
    EXPECT_EQ(S_OK, AtComMethod([] {}));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0007), AtComMethod([] { throw std::bad_alloc(); }));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), AtComMethod([] { throw 1; }));
}

TEST_F(ComBrowserTest, TheTextOfAnArgument) {
    const Bstr text(std::wstring(L"a\0b", 3));
    BSTR reference = text.Get();
    VARIANT plain = Text(text.Get());
    VARIANT outer = Ref(&plain);
    VARIANT byRef = Of(VT_BYREF | VT_BSTR);
    byRef.pbstrVal = &reference;
    EXPECT_EQ(std::wstring(L"a\0b", 3), TextOf(plain));
    EXPECT_EQ(std::wstring(L"a\0b", 3), TextOf(outer));
    EXPECT_EQ(std::wstring(L"a\0b", 3), TextOf(byRef));
    EXPECT_EQ(L"", TextOf(Text(nullptr)));
    EXPECT_EQ(L"", TextOf(Of(VT_EMPTY)));
    EXPECT_EQ(L"12", TextOf(Long(12)));
    EXPECT_EQ(RunTimeError::kTypeMismatch, Thrown([&] { TextOf(Object(window.Get())); }).Number());
    EXPECT_EQ(RunTimeError::kTypeMismatch, Thrown([&] { TextOf(Ref(nullptr)); }).Number());
}

}  // namespace

}  // namespace kestrelguard
