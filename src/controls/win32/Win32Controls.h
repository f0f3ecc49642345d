#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "controls/Controls.h"
#include "controls/Lists.h"

/// The real controls behind controls/Controls.h. None of them owns its window: the form creates and
/// destroys the windows.
namespace kestrelguard {

/// A control's text as program text.
std::wstring WindowText(HWND window);
void SetWindowTextFrom(HWND window, const std::wstring& text);

/// One control seen through one interface.
template <class Interface>
class ControlOf : public Interface {
 public:
    void Attach(HWND window) { m_window = window; }

 protected:
    HWND m_window = nullptr;
};

class CheckBoxControl final : public ControlOf<CheckBox> {
 public:
    int Value() const override;
    void SetValue(int value) override;
};

class OptionButtonControl final : public OptionButton {
 public:
    /// `group` are the windows of all buttons of the group, this one included; it must outlive the button.
    void Attach(HWND window, const std::vector<HWND>& group) {
        m_window = window;
        m_group = &group;
    }
    bool Selected() const override;
    void Select(bool selected) override;

 private:
    HWND m_window = nullptr;
    const std::vector<HWND>* m_group = nullptr;
};

class CaptionControl final : public ControlOf<Caption> {
 public:
    void SetCaption(const std::wstring& text) override;
};

class TextBoxControl final : public TextBox {
 public:
    void Attach(HWND window);
    std::wstring Text() const override;
    void SetText(const std::wstring& text) override;
    /// Whether the program itself is changing the text: such a change is no edit of the user's.
    bool BeingSet() const { return m_beingSet; }

 private:
    HWND m_window = nullptr;
    bool m_beingSet = false;
};

class DropDownControl final : public ControlOf<DropDown> {
 public:
    std::wstring Text() const override;
    void SetText(const std::wstring& text) override;
};

/// A list box, filled without drawing between BeginFill and EndFill.
class ListBoxControl final : public AddressRows, public ListSelection {
 public:
    void Attach(HWND window) { m_window = window; }
    HWND Handle() const { return m_window; }
    std::int32_t Count() const override;
    std::wstring Row(std::int32_t row) const override;
    void Append(const std::wstring& text) override;
    void Remove(std::int32_t row) override;
    void Clear() override;
    void BeginFill() override;
    void EndFill() override;
    void AppendAddress(const std::wstring& text, const std::string& address) override;
    std::string Address(std::int32_t row) const override;
    std::int32_t SelectedRow() const override;
    void SelectRow(std::int32_t row) override;

    /// From now on rows that are wider than the list can be scrolled to their end.
    void ScrollSideways() { m_scrollsSideways = true; }

 private:
    WPARAM Add(const std::wstring& text, const char* row);
    std::string RowBytes(std::int32_t row) const;
    void MakeRoomFor(const std::string& row);

    HWND m_window = nullptr;
    /// The addresses that the code page cannot spell back from their text; a row's data is the number of its
    /// own, counted from 1, or 0. The window cannot hold them: systems that keep texts as Unicode send what
    /// they are given through the code page.
    std::vector<std::string> m_addresses;
    int m_fills = 0;
    bool m_scrollsSideways = false;
    std::size_t m_longestRow = 0;
    int m_widestRow = 0;
};

/// A control that can be hidden.
class VisibleControl final : public ControlOf<Visibility> {
 public:
    void SetVisible(bool visible) override;
};

/// A control or window that can be enabled.
class EnabledControl final : public Switch {
 public:
    /// `focusAfter` gets the focus when the control has it and is disabled.
    void Attach(HWND window, HWND focusAfter) {
        m_window = window;
        m_focusAfter = focusAfter;
    }
    bool Enabled() const override;
    void SetEnabled(bool enabled) override;

 private:
    HWND m_window = nullptr;
    HWND m_focusAfter = nullptr;
};

}  // namespace kestrelguard
