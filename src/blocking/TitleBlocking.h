#pragma once

#include <optional>
#include <string>

#include "blocking/BrowserNodes.h"
#include "controls/Controls.h"
#include "controls/MessageBoxes.h"
#include "runtime/RunTimeError.h"
#include "runtime/System.h"
#include "runtime/TextSet.h"

namespace kestrelguard {

/// The title filter: the banned keywords, and the page that takes the place of one whose title holds any.
class TitleBlocking {
 public:
    /// What the filter reads and writes; all of it outlives the filter.
    struct Parts {
        CheckBox& blockTitles;  // KG_C(1)
        TextBox& titleBan;
        TextSet& titleKeywordSet;  // what the filter acts on; an edit of the text box does not touch it
        Switch& applyCmd;
        BrowserNodes& nodes;
        MessageBoxes& boxes;
        Locale& locale;
    };

    explicit TitleBlocking(Parts parts) : m_parts(parts) {}

    /// Any edit of the keyword text: marks it and enables Apply.
    void TitleBan_Change();

    /// What Apply does first: builds `titleKeywordSet` anew when the text was edited since the last time.
    /// Throws kDuplicateKey at a piece that repeats an earlier one; the text then counts as edited still.
    void RebuildTitleKeywords();

    /// Shows the title in the tree; replaces the page when the lower-cased title holds a keyword. A page that
    /// cannot be replaced is told in a box. Errors of the tree reach the caller.
    void IEEvents1_TitleChange(Browser& browser, const std::wstring& title);

    bool TitleKeywordsDirty() const noexcept { return m_titleKeywordsDirty; }

 private:
    std::optional<std::wstring> KeywordIn(const std::wstring& title) const;
    std::wstring BlockedPage(const Browser& browser, const std::wstring& keyword) const;
    void TellError(const RunTimeError& error, const std::wstring& title);

    Parts m_parts;
    bool m_titleKeywordsDirty = false;
};

}  // namespace kestrelguard
