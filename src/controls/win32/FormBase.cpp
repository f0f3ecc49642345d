#include "controls/win32/FormBase.h"

#include <algorithm>
#include <utility>

#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

int ScreenDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

// As Windows 2000 and later know them; Windows before shows the focus always and ignores the message.
constexpr UINT kChangeUIState = 0x0127;  // WM_CHANGEUISTATE
constexpr WORD kInitialize = 3;          // UIS_INITIALIZE
constexpr WORD kClear = 2;               // UIS_CLEAR
constexpr WORD kHiddenFocusAndKeys = 1 | 2;

/// Turns the pages, as in every window of settings; all with Ctrl.
struct PageKey {
    WPARAM key;
    bool shift;
    int step;
};
constexpr PageKey kPageKeys[] = {
    {VK_TAB, false, 1}, {VK_TAB, true, -1}, {VK_NEXT, false, 1}, {VK_PRIOR, false, -1}};

/// Where a length begins so that it ends before `end`, if there is room, and in no case begins before
/// `begin`.
LONG KeptWithin(LONG at, LONG length, LONG begin, LONG end) {
    return std::max(begin, std::min(at, end - length));
}

bool Down(int key) {
    return GetKeyState(key) < 0;
}

bool IsPushButton(HWND window) {
    return (SendMessageA(window, WM_GETDLGCODE, 0, 0) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0;
}

bool IsOptionButton(HWND window) {
    return (SendMessageA(window, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
}

bool Selected(HWND optionButton) {
    return SendMessageA(optionButton, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

/// An option button selects itself when it gets the focus: it may be given back to the selected one of its
/// group alone. Null when none is.
HWND SelectedOfGroup(HWND optionButton) {
    HWND button = optionButton;
    while (!Selected(button)) {
        button = GetNextDlgGroupItem(GetParent(optionButton), button, FALSE);
        if (button == nullptr || button == optionButton) {
            return nullptr;
        }
    }
    return button;
}

BOOL CALLBACK TellColourChange(HWND control, LPARAM /*unused*/) noexcept {
    SendMessageA(control, WM_SYSCOLORCHANGE, 0, 0);
    return TRUE;
}

struct Wanted {
    int id;
    HWND found;
};

BOOL CALLBACK HasId(HWND window, LPARAM wanted) noexcept {
    auto& search = *reinterpret_cast<Wanted*>(wanted);
    if (GetDlgCtrlID(window) != search.id) {
        return TRUE;
    }
    search.found = window;
    return FALSE;
}

/// The control with that id, on whatever page it lies.
HWND FindControl(HWND form, int id) {
    Wanted search = {id, nullptr};
    EnumChildWindows(form, HasId, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

void DrawForEnter(HWND button, bool forEnter) {
    if (button != nullptr && IsWindow(button)) {
        SendMessageA(button, BM_SETSTYLE, static_cast<WPARAM>(forEnter ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON),
                     TRUE);
    }
}

/// Whether a control of that class has an edge of its own around it.
bool HasEdge(const char* windowClass) {
    return lstrcmpA(windowClass, "Edit") == 0 || lstrcmpA(windowClass, "ListBox") == 0;
}

}  // namespace

FormBase::FormBase(ErrorReport report) : WindowBase(std::move(report)), m_dpi(ScreenDpi()) {}

FormBase::~FormBase() {
    if (Handle() != nullptr) {
        DialogWindows::Remove(Handle());
    }
}

Font FormBase::ArialFont(int points, int weight) const {
    return Font(CreateFontA(-MulDiv(points, m_dpi, 72), 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                            OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                            FF_SWISS | VARIABLE_PITCH, "Arial"));
}

void FormBase::CreateForm(const WindowKind& kind, const WindowFrame& frame) {
    Create(kind, frame);
    DialogWindows::Add(Handle(), *this);
}

RECT FormBase::WorkArea() {
    RECT work = {};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    return work;
}

void FormBase::KeepTitleBarOnScreen() const {
    const RECT work = WorkArea();
    RECT place = {};
    GetWindowRect(Handle(), &place);
    const LONG left = KeptWithin(place.left, place.right - place.left, work.left, work.right);
    const LONG top = KeptWithin(place.top, place.bottom - place.top, work.top, work.bottom);
    SetWindowPos(Handle(), nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

HWND FormBase::CreateControl(const ControlFrame& frame, HWND parent, HFONT font) const {
    const HWND control = CreateWindowExA(
        HasEdge(frame.windowClass) ? WS_EX_CLIENTEDGE : 0, frame.windowClass, ToAnsi(frame.text).c_str(),
        frame.style | WS_CHILD | WS_VISIBLE, frame.place.left, frame.place.top,
        frame.place.right - frame.place.left, frame.place.bottom - frame.place.top, parent,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(frame.id)), GetModuleHandleA(nullptr), nullptr);
    if (control == nullptr) {
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    return control;
}

std::optional<LRESULT> FormBase::OnMessage(UINT message, WPARAM wParam, LPARAM /*lParam*/) {
    switch (message) {
        case WM_COMMAND:
            OnCommand(LOWORD(wParam), HIWORD(wParam));
            return 0;
        case DM_GETDEFID: {
            const int button = ButtonForEnter(GetFocus());
            return button == 0 ? 0 : MAKELRESULT(button, DC_HASDEFID);
        }
        case WM_ACTIVATE:
            DialogWindows::Activated();
            if (LOWORD(wParam) == WA_INACTIVE) {
                RememberFocus();
            }
            return std::nullopt;
        case WM_SETFOCUS:
            GiveFocusBack();
            return 0;
        case WM_SHOWWINDOW:
            if (!std::exchange(m_shown, true)) {
                SendMessageA(Handle(), kChangeUIState, kInitialize, 0);
            }
            return std::nullopt;
        case WM_CTLCOLORSTATIC: {
            // The system would write in the colour of text in windows, which need not stand out from this.
            const auto context = reinterpret_cast<HDC>(wParam);
            SetTextColor(context, GetSysColor(COLOR_BTNTEXT));
            SetBkColor(context, GetSysColor(COLOR_BTNFACE));
            return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
        }
        case WM_SYSCOLORCHANGE:
            // Told to the forms alone; common controls want to know it.
            EnumChildWindows(Handle(), TellColourChange, 0);
            return std::nullopt;
        case WM_NCDESTROY:
            DialogWindows::Remove(Handle());
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

void FormBase::OnCommand(int /*id*/, int /*notification*/) {}

bool FormBase::TurnPage(int /*step*/) {
    return false;
}

bool FormBase::KeyDown(WPARAM key) {
    // From the first key on the user sees where the focus is.
    SendMessageA(Handle(), kChangeUIState, MAKEWPARAM(kClear, kHiddenFocusAndKeys), 0);
    if (Down(VK_CONTROL) && !Down(VK_MENU)) {
        for (const PageKey& pageKey : kPageKeys) {
            if (key == pageKey.key && Down(VK_SHIFT) == pageKey.shift) {
                return TurnPage(pageKey.step);
            }
        }
    }
    return false;
}

void FormBase::FocusMoved(HWND focus) {
    if (focus == Handle()) {
        // It came while the form was minimised, whose controls cannot have it.
        if (!IsIconic(Handle()) && IsWindowVisible(Handle())) {
            GiveFocusBack();
        }
        return;
    }
    const int id = ButtonForEnter(focus);
    const HWND button = id == 0 ? nullptr : FindControl(Handle(), id);
    if (button != m_drawnForEnter) {
        DrawForEnter(std::exchange(m_drawnForEnter, button), false);
        DrawForEnter(button, true);
    }
}

int FormBase::ButtonForEnter(HWND focus) const {
    return focus != nullptr && IsPushButton(focus) ? GetDlgCtrlID(focus) : DefaultButton(focus);
}

void FormBase::RememberFocus() {
    const HWND focus = GetFocus();
    if (focus != nullptr && IsChild(Handle(), focus)) {
        m_lastFocus = focus;
    }
}

void FormBase::GiveFocusBack() const {
    HWND target = m_lastFocus;
    if (target != nullptr && IsOptionButton(target)) {
        target = SelectedOfGroup(target);
    }
    const bool good = target != nullptr && IsWindowVisible(target) && IsWindowEnabled(target);
    SetFocus(good ? target : FirstFocus());
}

void FormBase::DestroyForm() {
    if (Handle() != nullptr) {
        DestroyOwnWindow();
    }
}

}  // namespace kestrelguard
