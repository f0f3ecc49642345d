#pragma once

#include <string>
#include <vector>

#include "blocking/BrowserNodes.h"
#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// Keeps what was written into the tree; fails when told to.
struct FakeBrowserNodes : BrowserNodes {
    struct Written {
        const Browser* browser = nullptr;
        std::wstring suffix;
        std::wstring text;
        bool operator==(const Written&) const = default;
    };
    std::vector<Written> written;
    std::int32_t error = 0;

    void SetBrowserNodeText(Browser& browser, const std::wstring& suffix, const std::wstring& text) override {
        if (error != 0) {
            throw RunTimeError(error);
        }
        written.push_back({&browser, suffix, text});
    }
};

}  // namespace kestrelguard
