#include "desktop/PageView.h"

#include <windowsx.h>

#include <algorithm>

#include "desktop/WindowSelf.h"

namespace kestrelguard::desktop {

namespace {

constexpr wchar_t kClass[] = L"StandInPage";
constexpr COLORREF kPaper = RGB(255, 255, 255);
constexpr COLORREF kInk = RGB(32, 33, 36);
constexpr COLORREF kHeading = RGB(22, 66, 120);
constexpr COLORREF kLink = RGB(0, 84, 190);
constexpr COLORREF kLinkUnder = RGB(196, 60, 20);
constexpr COLORREF kButton = RGB(22, 92, 168);
constexpr COLORREF kButtonUnder = RGB(38, 118, 206);

kestrelguard::Font MakeFont(int height, bool bold, bool italic, bool underlined) {
    return kestrelguard::Font(CreateFontW(-height, 0, 0, 0, bold ? FW_BOLD : FW_NORMAL, italic, underlined,
                                          FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                          CLEARTYPE_QUALITY, VARIABLE_PITCH | FF_SWISS, L"Arial"));
}

/// The text in pieces that may stand on different lines: each word with the blank after it.
std::vector<std::wstring> Words(const std::wstring& text) {
    std::vector<std::wstring> words;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t blank = text.find(L' ', start);
        const std::size_t end = blank == std::wstring::npos ? text.size() : blank + 1;
        words.push_back(text.substr(start, end - start));
        start = end;
    }
    return words;
}

}  // namespace

PageView::PageView(HWND parent, Pointed pointed, Clicked clicked)
    : m_pointed(std::move(pointed)), m_clicked(std::move(clicked)) {
    const HDC screen = GetDC(nullptr);
    m_dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    for (int i = 0; i < 8; ++i) {
        m_fonts[i] = MakeFont(Scaled(15), (i & 1) != 0, (i & 2) != 0, (i & 4) != 0);
    }
    m_heading = MakeFont(Scaled(26), true, false, false);
    WNDCLASSW type{};
    type.lpfnWndProc = Procedure;
    type.hInstance = GetModuleHandleW(nullptr);
    type.lpszClassName = kClass;
    RegisterClassW(&type);
    m_window = CreateWindowExW(0, kClass, nullptr, WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent, nullptr,
                               type.hInstance, this);
}

void PageView::Show(Page page) {
    m_under = nullptr;
    m_page = std::move(page);
    Arrange();
    InvalidateRect(m_window, nullptr, TRUE);
}

RECT PageView::PlaceOf(const std::wstring& link) const {
    for (const Placed& piece : m_pieces) {
        if (m_page.runs[piece.run].link == link) {
            return piece.place;
        }
    }
    return RECT{};
}

HFONT PageView::FontOf(const Run& run) const {
    if (run.heading) {
        return m_heading.Get();
    }
    const bool link = !run.link.empty() && !run.button;
    return m_fonts[(run.bold || run.button ? 1 : 0) | (run.italic ? 2 : 0) | (link ? 4 : 0)].Get();
}

void PageView::Arrange() {
    m_pieces.clear();
    RECT client{};
    GetClientRect(m_window, &client);
    const LONG left = Scaled(28);
    const LONG right = std::max<LONG>(client.right - Scaled(28), left + 1);
    LONG x = left;
    LONG y = Scaled(22);
    LONG lineHeight = 0;
    const HDC dc = GetDC(m_window);
    for (std::size_t i = 0; i < m_page.runs.size(); ++i) {
        const Run& run = m_page.runs[i];
        const HGDIOBJ before = SelectObject(dc, FontOf(run));
        // A button is never broken.
        const std::vector<std::wstring> words =
            run.button ? std::vector<std::wstring>{run.text} : Words(run.text);
        for (const std::wstring& word : words) {
            SIZE size{};
            GetTextExtentPoint32W(dc, word.c_str(), static_cast<int>(word.size()), &size);
            if (run.button) {
                size.cx += Scaled(28);
                size.cy += Scaled(14);
            }
            if (x > left && x + size.cx > right) {
                x = left;
                y += lineHeight;
                lineHeight = 0;
            }
            m_pieces.push_back(Placed{RECT{x, y, x + size.cx, y + size.cy}, word, i});
            x += size.cx;
            lineHeight = std::max<LONG>(lineHeight, size.cy + Scaled(run.heading ? 14 : 6));
        }
        SelectObject(dc, before);
        if (run.lineBreak) {
            x = left;
            y += std::max<LONG>(lineHeight, Scaled(words.empty() ? 12 : 0));
            lineHeight = 0;
        }
    }
    ReleaseDC(m_window, dc);
}

