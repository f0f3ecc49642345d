#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeDesktop.h"
#include "monitoring/win32/cBrowsers.h"

namespace kestrelguard {

/// Fills a list as the watcher does.
class BrowserListFiller {
 public:
    static void Add(cBrowsers& list, const ComPtr<fakes::FakeBrowser>& browser) {
        list.Add(ComPtr<IWebBrowser2>(browser.Get()));
    }
    static void Clear(cBrowsers& list) { list.Clear(); }
};

using namespace fakes;

namespace {

std::vector<IUnknown*> Walked(IEnumVARIANT& walk) {
    std::vector<IUnknown*> found;
    for (;;) {
        Variant entry;
        ULONG fetched = 0;
        if (walk.Next(1, entry.Put(), &fetched) != S_OK) {
            return found;
        }
        EXPECT_EQ(VT_DISPATCH, entry.Get().vt);
        found.push_back(entry.Get().punkVal);
    }
}

class ListTest : public testing::Test {
 protected:
    void Add(const ComPtr<FakeBrowser>& browser) { BrowserListFiller::Add(*list, browser); }
    HRESULT Invoke(DISPID id, Arguments arguments, Variant& result, WORD kind = DISPATCH_PROPERTYGET) {
        DISPPARAMS params = arguments.Get();
        return list->Invoke(id, IID_NULL, 0, kind, &params, result.Put(), nullptr, nullptr);
    }

    const ComApartment apartment;
    const ComPtr<FakeBrowser> first = MakeCom<FakeBrowser>(1);
    const ComPtr<FakeBrowser> second = MakeCom<FakeBrowser>(2);
    const ComPtr<cBrowsers> list = MakeCom<cBrowsers>();
};

TEST_F(ListTest, ANewListIsEmpty) {
    EXPECT_EQ(0, list->Count());
    EXPECT_TRUE(Walked(*list->NewEnum()).empty());
    EXPECT_FALSE(list->Item(1));
}

TEST_F(ListTest, ItemsCountFromOneInTheOrderOfAddition) {
    Add(first);
    Add(second);
    EXPECT_EQ(2, list->Count());
    EXPECT_EQ(static_cast<IWebBrowser2*>(first.Get()), list->Item(1).Get());
    EXPECT_EQ(static_cast<IWebBrowser2*>(second.Get()), list->Item(2).Get());
}

TEST_F(ListTest, AnIndexThatDoesNotExistGivesNothing) {
    Add(first);
    for (const std::int32_t index : {0, 2, -1, 32768, INT32_MAX, INT32_MIN}) {
        EXPECT_FALSE(list->Item(index)) << index;
    }
}

TEST_F(ListTest, TheSameBrowserTwiceIsTwoEntries) {
    Add(first);
    Add(first);
    EXPECT_EQ(2, list->Count());
    EXPECT_EQ(2U, Walked(*list->NewEnum()).size());
    EXPECT_EQ(3U, first->References());
}

TEST_F(ListTest, ClearDropsEverything) {
    Add(first);
    BrowserListFiller::Clear(*list);
    EXPECT_EQ(0, list->Count());
    EXPECT_TRUE(Walked(*list->NewEnum()).empty());
    EXPECT_EQ(1U, first->References());
}

TEST_F(ListTest, AWalkKeepsTheListItBeganWith) {
    Add(first);
    Add(second);
    auto walk = list->NewEnum();
    BrowserListFiller::Clear(*list);
    EXPECT_EQ(2U, Walked(*walk).size());
    walk.Reset();
    EXPECT_EQ(1U, first->References());
    EXPECT_EQ(1U, second->References());
}

TEST_F(ListTest, TheWalkSkipsResetsAndClones) {
    Add(first);
    Add(second);
    const auto walk = list->NewEnum();
    EXPECT_EQ(S_OK, walk->Skip(1));
    ComPtr<IEnumVARIANT> clone;
    EXPECT_EQ(S_OK, walk->Clone(clone.Put()));
    EXPECT_EQ(std::vector<IUnknown*>{static_cast<IWebBrowser2*>(second.Get())}, Walked(*clone));
    EXPECT_EQ(S_FALSE, walk->Skip(2));
    EXPECT_EQ(S_OK, walk->Reset());
    VARIANT both[3] = {};
    ULONG fetched = 0;
    EXPECT_EQ(S_FALSE, walk->Next(3, both, &fetched));
    EXPECT_EQ(2U, fetched);
    EXPECT_EQ(static_cast<IDispatch*>(first.Get()), both[0].pdispVal);
    EXPECT_EQ(static_cast<IDispatch*>(second.Get()), both[1].pdispVal);
    VariantClear(&both[0]);
    VariantClear(&both[1]);
    EXPECT_EQ(E_POINTER, walk->Next(2, both, nullptr));
    EXPECT_EQ(E_POINTER, walk->Next(1, nullptr, &fetched));
}

TEST_F(ListTest, CountKeepsSixteenBits) {
    for (int i = 0; i < 32767; ++i) {
        Add(first);
    }
    EXPECT_EQ(32767, list->Count());
    Add(first);
    try {
        list->Count();
        FAIL() << "no overflow";
    } catch (const RunTimeError& error) {
        EXPECT_EQ(RunTimeError::kOverflow, error.Number());
    }
    EXPECT_TRUE(list->Item(32768));
    Variant count;
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), Invoke(1, {}, count));
}

