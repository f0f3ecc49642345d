#include "blocking/TitleBlocking.h"

#include "blocking/Texts.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/Maker.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"

namespace kestrelguard {

void TitleBlocking::TitleBan_Change() {
    m_titleKeywordsDirty = true;
    if (!m_parts.applyCmd.Enabled()) {
        m_parts.applyCmd.SetEnabled(true);
    }
}

void TitleBlocking::RebuildTitleKeywords() {
    if (!m_titleKeywordsDirty) {
        return;
    }
    m_parts.titleKeywordSet.Clear();
    const std::wstring text = LowerCase(m_parts.titleBan.Text());
    // Kept: pieces are not trimmed, an empty one counts, and a repeated one ends the rebuild with its error.
    for (const std::wstring_view piece : Split(text, blocking_texts::kKeywordSeparator)) {
        m_parts.titleKeywordSet.Add(piece);
    }
    m_titleKeywordsDirty = false;
}

void TitleBlocking::IEEvents1_TitleChange(Browser& browser, const std::wstring& title) {
    m_parts.nodes.SetBrowserNodeText(browser, blocking_texts::kTitleKind, blocking_texts::kTitleNode + title);
    if (!m_parts.blockTitles.Ticked() || m_parts.titleKeywordSet.Empty() || m_parts.titleBan.Text().empty()) {
        return;
    }
    // A copy of our own: calls to a browser let other events in, which may rebuild the keywords.
    const std::optional<std::wstring> keyword = KeywordIn(title);
    if (!keyword) {
        return;
    }
    const std::wstring page = BlockedPage(browser, *keyword);
    try {
        browser.Navigate(page);
    } catch (const RunTimeError& error) {
        ErrorsIgnored([&] { TellError(error, title); });
    }
}

/// The first keyword that occurs in the lower-cased title; nothing when there is none.
std::optional<std::wstring> TitleBlocking::KeywordIn(const std::wstring& title) const {
    const std::wstring lowerTitle = LowerCase(title);
    for (const std::wstring& keyword : m_parts.titleKeywordSet) {
        if (Contains(lowerTitle, keyword)) {
            return keyword;
        }
    }
    return std::nullopt;
}

/// The address of the generated page. What cannot be read stays empty in it: the page is blocked even so.
std::wstring TitleBlocking::BlockedPage(const Browser& browser, const std::wstring& keyword) const {
    std::wstring address;
    std::wstring time;
    ErrorsIgnored([&] { address = browser.LocationURL(); },  //
                  [&] { time = m_parts.locale.GeneralDateNow(); });
    std::wstring page = blocking_texts::kPageBeforeProduct;
    page += maker::kProductPage;
    page += blocking_texts::kPageBeforeKeyword;
    page += keyword;
    page += blocking_texts::kPageBeforeAddress;
    page += address;
    page += blocking_texts::kPageBeforeTime;
    page += time;
    page += blocking_texts::kPageEnd;
    return page;
}

void TitleBlocking::TellError(const RunTimeError& error, const std::wstring& title) {
    std::wstring text = blocking_texts::kErrorBeforeNumber;
    text += Decimal(error.Number());
    text += blocking_texts::kErrorBeforeEmail;
    text += maker::kSupportEmail;
    text += blocking_texts::kErrorAfterEmail;
    text += error.Description();
    text += blocking_texts::kErrorBeforeTitle;
    text += title;
    m_parts.boxes.Show(text, blocking_texts::kErrorCaption, box_style::kNotice);
}

}  // namespace kestrelguard
