#include "desktop/Frame.h"

#include <commctrl.h>

#include <optional>
#include <string>

#include "desktop/BrowserObject.h"
#include "desktop/PageView.h"
#include "desktop/WindowSelf.h"

namespace kestrelguard::desktop {

namespace {

constexpr wchar_t kClass[] = L"IEFrame";
constexpr UINT kChanged = WM_APP + 2;
constexpr int kAddress = 100;
constexpr int kGo = 101;

// Entries of the window's own menu. Below 0xF000, and the system uses the last four bits.
constexpr UINT kStall = 0x0100;
constexpr UINT kOpenApart = 0x0110;
constexpr UINT kStopApart = 0x0120;
constexpr Property kStalling[] = {Property::Hwnd, Property::LocationUrl, Property::LocationName,
                                  Property::StatusText};

/// What the title bar shows.
std::wstring Caption(const BrowserObject& browser) {
    const std::wstring title = browser.Title();
    return (title.empty() ? L"" : title + L" - ") + L"Microsoft Internet Explorer" +
           (browser.Stalls() ? L" (stalls)" : L"");
}

/// A globe for title bars and the task bar, as wide and high as asked for (pixels).
HICON MakeGlobe(int size) {
    const HDC screen = GetDC(nullptr);
    const HDC dc = CreateCompatibleDC(screen);
    const kestrelguard::Bitmap colour(CreateCompatibleBitmap(screen, size, size));
    const kestrelguard::Bitmap mask(CreateBitmap(size, size, 1, 1, nullptr));
    const RECT all{0, 0, size, size};
    const auto disc = [&](HGDIOBJ bitmap, COLORREF around, COLORREF fill) {
        const HGDIOBJ oldBitmap = SelectObject(dc, bitmap);
        const HBRUSH back = CreateSolidBrush(around);
        FillRect(dc, &all, back);
        DeleteObject(back);
        const HGDIOBJ brush = SelectObject(dc, CreateSolidBrush(fill));
        const HGDIOBJ pen = SelectObject(dc, CreatePen(PS_SOLID, 1, fill));
        Ellipse(dc, 0, 0, size, size);
        DeleteObject(SelectObject(dc, pen));
        DeleteObject(SelectObject(dc, brush));
        SelectObject(dc, oldBitmap);
    };
    disc(colour.Get(), RGB(0, 0, 0), RGB(30, 104, 190));
    disc(mask.Get(), RGB(255, 255, 255), RGB(0, 0, 0));
    const HGDIOBJ oldBitmap = SelectObject(dc, colour.Get());
    const HGDIOBJ brush = SelectObject(dc, GetStockObject(NULL_BRUSH));
    const HGDIOBJ pen = SelectObject(dc, CreatePen(PS_SOLID, size / 16, RGB(222, 236, 250)));
    Ellipse(dc, size * 5 / 16, 0, size * 11 / 16 + 1, size);
    for (const int height : {size / 3, size * 2 / 3}) {
        MoveToEx(dc, 1, height, nullptr);
        LineTo(dc, size - 1, height);
    }
    DeleteObject(SelectObject(dc, pen));
    SelectObject(dc, brush);
    SelectObject(dc, oldBitmap);
    DeleteDC(dc);
    ReleaseDC(nullptr, screen);
    ICONINFO info{TRUE, 0, 0, mask.Get(), colour.Get()};
    return CreateIconIndirect(&info);
}

/// One browser window. Belongs to the window itself: goes with it.
class Frame {
 public:
    explicit Frame(std::shared_ptr<BrowserObject> browser) : m_browser(std::move(browser)) {}

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    bool PressLink(const std::wstring& link) const;
    RECT LinkPlace(const std::wstring& link) const;

 private:
    static LRESULT CALLBACK AddressProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                             UINT_PTR id, DWORD_PTR frame) noexcept;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void Dress();
    void Arrange() const;
    void Refresh();
    void Go() const;
    void AddTrouble() const;
    bool MakeTrouble(UINT entry) const;
    int Scaled(int at96) const { return MulDiv(at96, m_dpi, 96); }

