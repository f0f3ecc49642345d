#pragma once

#include <string>
#include <vector>

#include "cachewindow/SavedCookies.h"
#include "controls/Fakes.h"

namespace kestrelguard {

/// The saved cookies and their file, in a folder that is none.
struct SavedCookiesWorld {
    static constexpr wchar_t kFile[] = L"KestrelC.CFG";

    std::vector<std::wstring> Saved() const { return {saved.begin(), saved.end()}; }
    void Read(const std::wstring& text) {
        folder.files[kFile] = text;
        store.SavedCookiesFile(L"Read");
    }

    FakeProgramFolder folder;
    FakeLocale locale;
    TextSet saved;
    SavedCookiesStore store{folder, locale, saved};
};

}  // namespace kestrelguard
