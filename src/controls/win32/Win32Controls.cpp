#include "controls/win32/Win32Controls.h"

#include <algorithm>

#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

namespace {

/// What a list box leaves free beside its rows, in pixels.
constexpr int kRowMargin = 8;

}  // namespace

std::wstring WindowText(HWND window) {
    std::string text(static_cast<std::size_t>(std::max(0, GetWindowTextLengthA(window))) + 1, '\0');
    const int length = GetWindowTextA(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(std::max(0, length)));
    return FromAnsi(text);
}

void SetWindowTextFrom(HWND window, const std::wstring& text) {
    SetWindowTextA(window, ToAnsi(text).c_str());
}

int CheckBoxControl::Value() const {
    return static_cast<int>(SendMessageA(m_window, BM_GETCHECK, 0, 0));
}

void CheckBoxControl::SetValue(int value) {
    SendMessageA(m_window, BM_SETCHECK, static_cast<WPARAM>(value), 0);
}

bool OptionButtonControl::Selected() const {
    return SendMessageA(m_window, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void OptionButtonControl::Select(bool selected) {
    if (selected) {
        for (const HWND other : *m_group) {
            if (other != m_window) {
                SendMessageA(other, BM_SETCHECK, BST_UNCHECKED, 0);
            }
        }
    }
    SendMessageA(m_window, BM_SETCHECK, selected ? BST_CHECKED : BST_UNCHECKED, 0);
}

void CaptionControl::SetCaption(const std::wstring& text) {
    if (WindowText(m_window) != text) {
        SetWindowTextFrom(m_window, text);
    }
}

void TextBoxControl::Attach(HWND window) {
    m_window = window;
    SendMessageA(m_window, EM_SETLIMITTEXT, 0, 0);
}

std::wstring TextBoxControl::Text() const {
    return WindowText(m_window);
}

void TextBoxControl::SetText(const std::wstring& text) {
    const bool outer = m_beingSet;
    m_beingSet = true;
    SetWindowTextFrom(m_window, text);
    m_beingSet = outer;
}

std::wstring DropDownControl::Text() const {
    return WindowText(m_window);
}

void DropDownControl::SetText(const std::wstring& text) {
    const LRESULT item = SendMessageA(m_window, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                      reinterpret_cast<LPARAM>(ToAnsi(text).c_str()));
    if (item != CB_ERR) {
        SendMessageA(m_window, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
    }
}

std::int32_t ListBoxControl::Count() const {
    return static_cast<std::int32_t>(SendMessageA(m_window, LB_GETCOUNT, 0, 0));
}

std::wstring ListBoxControl::Row(std::int32_t row) const {
    return FromAnsi(RowBytes(row));
}

std::string ListBoxControl::RowBytes(std::int32_t row) const {
    const LRESULT length = SendMessageA(m_window, LB_GETTEXTLEN, static_cast<WPARAM>(row), 0);
    if (length == LB_ERR) {
        return {};
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    const LRESULT copied =
        SendMessageA(m_window, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text.data()));
    text.resize(copied == LB_ERR ? 0 : static_cast<std::size_t>(copied));
    return text;
}

void ListBoxControl::Append(const std::wstring& text) {
    Add(text, AnsiArgument(text).Get());
}

void ListBoxControl::AppendAddress(const std::wstring& text, const std::string& address) {
    const AnsiArgument spelled(text);
    if (address == spelled.Get()) {
        Add(text, spelled.Get());
        return;
    }
    m_addresses.push_back(address);
    const WPARAM row = Add(text, spelled.Get());
    SendMessageA(m_window, LB_SETITEMDATA, row, static_cast<LPARAM>(m_addresses.size()));
}

std::string ListBoxControl::Address(std::int32_t row) const {
    const auto number =
        static_cast<std::size_t>(SendMessageA(m_window, LB_GETITEMDATA, static_cast<WPARAM>(row), 0));
    const bool held = number > 0 && number <= m_addresses.size();
    return held ? m_addresses[number - 1] : RowBytes(row);
}

/// Answers the number of the new row.
WPARAM ListBoxControl::Add(const std::wstring& text, const char* row) {
    const LRESULT added = SendMessageA(m_window, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    if (added < 0) {
        throw RunTimeError(RunTimeError::kOutOfMemory);
    }
    if (m_scrollsSideways && text.size() > m_longestRow) {
        m_longestRow = text.size();
        MakeRoomFor(row);
    }
    return static_cast<WPARAM>(added);
}

void ListBoxControl::MakeRoomFor(const std::string& row) {
    // Only a row of more characters than any before is measured: measuring each would cost more than adding
    // it.
    const HDC context = GetDC(m_window);
    const HGDIOBJ before =
        SelectObject(context, reinterpret_cast<HGDIOBJ>(SendMessageA(m_window, WM_GETFONT, 0, 0)));
    SIZE size = {};
    GetTextExtentPoint32A(context, row.c_str(), static_cast<int>(row.size()), &size);
    SelectObject(context, before);
    ReleaseDC(m_window, context);
    if (size.cx + kRowMargin > m_widestRow) {
        m_widestRow = size.cx + kRowMargin;
        if (m_fills == 0) {
            SendMessageA(m_window, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(m_widestRow), 0);
        }
    }
}

void ListBoxControl::Remove(std::int32_t row) {
    if (SendMessageA(m_window, LB_DELETESTRING, static_cast<WPARAM>(row), 0) == LB_ERR) {
        throw RunTimeError(RunTimeError::kInvalidCall);
    }
}

void ListBoxControl::Clear() {
    SendMessageA(m_window, LB_RESETCONTENT, 0, 0);
    m_addresses.clear();
}

void ListBoxControl::BeginFill() {
    if (m_fills++ == 0) {
        SendMessageA(m_window, WM_SETREDRAW, FALSE, 0);
    }
}

void ListBoxControl::EndFill() {
    if (--m_fills == 0) {
        if (m_scrollsSideways) {
            SendMessageA(m_window, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(m_widestRow), 0);
        }
        SendMessageA(m_window, WM_SETREDRAW, TRUE, 0);
        InvalidateRect(m_window, nullptr, TRUE);
    }
}

std::int32_t ListBoxControl::SelectedRow() const {
    return static_cast<std::int32_t>(SendMessageA(m_window, LB_GETCURSEL, 0, 0));
}

void ListBoxControl::SelectRow(std::int32_t row) {
    SendMessageA(m_window, LB_SETCURSEL, static_cast<WPARAM>(row), 0);
}

void VisibleControl::SetVisible(bool visible) {
    ShowWindow(m_window, visible ? SW_SHOWNA : SW_HIDE);
    if (!visible) {
        // Who hides a control may be about to work for long: its picture must not stay behind.
        UpdateWindow(GetParent(m_window));
    }
}

bool EnabledControl::Enabled() const {
    return IsWindowEnabled(m_window) != FALSE;
}

void EnabledControl::SetEnabled(bool enabled) {
    if (!enabled && GetFocus() == m_window) {
        // A disabled window that keeps the focus leaves the keyboard dead.
        SetFocus(m_focusAfter);
    }
    EnableWindow(m_window, enabled ? TRUE : FALSE);
}

}  // namespace kestrelguard
