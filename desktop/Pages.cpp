#include "desktop/Pages.h"

#include <algorithm>
#include <cwctype>
#include <map>

namespace kestrelguard::desktop {

namespace {

struct Site {
    const wchar_t* url;
    const wchar_t* html;
};

// The sites of the stand-in's little web.
constexpr Site kSites[] = {
    {L"http://www.home.example/",
     L"<title>Home</title><h1>Welcome</h1>"
     L"<p>A small web to try the guard on. Point at a link and the status bar shows where it leads."
     L"<p><a href=http://www.news.example/>The morning news</a><br>"
     L"<a href=http://www.garden.example/ target=_blank>Garden diary (asks for a new window)</a><br>"
     L"<a href=http://popups.example/>A page that opens windows by itself</a><br>"
     L"<a href=http://www.casino.example/>Casino Royal</a><br>"
     L"<a href=http://videos.example/>Free videos</a>"
     L"<p><button href=http://www.offers.example/>Today&#39;s offer</button>"},
    {L"http://www.news.example/",
     L"<title>The Morning News</title><h1>The Morning News</h1>"
     L"<p><b>Kestrel seen over the market place.</b> Early shoppers stopped and looked up."
     L"<p><a href=http://www.news.example/weather.html>Weather: fair, later rain</a><br>"
     L"<a href=http://ads.news.example/subscribe.html target=_blank>Subscribe (asks for a new window)</a>"
     L"<p><a href=http://www.home.example/>Home</a>"},
    {L"http://www.news.example/weather.html",
     L"<title>The Morning News - Weather</title><h1>Weather</h1><p>Fair in the morning, <i>rain</i> by four."
     L"<p><a href=http://www.news.example/>Back to the front page</a>"},
    {L"http://www.garden.example/",
     L"<title>Garden Diary</title><h1>Garden Diary</h1><p>The beans are up. So are the snails."
     L"<p><a href=http://www.home.example/>Home</a>"},
    {L"http://popups.example/",
     L"<title>Open Sesame</title><h1>Open Sesame</h1><p>This page has just tried to open two more windows."
     L"<p><a href=http://www.home.example/>Home</a>"
     L"<popup href=http://www.offers.example/><popup href=http://www.casino.example/banner.html>"},
    {L"http://www.offers.example/",
     L"<title>Today&#39;s Offer</title><h1>Only today!</h1><p>Three for the price of <b>four</b>."
     L"<p><button href=http://www.offers.example/more.html>More offers</button>"},
    {L"http://www.casino.example/",
     L"<title>Casino Royal</title><h1>Casino Royal</h1><p>Place your bets."
     L"<p><a href=http://www.home.example/>Home</a>"},
    {L"http://videos.example/",
     L"<title>Free XXX Videos</title><h1>Free videos</h1><p>A page whose title holds a banned word."
     L"<p><a href=http://www.home.example/>Home</a>"},
};

std::wstring Lower(std::wstring_view text) {
    std::wstring lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return lower;
}

bool StartsWith(std::wstring_view text, std::wstring_view start) {
    return text.substr(0, start.size()) == start;
}

/// What browsers show for the character references 128 to 159, which mean the characters of code page 1252.
wchar_t OfCodePage1252(unsigned long number) {
    static constexpr wchar_t kCharacters[32] = {
        0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
    return kCharacters[number - 128];
}

/// Replaces the character references of a text and runs its blanks together.
std::wstring PlainText(std::wstring_view text) {
    static const std::map<std::wstring, wchar_t> kNamed = {{L"amp", L'&'},  {L"lt", L'<'},   {L"gt", L'>'},
                                                           {L"quot", L'"'}, {L"nbsp", 0xA0}, {L"copy", 0xA9}};
    std::wstring plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        wchar_t c = text[i];
        if (c == L'&') {
            const std::size_t end = text.find(L';', i);
            if (end != std::wstring_view::npos && end - i <= 8) {
                const std::wstring name(text.substr(i + 1, end - i - 1));
                if (name.size() > 1 && name[0] == L'#' && std::iswdigit(static_cast<wint_t>(name[1]))) {
                    const unsigned long number = std::wcstoul(name.c_str() + 1, nullptr, 10);
                    c = number >= 128 && number < 160 ? OfCodePage1252(number) : static_cast<wchar_t>(number);
                    i = end;
                } else if (const auto found = kNamed.find(name); found != kNamed.end()) {
                    c = found->second;
                    i = end;
                }
            }
        } else if (c == L'\r' || c == L'\n' || c == L'\t') {
            c = L' ';
        }
        if (c != L' ' || plain.empty() || plain.back() != L' ') {
            plain += c;
        }
    }
    return plain;
}

/// The value of an attribute inside a tag's text, quoted or not; empty when it has none.
std::wstring Attribute(std::wstring_view tag, std::wstring_view name) {
    const std::wstring wanted = L" " + std::wstring(name) + L"=";
    const std::size_t found = Lower(tag).find(wanted);
    if (found == std::wstring::npos) {
        return {};
    }
    std::wstring_view rest = tag.substr(found + wanted.size());
    if (!rest.empty() && (rest[0] == L'"' || rest[0] == L'\'')) {
        const std::size_t end = rest.find(rest[0], 1);
        return PlainText(rest.substr(1, end == std::wstring_view::npos ? end : end - 1));
    }
    return PlainText(rest.substr(0, rest.find_first_of(L" \t\r\n")));
}

/// Turns tags and texts into runs.
class Reader {
 public:
    void Text(std::wstring_view raw) {
        const std::wstring text = PlainText(raw);
        if (m_inTitle) {
            m_page.title += text;
        } else if (!text.empty() && !(text == L" " && AtLineStart())) {
            Run run = m_look;
            run.text = text;
            m_page.runs.push_back(std::move(run));
        }
    }

