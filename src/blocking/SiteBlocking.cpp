#include "blocking/SiteBlocking.h"

#include "blocking/Texts.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/Text.h"

namespace kestrelguard {

void SiteBlocking::AddSite_Click() {
    const std::wstring entered = m_parts.siteTXT.Text();
    if (entered.empty()) {
        return;
    }
    const std::wstring site = LowerCase(entered);
    const std::int32_t error = ErrorOf([&] { m_parts.siteSet.Add(site); });
    // Kept: a bitwise NOT, which is zero for -1 alone. A duplicate (457) gets its row all the same.
    if (~error != 0) {
        ErrorsIgnored([&] { m_parts.siteLST.Append(site); },  //
                      [&] { m_parts.siteTXT.SetText(L""); });
    } else {
        ErrorsIgnored([&] { m_parts.siteTXT.SetText(blocking_texts::kAlreadyExists); });
    }
}

void SiteBlocking::RemoveSite_Click() {
    ErrorsIgnored([&] {
        const std::int32_t row = m_parts.siteSelection.SelectedRow();
        const std::wstring site = m_parts.siteLST.Row(row);
        if (site.empty()) {
            return;
        }
        ErrorsIgnored([&] { m_parts.siteSet.Remove(site); },  //
                      [&] { m_parts.siteLST.Remove(row); });
    });
}

void SiteBlocking::IEEvents1_BrowserNavigating(Browser& browser, const std::wstring& address, bool& cancel) {
    m_parts.nodes.SetBrowserNodeText(browser, blocking_texts::kAddressKind,
                                     blocking_texts::kAddressNode + address);
    if (m_parts.blockSites.Ticked() && m_parts.siteLST.AnyOccursIn(address)) {
        cancel = true;
    }
}

}  // namespace kestrelguard
