#pragma once

#include <string>

#include "blocking/BrowserNodes.h"
#include "blocking/SiteList.h"
#include "controls/Controls.h"
#include "controls/Lists.h"
#include "runtime/TextSet.h"

namespace kestrelguard {

/// The site filter: the user's list of blocked sites, and the navigations that it cancels.
class SiteBlocking {
 public:
    /// What the filter reads and writes; all of it outlives the filter.
    struct Parts {
        CheckBox& blockSites;  // KG_C(0)
        TextBox& siteTXT;
        SiteList& siteLST;
        ListSelection& siteSelection;  // the selected row of siteLST
        TextSet& siteSet;              // only there to refuse duplicates
        BrowserNodes& nodes;
    };

    explicit SiteBlocking(Parts parts) : m_parts(parts) {}

    /// Appends the entered site, lower-cased, to the list. Takes effect with the next navigation.
    void AddSite_Click();

    /// Removes the selected row, unless its text is empty.
    void RemoveSite_Click();

    /// Shows the address in the tree; sets `cancel` when any row of the list occurs in the lower-cased
    /// address, and leaves it as it is otherwise. Errors of the tree reach the caller.
    void IEEvents1_BrowserNavigating(Browser& browser, const std::wstring& address, bool& cancel);

 private:
    Parts m_parts;
};

}  // namespace kestrelguard