    const std::shared_ptr<BrowserObject> m_browser;
    HWND m_window = nullptr;
    // Of dressed windows only.
    HWND m_label = nullptr;
    HWND m_address = nullptr;
    HWND m_go = nullptr;
    HWND m_status = nullptr;
    std::optional<PageView> m_view;
    std::wstring m_shownUrl;
    kestrelguard::Font m_font;
    int m_dpi = 96;
};

void Frame::Dress() {
    const HDC screen = GetDC(nullptr);
    m_dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    InitCommonControls();
    m_font.Reset(CreateFontW(-Scaled(13), 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                             OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                             VARIABLE_PITCH | FF_SWISS, L"Arial"));
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    const auto child = [&](DWORD extended, const wchar_t* type, const wchar_t* text, DWORD style, int id) {
        const HWND control =
            CreateWindowExW(extended, type, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, m_window,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), instance, nullptr);
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(m_font.Get()), FALSE);
        return control;
    };
    m_label = child(0, L"Static", L"Address", SS_CENTERIMAGE, -1);
    m_address = child(WS_EX_CLIENTEDGE, L"Edit", L"", WS_TABSTOP | ES_AUTOHSCROLL, kAddress);
    SetWindowSubclass(m_address, AddressProcedure, 1, reinterpret_cast<DWORD_PTR>(this));
    m_go = child(0, L"Button", L"Go", WS_TABSTOP, kGo);
    m_status = child(0, STATUSCLASSNAMEW, L"", SBARS_SIZEGRIP, -1);
    m_view.emplace(
        m_window, [this](const Run* run) { m_browser->ShowStatusText(run != nullptr ? run->link : L"Done"); },
        [this](const Run& run) {
            if (run.newWindow) {
                m_browser->RequestNewWindow(run.link);
            } else {
                m_browser->Load(run.link);
            }
        });
}

void Frame::Arrange() const {
    if (!m_view) {
        return;
    }
    SendMessageW(m_status, WM_SIZE, 0, 0);
    RECT client{};
    GetClientRect(m_window, &client);
    RECT status{};
    GetWindowRect(m_status, &status);
    const int gap = Scaled(8);
    const int height = Scaled(24);
    const int bar = height + 2 * gap;
    const int label = Scaled(56);
    const int button = Scaled(48);
    MoveWindow(m_label, gap, gap, label, height, TRUE);
    MoveWindow(m_address, gap + label, gap, client.right - 4 * gap - label - button + gap, height, TRUE);
    MoveWindow(m_go, client.right - gap - button, gap, button, height, TRUE);
    MoveWindow(m_view->Window(), 0, bar, client.right, client.bottom - bar - (status.bottom - status.top),
               TRUE);
}

void Frame::Refresh() {
    SetWindowTextW(m_window, Caption(*m_browser).c_str());
    if (!m_view) {
        return;
    }
    SetWindowTextW(m_status, (L" " + m_browser->StatusText()).c_str());
    const std::wstring url = m_browser->Url();
    if (url != m_shownUrl) {
        m_shownUrl = url;
        SetWindowTextW(m_address, url.c_str());
        m_view->Show(LoadPage(url));
    }
}

void Frame::Go() const {
    wchar_t text[2048];
    GetWindowTextW(m_address, text, 2048);
    if (const std::wstring url = CompleteAddress(text); !url.empty()) {
        m_browser->Load(url);
    }
}

/// Adds to the window's own menu (Alt+Space) what makes it hang.
void Frame::AddTrouble() const {
    const HMENU menu = GetSystemMenu(m_window, FALSE);
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, kStall, L"S&tall this window's properties, or go on");
    if (m_browser->Owner().CanOpenApart()) {
        AppendMenuW(menu, MF_STRING, kOpenApart, L"&Open a window in a process of its own");
        AppendMenuW(menu, MF_STRING, kStopApart, L"Stop &processes of their own, or go on");
    }
}

bool Frame::MakeTrouble(UINT entry) const {
    switch (entry) {
        case kStall: {
            const bool stalls = m_browser->Stalls();
            for (const Property property : kStalling) {
                if (stalls) {
                    m_browser->LetGo(property);
                } else {
                    m_browser->Stall(property);
                }
            }
            return true;
        }
        case kOpenApart:
            m_browser->Owner().OpenApart();
            return true;
        case kStopApart:
            m_browser->Owner().StopApart();
            return true;
        default:
            return false;
    }
}

