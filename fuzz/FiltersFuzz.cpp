#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "blocking/FakeBrowserNodes.h"
#include "blocking/SiteBlocking.h"
#include "blocking/TitleBlocking.h"
#include "controls/Fakes.h"
#include "runtime/Maker.h"
#include "runtime/Text.h"

namespace kestrelguard {
namespace {

using Texts = std::vector<std::wstring>;

bool Has(const Texts& texts, const std::wstring& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// The first of the texts that occurs in the lower-cased other; null when none does.
const std::wstring* FirstIn(const std::wstring& other, const Texts& texts) {
    const std::wstring lower = LowerCase(other);
    for (const std::wstring& text : texts) {
        if (lower.find(text) != std::wstring::npos) {
            return &text;
        }
    }
    return nullptr;
}

/// The title filter beside a plain definition of what it does.
class Titles {
 public:
    void Tick(int value) { m_blockTitles.value = value; }
    void Edit(const std::wstring& text) {
        m_titleBan.text = text;
        m_blocking.TitleBan_Change();
        m_dirty = true;
        Require(m_applyCmd.enabled);
    }
    void Apply() {
        const bool repeated = m_dirty && RebuildByDefinition();
        bool thrown = false;
        try {
            m_blocking.RebuildTitleKeywords();
        } catch (const RunTimeError& error) {
            thrown = error.Number() == RunTimeError::kDuplicateKey;
            Require(thrown);
        }
        Require(thrown == repeated);
        Require(m_blocking.TitleKeywordsDirty() == m_dirty);
        Require(Texts(m_keywordSet.begin(), m_keywordSet.end()) == m_keywords);
    }
    void Change(const std::wstring& title, const std::wstring& address, bool refused) {
        constexpr std::int32_t kRefusal = 4711;
        m_nodes.written.clear();
        m_boxes.shown.clear();
        FakeBrowser browser;
        browser.locationURL = address;
        Faults faults;
        browser.faults = &faults;
        faults.FailAt(refused ? 1 : -1, kRefusal);  // the call after the one for the address
        m_blocking.IEEvents1_TitleChange(browser, title);

        Require(m_nodes.written ==
                std::vector<FakeBrowserNodes::Written>{{&browser, L"TITLE", L"Title : " + title}});
        const bool acts = m_blockTitles.value == 1 && !m_titleBan.text.empty();
        const std::wstring* const keyword = acts ? FirstIn(title, m_keywords) : nullptr;
        Require(faults.Calls() == (keyword != nullptr ? 2 : 0));
        Require(browser.navigated ==
                (keyword != nullptr && !refused ? Texts{Page(*keyword, address)} : Texts{}));
        const bool told = keyword != nullptr && refused;
        Require(m_boxes.shown.size() == (told ? 1U : 0U));
        Require(!told || m_boxes.shown[0].text == L"Error Number: 4711, please report to " +
                                                      std::wstring(maker::kSupportEmail) + L"!\r\n" +
                                                      DescriptionOf(kRefusal) + L" " + title);
    }
    /// A keyword, if there is any.
    std::wstring Keyword(std::size_t number) const {
        return m_keywords.empty() ? std::wstring() : m_keywords[number % m_keywords.size()];
    }

 private:
    /// True when a piece repeats an earlier one, which ends the rebuild.
    bool RebuildByDefinition() {
        m_keywords.clear();
        std::wstring rest = LowerCase(m_titleBan.text);
        for (bool more = !rest.empty(); more;) {
            const std::size_t end = rest.find(L" -");
            const std::wstring piece = rest.substr(0, end);
            if (Has(m_keywords, piece)) {
                return true;
            }
            m_keywords.push_back(piece);
            more = end != std::wstring::npos;
            rest.erase(0, more ? end + 2 : 0);
        }
        m_dirty = false;
        return false;
    }
    static std::wstring Page(const std::wstring& keyword, const std::wstring& address) {
        return L"about:<html><head><title>Kestrelguard - Blocked Site Access</title></head><body><a href=" +
               std::wstring(maker::kProductPage) +
               L">Kestrelguard&#153;</a> Blocked access to the site due to keyword: <b><i>" + keyword +
               L"</i></b><BR><B>" + address + L" at 5/17/2004 3:05:09 PM</b></body></html>";
    }

    FakeCheckBox m_blockTitles;
    FakeTextBox m_titleBan;
    TextSet m_keywordSet;
    FakeSwitch m_applyCmd;
    FakeBrowserNodes m_nodes;
    FakeMessageBoxes m_boxes;
    FakeLocale m_locale;
    TitleBlocking m_blocking{
        {m_blockTitles, m_titleBan, m_keywordSet, m_applyCmd, m_nodes, m_boxes, m_locale}};
    Texts m_keywords;
    bool m_dirty = false;
};

/// The site filter beside a plain definition of what it does.
class Sites {
 public:
    void Tick(int value) { m_blockSites.value = value; }
    void Add(const std::wstring& text) {
        m_siteTXT.text = text;
        m_blocking.AddSite_Click();
        if (!text.empty()) {
            m_rows.push_back(LowerCase(text));
        }
        Require(m_siteTXT.text.empty());
        Compare();
    }
    /// As a settings file adds it: as it stands, empty too.
    void Load(const std::wstring& text) {
        m_siteLST.Append(text);
        m_rows.push_back(text);
        Compare();
    }
    void Remove(std::size_t number) {
        const std::size_t row = number % (m_rows.size() + 1);
        m_selection.row = static_cast<std::int32_t>(row);  // the last number is that of no row
        m_blocking.RemoveSite_Click();
        if (row < m_rows.size() && !m_rows[row].empty()) {
            m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(row));
        }
        Compare();
    }
    void Navigate(const std::wstring& address) {
        FakeBrowser browser;
        const bool cancels = m_blockSites.value == 1 && FirstIn(address, m_rows) != nullptr;
        for (const bool before : {false, true}) {
            m_nodes.written.clear();
            bool cancel = before;
            m_blocking.IEEvents1_BrowserNavigating(browser, address, cancel);
            Require(cancel == (before || cancels));
            Require(m_nodes.written ==
                    std::vector<FakeBrowserNodes::Written>{{&browser, L"URL", L"URL : " + address}});
        }
    }
    /// A row, if there is any.
    std::wstring Row(std::size_t number) const {
        return m_rows.empty() ? std::wstring() : m_rows[number % m_rows.size()];
    }

 private:
    void Compare() const {
        Require(m_siteLST.Count() == static_cast<std::int32_t>(m_rows.size()));
        for (std::size_t row = 0; row < m_rows.size(); ++row) {
            Require(m_siteLST.Row(static_cast<std::int32_t>(row)) == m_rows[row]);
        }
    }

    FakeCheckBox m_blockSites;
    FakeTextBox m_siteTXT;
    FakeListDisplay m_display;
    SiteList m_siteLST{m_display};
    FakeListSelection m_selection;
    TextSet m_siteSet;
    FakeBrowserNodes m_nodes;
    SiteBlocking m_blocking{{m_blockSites, m_siteTXT, m_siteLST, m_selection, m_siteSet, m_nodes}};
    Texts m_rows;
};

/// A text between others, some of them so long that no control would show them.
std::wstring LongText(FuzzInput& input, const std::wstring& inside) {
    const std::wstring piece = input.Text();
    const std::size_t turns = input.Byte();
    std::wstring text = piece;
    for (std::size_t left = turns < 0xF0 ? 0 : (turns - 0xEF) * 100; left > 0; --left) {
        text += piece;
    }
    return text + inside + piece;
}

void Run(FuzzInput input) {
    Titles titles;
    Sites sites;
    while (!input.AtEnd()) {
        switch (input.Byte() % 10) {
            case 0:
                titles.Tick(static_cast<int>(input.Byte() % 3));
                sites.Tick(static_cast<int>(input.Byte() % 3));
                break;
            case 1:
                titles.Edit(LongText(input, L" -"));
                break;
            case 2:
                titles.Edit(input.Text());
                titles.Apply();
                break;
            case 3:
                titles.Apply();
                break;
            case 4: {
                const std::wstring title = LongText(input, titles.Keyword(input.Byte()));
                titles.Change(title, input.Text(), false);
                break;
            }
            case 5: {
                const std::wstring address = LongText(input, L"");
                const std::wstring title = input.Text();
                titles.Change(title, address, input.Byte() % 2 != 0);
                break;
            }
            case 6:
                sites.Add(input.Text());
                break;
            case 7:
                sites.Load(input.Text());
                break;
            case 8:
                sites.Remove(input.Byte());
                break;
            default:
                sites.Navigate(LongText(input, sites.Row(input.Byte())));
                break;
        }
    }
}

}  // namespace
}  // namespace kestrelguard

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrelguard::Run({data, size});
    return 0;
}
