#include "app/win32/FormLayout.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

namespace kestrelguard::form_layout {
namespace {

bool Is(const ControlRow& row, const char* windowClass) {
    return lstrcmpA(row.windowClass, windowClass) == 0;
}

bool HasName(ControlId id) {
    for (const NameRow& row : kNameRows) {
        if (row.id == id) {
            return row.name[0] != L'\0';
        }
    }
    return false;
}

TEST(FormLayout, EveryControlThatCanBeReachedHasANameForScreenReaders) {
    int reached = 0;
    const ControlRow* before = nullptr;
    for (const ControlRow& row : kControls) {
        const bool button = Is(row, "Button");
        if (button || (row.style & WS_TABSTOP) != 0) {
            ++reached;
            const bool ownText = button && row.text[0] != L'\0' && row.text != std::wstring(texts::kCheck1);
            const bool label = !button && before != nullptr && Is(*before, "Static") &&
                               before->text[0] != L'\0' && row.id == kTvBrowsers;
            EXPECT_NE(ownText || label, HasName(row.id)) << row.id;
        }
        before = &row;
    }
    EXPECT_EQ(reached, 28);
}

TEST(FormLayout, TheBoxesWithoutAVisibleTextAreToldApart) {
    std::wstring names;
    for (const NameRow& row : kNameRows) {
        EXPECT_EQ(names.find(row.name), std::wstring::npos) << row.id << " is called like another";
        names += row.name;
        names += L'\n';
    }
}

}  // namespace
}  // namespace kestrelguard::form_layout
