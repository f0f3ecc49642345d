#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestrelguard::desktop {

/// A piece of a page's text, all of one look.
struct Run {
    std::wstring text;
    bool heading = false;
    bool bold = false;
    bool italic = false;
    bool button = false;     ///< drawn as a button
    bool lineBreak = false;  ///< a new line follows
    std::wstring link;       ///< where a click leads; empty for plain text
    bool newWindow = false;  ///< the click asks for a new window
};

/// A page as the stand-in's browsers show it.
struct Page {
    std::wstring title;
    std::vector<Run> runs;
    /// Windows that the page opens by itself when it has loaded.
    std::vector<std::wstring> popups;
};

/// An address as a user may type it, made whole: "www.home.example" becomes "http://www.home.example/".
std::wstring CompleteAddress(std::wstring_view typed);

/// The page at an address: one of the built-in sites, the text of an "about:" address, or a page that names
/// the host for everything else.
Page LoadPage(std::wstring_view url);

/// Reads the little HTML that the pages are written in: title, h1, p, br, hr, b, i, a (href, target=_blank),
/// button (href), and character references. Everything else is left out.
Page ParseHtml(std::wstring_view html);

/// Where a new browser starts.
inline constexpr wchar_t kHomePage[] = L"http://www.home.example/";

}  // namespace kestrelguard::desktop
