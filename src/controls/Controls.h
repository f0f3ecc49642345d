#pragma once

#include <string>

/// What handlers read and write. Each class stands for one kind of control; the Windows halves lie in
/// controls/win32, the fakes of the tests in tests/controls.
///
/// Setting a value by program never runs the handler of a user's change.
namespace kestrelguard {

/// A check box: 0 clear, 1 ticked, 2 greyed. Only 1 counts as ticked.
class CheckBox {
 public:
    virtual ~CheckBox() = default;
    virtual int Value() const = 0;
    virtual void SetValue(int value) = 0;

    bool Ticked() const { return Value() == 1; }
};

/// One button of an option group. Selecting it takes the selection from the others of its group.
class OptionButton {
 public:
    virtual ~OptionButton() = default;
    virtual bool Selected() const = 0;
    virtual void Select(bool selected) = 0;
};

/// A label, a button's caption, a menu item's caption: text that only the program changes.
class Caption {
 public:
    virtual ~Caption() = default;
    virtual void SetCaption(const std::wstring& text) = 0;
};

/// A tool tip of one control.
class ToolTip {
 public:
    virtual ~ToolTip() = default;
    virtual void SetToolTip(const std::wstring& text) = 0;
};

/// A text box that the user edits.
class TextBox {
 public:
    virtual ~TextBox() = default;
    virtual std::wstring Text() const = 0;
    virtual void SetText(const std::wstring& text) = 0;
};

/// A drop-down list of fixed items.
class DropDown {
 public:
    virtual ~DropDown() = default;
    /// The text of the selected item.
    virtual std::wstring Text() const = 0;
    /// Selects the item of that text; nothing happens when there is none.
    virtual void SetText(const std::wstring& text) = 0;
};

/// Something that can be enabled or not: a button, a timer.
class Switch {
 public:
    virtual ~Switch() = default;
    virtual bool Enabled() const = 0;
    virtual void SetEnabled(bool enabled) = 0;
};

/// Something that can be shown or hidden.
class Visibility {
 public:
    virtual ~Visibility() = default;
    virtual void SetVisible(bool visible) = 0;
};

/// The check mark of a menu item.
class CheckMark {
 public:
    virtual ~CheckMark() = default;
    virtual bool Checked() const = 0;
    virtual void SetChecked(bool checked) = 0;
};

}  // namespace kestrelguard