bool Frame::PressLink(const std::wstring& link) const {
    const RECT place = m_view ? m_view->PlaceOf(link) : RECT{};
    if (IsRectEmpty(&place)) {
        return false;
    }
    const LPARAM point = MAKELPARAM((place.left + place.right) / 2, (place.top + place.bottom) / 2);
    PostMessageW(m_view->Window(), WM_LBUTTONDOWN, MK_LBUTTON, point);
    PostMessageW(m_view->Window(), WM_LBUTTONUP, 0, point);
    return true;
}

RECT Frame::LinkPlace(const std::wstring& link) const {
    RECT place = m_view ? m_view->PlaceOf(link) : RECT{};
    if (!IsRectEmpty(&place)) {
        MapWindowPoints(m_view->Window(), nullptr, reinterpret_cast<POINT*>(&place), 2);
    }
    return place;
}

LRESULT Frame::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            if (m_browser->Options().dressed) {
                Dress();
                AddTrouble();
                Arrange();  // a window that is not shown yet hears of no size
            }
            return 0;
        case WM_SIZE:
            Arrange();
            return 0;
        case WM_GETMINMAXINFO:
            if (m_view) {
                reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = POINT{Scaled(300), Scaled(200)};
            }
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == kGo) {
                Go();
            }
            return 0;
        case kChanged:
            Refresh();
            return 0;
        case WM_SYSCOMMAND:
            return MakeTrouble(static_cast<UINT>(wParam & 0xFFF0))
                       ? 0
                       : DefWindowProcW(m_window, message, wParam, lParam);
        case WM_CLOSE:
            // The browser closes from its own thread: this one never calls out.
            m_browser->Quit();
            return 0;
        default:
            return DefWindowProcW(m_window, message, wParam, lParam);
    }
}

LRESULT CALLBACK Frame::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    Frame* const frame = SelfOf(window, message, lParam, &Frame::m_window);
    if (frame == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        const std::unique_ptr<Frame> last(frame);
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return frame->OnMessage(message, wParam, lParam);
}

LRESULT CALLBACK Frame::AddressProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                         DWORD_PTR frame) noexcept {
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, AddressProcedure, id);
    } else if (message == WM_KEYDOWN && wParam == VK_RETURN) {
        reinterpret_cast<const Frame*>(frame)->Go();
        return 0;
    } else if (message == WM_CHAR && wParam == VK_RETURN) {
        return 0;  // it would beep
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

/// Where the next visible window goes: each a little lower and to the right of the one before.
POINT NextPlace() {
    static int number = 0;
    const int step = number++ % 8;
    return POINT{24 + step * 34, 20 + step * 30};
}

}  // namespace

HWND CreateFrame(const std::shared_ptr<BrowserObject>& browser) {
    static const ATOM registered = [] {
        WNDCLASSEXW type{};
        type.cbSize = sizeof(type);
        type.lpfnWndProc = Frame::Procedure;
        type.hInstance = GetModuleHandleW(nullptr);
        type.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        type.hIcon = MakeGlobe(32);
        type.hIconSm = MakeGlobe(16);
        type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        type.lpszClassName = kClass;
        return RegisterClassExW(&type);
    }();
    auto frame = std::make_unique<Frame>(browser);
    const bool shown = browser->Options().shown;
    const POINT place = shown ? NextPlace() : POINT{0, 0};
    // Windows that pages open are smaller, as such windows are.
    const SIZE size = browser->Options().opened ? SIZE{420, 300} : SIZE{560, 400};
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    const HWND window =
        CreateWindowExW(0, MAKEINTATOM(registered), Caption(*browser).c_str(),
                        WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, place.x, place.y, MulDiv(size.cx, dpi, 96),
                        MulDiv(size.cy, dpi, 96), nullptr, nullptr, GetModuleHandleW(nullptr), frame.get());
    if (window != nullptr) {
        static_cast<void>(frame.release());  // WM_NCDESTROY takes it back
        if (shown) {
            ShowWindow(window, SW_SHOWNORMAL);
            SetForegroundWindow(window);
        }
    }
    return window;
}

void FrameChanged(HWND window) {
    if (window != nullptr) {
        PostMessageW(window, kChanged, 0, 0);
    }
}

bool PressLink(HWND window, const std::wstring& link) {
    const auto* frame = reinterpret_cast<const Frame*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return frame != nullptr && frame->PressLink(link);
}

RECT LinkPlace(HWND window, const std::wstring& link) {
    const auto* frame = reinterpret_cast<const Frame*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return frame != nullptr ? frame->LinkPlace(link) : RECT{};
}

}  // namespace kestrelguard::desktop