    void Tag(std::wstring_view tag) {
        const std::wstring name = Lower(tag.substr(0, tag.find_first_of(L" \t\r\n/", 1)));
        if (name == L"title" || name == L"/title") {
            m_inTitle = name[0] != L'/';
        } else if (name == L"b" || name == L"/b") {
            m_look.bold = name[0] != L'/';
        } else if (name == L"i" || name == L"/i") {
            m_look.italic = name[0] != L'/';
        } else if (name == L"h1" || name == L"/h1") {
            m_look.heading = name[0] != L'/';
            BreakLine();
        } else if (name == L"a" || name == L"button") {
            m_look.link = Attribute(tag, L"href");
            m_look.button = name == L"button";
            m_look.newWindow = m_look.button || Lower(Attribute(tag, L"target")) == L"_blank";
        } else if (name == L"/a" || name == L"/button") {
            m_look.link.clear();
            m_look.button = m_look.newWindow = false;
        } else if (name == L"popup") {
            m_page.popups.push_back(Attribute(tag, L"href"));
        } else if (name == L"br") {
            ForceBreak();
        } else if (name == L"p") {
            BreakLine();
            ForceBreak();
        }
    }

    Page Take() { return std::move(m_page); }

 private:
    bool AtLineStart() const { return m_page.runs.empty() || m_page.runs.back().lineBreak; }
    void BreakLine() {
        if (!m_page.runs.empty()) {
            m_page.runs.back().lineBreak = true;
        }
    }
    void ForceBreak() {
        if (AtLineStart()) {
            m_page.runs.emplace_back();
        }
        BreakLine();
    }

    Page m_page;
    Run m_look;
    bool m_inTitle = false;
};

}  // namespace

Page ParseHtml(std::wstring_view html) {
    Reader reader;
    while (!html.empty()) {
        if (html[0] != L'<') {
            const std::size_t end = std::min(html.find(L'<'), html.size());
            reader.Text(html.substr(0, end));
            html.remove_prefix(end);
            continue;
        }
        const std::size_t end = html.find(L'>');
        if (end == std::wstring_view::npos) {
            break;
        }
        reader.Tag(html.substr(1, end - 1));
        html.remove_prefix(end + 1);
    }
    return reader.Take();
}

std::wstring CompleteAddress(std::wstring_view typed) {
    const std::size_t first = typed.find_first_not_of(L" \t");
    if (first == std::wstring_view::npos) {
        return {};
    }
    std::wstring url(typed.substr(first, typed.find_last_not_of(L" \t") - first + 1));
    const std::wstring lower = Lower(url);
    if (StartsWith(lower, L"about:") || StartsWith(lower, L"javascript:")) {
        return url;
    }
    if (url.find(L"://") == std::wstring::npos) {
        url = L"http://" + url;
    }
    if (url.find(L'/', url.find(L"://") + 3) == std::wstring::npos) {
        url += L'/';
    }
    return url;
}

Page LoadPage(std::wstring_view url) {
    if (StartsWith(Lower(url), L"about:")) {
        const std::wstring_view html = url.substr(6);
        Page page = html == L"blank" ? Page() : ParseHtml(html);
        if (page.title.empty()) {
            // A page without a title goes by its address.
            page.title = std::wstring(url);
        }
        return page;
    }
    for (const Site& site : kSites) {
        if (url == site.url) {
            return ParseHtml(site.html);
        }
    }
    const std::size_t start = url.find(L"://");
    const std::wstring host(start == std::wstring_view::npos
                                ? url
                                : url.substr(start + 3, url.find(L'/', start + 3) - start - 3));
    return ParseHtml(L"<title>" + host + L"</title><h1>" + host + L"</h1><p>You are at <b>" +
                     std::wstring(url) + L"</b>.<p><a href=http://www.home.example/>Home</a>");
}

}  // namespace kestrelguard::desktop
