#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What handlers read and write. Each class stands for one kind of control or platform service; the Windows
/// halves lie in controls/win32, the fakes of the tests in tests/controls.
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

/// The rows of a list box, counted from 0.
class ListRows {
 public:
    virtual ~ListRows() = default;
    virtual std::int32_t Count() const = 0;
    /// The row's text; an empty text for a row that is not there.
    virtual std::wstring Row(std::int32_t row) const = 0;
    virtual void Append(const std::wstring& text) = 0;
    /// Throws kInvalidCall for a row that is not there.
    virtual void Remove(std::int32_t row) = 0;
    virtual void Clear() = 0;
    /// Many appends are coming / are over: the list is not drawn between the two. Calls nest.
    virtual void BeginFill() {}
    virtual void EndFill() {}
};

/// BeginFill now, EndFill at the end of the scope.
class ListFill {
 public:
    explicit ListFill(ListRows& rows) : m_rows(rows) { m_rows.BeginFill(); }
    ~ListFill() { m_rows.EndFill(); }
    ListFill(const ListFill&) = delete;
    ListFill& operator=(const ListFill&) = delete;

 private:
    ListRows& m_rows;
};

/// The selected row of a list box.
class ListSelection {
 public:
    virtual ~ListSelection() = default;
    /// -1 when no row is selected.
    virtual std::int32_t SelectedRow() const = 0;
    virtual void SelectRow(std::int32_t row) = 0;
};

/// Message boxes of the platform.
class MessageBoxes {
 public:
    virtual ~MessageBoxes() = default;
    /// Waits for the user. Answers the platform's number of the pressed button; `style` is the platform's
    /// style value.
    virtual int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t style) = 0;
};

/// The physical keyboard.
class Keyboard {
 public:
    virtual ~Keyboard() = default;
    /// The raw key state: negative while the key is held, the low bit set when it was pressed since the
    /// previous query.
    virtual std::int16_t AsyncKeyState(int virtualKey) = 0;
};

/// One running browser window. A window that no longer answers throws RunTimeError with the call's HRESULT.
class Browser {
 public:
    virtual ~Browser() = default;
    /// The handle of its frame window (`HWND`).
    virtual std::int32_t Handle() const = 0;
    virtual std::wstring LocationName() const = 0;
    virtual std::wstring LocationURL() const = 0;
    virtual std::wstring StatusText() const = 0;
    /// Both with all optional arguments omitted.
    virtual void Navigate(const std::wstring& address) = 0;
    virtual void Navigate2(const std::wstring& address) = 0;
};

struct TreeNode {
    std::wstring key;
    std::wstring text;
    /// The parent's key; empty for a root.
    std::wstring parent;
};

/// A tree of nodes, each with a key that is unique in the tree.
class Tree {
 public:
    virtual ~Tree() = default;
    virtual void Clear() = 0;
    /// Adds a node as the last child of `parent`; a root when `parent` is empty. `image` counts from 1.
    /// Throws kKeyNotUnique, and kElementNotFound when the parent is not there.
    virtual void Add(const std::wstring& parent, const std::wstring& key, const std::wstring& text,
                     int image) = 0;
    /// The three below throw kElementNotFound when there is no such node.
    virtual void Expand(const std::wstring& key) = 0;
    virtual void SetText(const std::wstring& key, const std::wstring& text) = 0;
    virtual void Remove(const std::wstring& key) = 0;
    /// All nodes, in the tree's own order.
    virtual std::vector<TreeNode> Nodes() const = 0;
    virtual std::optional<TreeNode> Selected() const = 0;
};

}  // namespace kestrelguard
