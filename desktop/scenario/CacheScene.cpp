// The cache window: everything, the cookies alone, and an entry that is looked for.

#include "desktop/scenario/CacheStage.h"
//
#include <algorithm>

namespace kestrelguard::desktop::scenario {

namespace {

using Texts = std::vector<std::wstring>;

constexpr wchar_t kCaption[] = L"Kestrelguard v2.0 - IE Cache Details and Advanced Configuration";

/// The control of that class whose text begins so.
HWND ThatBegins(HWND window, const wchar_t* type, const std::wstring& start) {
    for (const HWND child : testing::Inside(window)) {
        if (lstrcmpiW(testing::ClassOf(child).c_str(), type) == 0 &&
            testing::TextOf(child).compare(0, start.size(), start) == 0) {
            return child;
        }
    }
    return nullptr;
}

Texts Sorted(Texts texts) {
    std::sort(texts.begin(), texts.end());
    return texts;
}

}  // namespace

void PlayCache(Stage& stage) {
    Transcript& say = stage.transcript;

    say.Step(L"Three pages and two cookies lie in the browser's cache.");
    PrepareCache(stage);
    MakeEntry(say, "http://www.news.example/index.html", "The Morning News");
    const std::string kestrel = MakeEntry(say, "http://www.news.example/kestrel.gif", "a picture");
    MakeEntry(say, "http://www.garden.example/", "Garden Diary");
    MakeEntry(say, "Cookie:jane@shop.example/", "a cookie");
    MakeEntry(say, "Cookie:jane@bank.example/", "another cookie");

    say.Step(L"kestrelguard.exe starts, and \"Show Cache\" is pressed on its page for cleaning.");
    const auto guard = StartGuard(stage);
    testing::ClickTab(guard->Tabs(), 2);
    testing::WaitUntil([&] { return testing::SelectedTab(guard->Tabs()) == 2; });
    testing::Click(guard->Button(L"Show Cache"));
    const HWND window = testing::WaitTop(guard->Program().Id(), [](HWND top) {
        return testing::TextOf(top) == kCaption && IsWindowVisible(top);
    });
    if (!say.Expect(window != nullptr, std::wstring(L"the window: ") + kCaption)) {
        return;
    }
    const HWND entries = testing::FindInside(window, L"ListBox");
    const auto picture = [&](const wchar_t* name) {
        SetForegroundWindow(window);
        const RECT part = testing::RectOf(window);
        say.Picture(name, &part);
    };
    const auto count = [&] {
        return testing::TextOf(ThatBegins(window, L"Static", L"Internet Explorer Cache"));
    };
    const auto details = [&] { return testing::TextOf(ThatBegins(window, L"Static", L"Cache File:")); };
    const Texts all = testing::ListRows(entries);
    ShowLines(say, L"the list", all);
    say.Expect(Sorted(all) == Texts{L"Cookie:jane@bank.example/", L"Cookie:jane@shop.example/",
                                    L"http://www.garden.example/", L"http://www.news.example/index.html",
                                    L"http://www.news.example/kestrel.gif"},
               L"all five entries are listed");
    say.Expect(count() == L"Internet Explorer Cache 5 Files; 2 Cookies...", count());
    picture(L"cache-all");

    say.Step(L"\"Cookies\" is pressed.");
    testing::ClickAndWait(testing::FindInside(window, L"Button", L"Cookies"));
    const Texts cookies = testing::ListRows(entries);
    ShowLines(say, L"the list", cookies);
    say.Expect(Sorted(cookies) == Texts{L"Cookie:jane@bank.example/", L"Cookie:jane@shop.example/"},
               L"the cookies alone are listed");
    picture(L"cache-cookies");

    say.Step(L"\"All Cache\" is pressed, and \"kestrel.gif\" is looked for.");
    testing::ClickAndWait(testing::FindInside(window, L"Button", L"All Cache"));
    const HWND field = testing::FindInside(window, L"Edit");
    testing::TypeText(field, L"kestrel.gif");
    testing::Click(GetDlgItem(window, testing::IdOf(field) + 1));
    testing::MessageBoxSeen box;
    const auto found = [&] {
        const Texts rows = testing::ListRows(entries);
        const int row = testing::SelectedRow(entries);
        return row >= 0 && static_cast<std::size_t>(row) < rows.size() &&
               rows[static_cast<std::size_t>(row)] == L"http://www.news.example/kestrel.gif";
    };
    testing::WaitUntil([&] {
        box = testing::FindMessageBox(guard->Program().Id());
        return box || found();
    });
    // A match in the last row tells at once that there are no more.
    if (box || all.back() == L"http://www.news.example/kestrel.gif") {
        box = testing::WaitMessageBox(guard->Program().Id());
        ShowLines(say, box.caption, {box.text});
        testing::Dismiss(box);
    }
    say.Expect(found(), L"http://www.news.example/kestrel.gif is selected");
    const std::wstring file(kestrel.begin(), kestrel.end());
    Texts lines;
    for (const wchar_t c : details()) {
        if (lines.empty() || c == L'\n') {
            lines.emplace_back();
        }
        if (c != L'\r' && c != L'\n') {
            lines.back() += c;
        }
    }
    ShowLines(say, L"its details", lines);
    say.Expect(details().find(file.substr(0, 75)) != std::wstring::npos, L"they name its file");
    say.Expect(details().find(L"Last accessed: ") != std::wstring::npos, L"and when it was last used");
    picture(L"cache-found");

    say.Step(L"The cookie of the bank is saved, and the window is closed.");
    testing::ClickAndWait(testing::FindInside(window, L"Button", L"Cookies"));
    const Texts rows = testing::ListRows(entries);
    const auto bank = std::find(rows.begin(), rows.end(), L"Cookie:jane@bank.example/");
    testing::SelectRow(entries, bank == rows.end() ? -1 : static_cast<int>(bank - rows.begin()));
    testing::ClickAndWait(testing::FindInside(window, L"Button", L"Save ->"));
    PostMessageW(window, WM_CLOSE, 0, 0);
    say.Expect(testing::WaitUntil([&] { return !IsWindow(window); }), L"it is gone");
    ShowLines(say, L"KestrelC.CFG", LinesOf(stage.folder.Cookies()));
    say.Expect(stage.folder.Cookies().find("Cookie:jane@bank.example/\r\n") != std::string::npos,
               L"the cookie is in the file");
    say.Expect(guard->Close(), L"the program has ended");
    CacheFiller::Empty();
}

}  // namespace kestrelguard::desktop::scenario