TEST_F(ListTest, LateBoundCallersFindTheMembers) {
    Add(first);
    wchar_t newEnum[] = L"NewEnum", underscore[] = L"_NewEnum", item[] = L"item", count[] = L"COUNT",
            add[] = L"Add", clear[] = L"Clear";
    const std::vector<std::pair<wchar_t*, DISPID>> members = {
        {newEnum, -4}, {underscore, -4}, {item, 0}, {count, 1}};
    for (const auto& [name, id] : members) {
        LPOLESTR names[] = {name};
        DISPID found = 99;
        EXPECT_EQ(S_OK, list->GetIDsOfNames(IID_NULL, names, 1, 0, &found));
        EXPECT_EQ(id, found);
    }
    for (wchar_t* name : {add, clear}) {
        LPOLESTR names[] = {name};
        DISPID found = 99;
        EXPECT_EQ(DISP_E_UNKNOWNNAME, list->GetIDsOfNames(IID_NULL, names, 1, 0, &found));
        EXPECT_EQ(DISPID_UNKNOWN, found);
    }

    Variant result;
    EXPECT_EQ(S_OK, Invoke(1, {}, result));
    EXPECT_EQ(VT_I2, result.Get().vt);
    EXPECT_EQ(1, result.Get().iVal);
    EXPECT_EQ(S_OK, Invoke(0, {Long(1)}, result, DISPATCH_METHOD));
    EXPECT_EQ(VT_DISPATCH, result.Get().vt);
    EXPECT_EQ(static_cast<IDispatch*>(first.Get()), result.Get().pdispVal);
    EXPECT_EQ(S_OK, Invoke(0, {Long(2)}, result));
    EXPECT_EQ(VT_DISPATCH, result.Get().vt);
    EXPECT_EQ(nullptr, result.Get().pdispVal);
    EXPECT_EQ(S_OK, Invoke(-4, {}, result, DISPATCH_METHOD | DISPATCH_PROPERTYGET));
    ASSERT_EQ(VT_UNKNOWN, result.Get().vt);
    EXPECT_EQ(1U, Walked(*Query<IEnumVARIANT>(result.Get().punkVal)).size());
}

TEST_F(ListTest, LateBoundCallsOfTheWrongShapeAreRefused) {
    Variant result;
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, Invoke(2, {}, result));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, Invoke(1, {}, result, DISPATCH_PROPERTYPUT));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Invoke(1, {Long(1)}, result));
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, Invoke(0, {}, result));
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Invoke(0, {Object(first.Get())}, result));
}

}  // namespace

}  // namespace kestrelguard