void PageView::DrawPiece(HDC dc, const Placed& piece) const {
    const Run& run = m_page.runs[piece.run];
    const bool under = &run == m_under;
    RECT place = piece.place;
    SelectObject(dc, FontOf(run));
    if (run.button) {
        const COLORREF fill = under ? kButtonUnder : kButton;
        const HGDIOBJ brush = SelectObject(dc, CreateSolidBrush(fill));
        const HGDIOBJ pen = SelectObject(dc, CreatePen(PS_SOLID, 1, fill));
        RoundRect(dc, place.left, place.top, place.right, place.bottom, Scaled(8), Scaled(8));
        DeleteObject(SelectObject(dc, brush));
        DeleteObject(SelectObject(dc, pen));
        SetTextColor(dc, kPaper);
        DrawTextW(dc, piece.text.c_str(), -1, &place, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
        return;
    }
    SetTextColor(dc, !run.link.empty() ? (under ? kLinkUnder : kLink) : run.heading ? kHeading : kInk);
    TextOutW(dc, place.left, place.top, piece.text.c_str(), static_cast<int>(piece.text.size()));
}

void PageView::Paint() {
    PAINTSTRUCT paint{};
    const HDC target = BeginPaint(m_window, &paint);
    RECT client{};
    GetClientRect(m_window, &client);
    // Drawn aside first: no flicker while the pointer moves over links.
    const HDC dc = CreateCompatibleDC(target);
    const HGDIOBJ oldBitmap = SelectObject(dc, CreateCompatibleBitmap(target, client.right, client.bottom));
    const HGDIOBJ oldFont = SelectObject(dc, m_fonts[0].Get());
    SetBkMode(dc, TRANSPARENT);
    const HBRUSH paper = CreateSolidBrush(kPaper);
    FillRect(dc, &client, paper);
    DeleteObject(paper);
    for (const Placed& piece : m_pieces) {
        DrawPiece(dc, piece);
    }
    BitBlt(target, 0, 0, client.right, client.bottom, dc, 0, 0, SRCCOPY);
    SelectObject(dc, oldFont);
    DeleteObject(SelectObject(dc, oldBitmap));
    DeleteDC(dc);
    EndPaint(m_window, &paint);
}

const Run* PageView::LinkAt(POINT point) const {
    for (const Placed& piece : m_pieces) {
        const Run& run = m_page.runs[piece.run];
        if (!run.link.empty() && PtInRect(&piece.place, point)) {
            return &run;
        }
    }
    return nullptr;
}

void PageView::PointAt(POINT point) {
    const Run* now = LinkAt(point);
    SetCursor(LoadCursorW(nullptr, now != nullptr ? IDC_HAND : IDC_ARROW));
    if (now != m_under) {
        m_under = now;
        m_pointed(now);
        InvalidateRect(m_window, nullptr, FALSE);
    }
}

LRESULT PageView::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    switch (message) {
        case WM_SIZE:
            Arrange();
            InvalidateRect(m_window, nullptr, FALSE);
            return 0;
        case WM_PAINT:
            Paint();
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_MOUSEMOVE: {
            PointAt(point);
            TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, m_window, 0};
            TrackMouseEvent(&track);
            return 0;
        }
        case WM_MOUSELEAVE:
            PointAt(POINT{-1, -1});
            return 0;
        case WM_LBUTTONDOWN:
            SetFocus(m_window);
            m_pressed = LinkAt(point) != nullptr;
            return 0;
        case WM_LBUTTONUP:
            if (const Run* run = LinkAt(point); run != nullptr && std::exchange(m_pressed, false)) {
                m_clicked(Run(*run));  // a copy: the click may bring another page
            }
            return 0;
        default:
            return DefWindowProcW(m_window, message, wParam, lParam);
    }
}

LRESULT CALLBACK PageView::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    PageView* const view = SelfOf(window, message, lParam, &PageView::m_window);
    return view != nullptr ? view->OnMessage(message, wParam, lParam)
                           : DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace kestrelguard::desktop
