#pragma once

#include <string>

#include "runtime/Browser.h"

namespace kestrelguard {

/// The nodes of the tree of browsers, as far as the filters write them.
class BrowserNodes {
 public:
    virtual ~BrowserNodes() = default;
    /// Sets the text of a browser's detail node; `suffix` is "URL" or "TITLE". A browser that the tree does
    /// not show changes nothing.
    virtual void SetBrowserNodeText(Browser& browser, const std::wstring& suffix,
                                    const std::wstring& text) = 0;
};

}  // namespace kestrelguard
