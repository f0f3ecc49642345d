#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "desktop/driver/Windows.h"

namespace kestrelguard::testing {

/// Controls of another process, read and used as a person (or a screen reader) would. All of them take the
/// control's window; null windows read as empty and are not clicked.

// Buttons, check boxes, option buttons.
bool Checked(HWND button);
/// Clicks without waiting: the click may open a box that waits for the test.
void Click(HWND button);
/// Clicks and waits until the program has dealt with it.
void ClickAndWait(HWND button);
bool Enabled(HWND control);

// Edit fields.
/// Replaces the text as typing would, with the notifications of a change.
void TypeText(HWND edit, const std::wstring& text);

// Lists and drop-down lists.
std::vector<std::wstring> ListRows(HWND list);
int SelectedRow(HWND list);
/// Selects a row (-1: none) as a click does, with the notification.
void SelectRow(HWND list, int row);
std::vector<std::wstring> DropDownRows(HWND combo);
void SelectDropDown(HWND combo, int row);

// Tree views.
struct TreeNode {
    HTREEITEM item = nullptr;
    int depth = 0;  ///< 0: root
    std::wstring text;
    int image = 0;
    bool expanded = false;
    bool selected = false;
};
/// All nodes from top to bottom, collapsed ones included.
std::vector<TreeNode> TreeNodes(HWND tree);
/// The texts of all nodes, each indented by two blanks a level: easy to compare and to read.
std::vector<std::wstring> TreeTexts(HWND tree);
/// Selects a node as the arrow keys do.
void SelectNode(HWND tree, HTREEITEM item);
/// Where a node's text is, in the tree's client area. False when it cannot be seen.
bool NodeRect(HWND tree, HTREEITEM item, RECT& rect);
/// Clicks a node with the left or right button, or twice with the left one, by posted messages.
void ClickNode(HWND tree, HTREEITEM item, bool right = false);
void DoubleClickNode(HWND tree, HTREEITEM item);

// Tab strips.
std::vector<std::wstring> TabTexts(HWND tabs);
int SelectedTab(HWND tabs);
/// Clicks a tab (from 0) by posted messages.
void ClickTab(HWND tabs, int tab);

/// The label that stands to the right of another one, nearest to it and on the same line.
HWND LabelRightOf(HWND parent, const wchar_t* label);

/// The tool tip of a control inside a form; empty when it has none. A form without a tip window reads "no tip
/// window".
std::wstring TipOf(HWND form, HWND control);

// Message boxes.
struct MessageBoxSeen {
    HWND window = nullptr;
    std::wstring caption;
    std::wstring text;
    std::vector<std::wstring> buttons;
    bool topmost = false;

    explicit operator bool() const { return window != nullptr; }
};
/// The message box that the process shows, if any.
MessageBoxSeen FindMessageBox(DWORD process);
/// Waits for one; empty after the limit (milliseconds).
MessageBoxSeen WaitMessageBox(DWORD process, DWORD limit = kLimit);
/// Presses one of its buttons (IDOK, IDYES, ...) and waits until it is gone.
bool Dismiss(const MessageBoxSeen& box, int button = IDOK, DWORD limit = kLimit);

}  // namespace kestrelguard::testing
