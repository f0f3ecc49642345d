#include "desktop/driver/Controls.h"

#include <algorithm>
#include <cstring>

namespace kestrelguard::testing {

namespace {

std::vector<std::wstring> Rows(HWND window, UINT count, UINT length, UINT get) {
    std::vector<std::wstring> rows;
    const LRESULT total = Ask(window, count);
    for (LRESULT i = 0; i < total; ++i) {
        const LRESULT size = Ask(window, length, static_cast<WPARAM>(i));
        std::wstring text(static_cast<std::size_t>(std::max<LRESULT>(size, 0)) + 1, L'\0');
        const LRESULT got = Ask(window, get, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text.data()));
        text.resize(static_cast<std::size_t>(std::max<LRESULT>(got, 0)));
        rows.push_back(std::move(text));
    }
    return rows;
}

void Notify(HWND control, WORD notification) {
    Ask(GetParent(control), WM_COMMAND, MAKEWPARAM(IdOf(control), notification),
        reinterpret_cast<LPARAM>(control));
}

constexpr int kTextLength = 4096;

TreeNode ReadNode(HWND tree, HTREEITEM item, const RemoteBlock& block) {
    TVITEMW record{};
    record.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_STATE | TVIF_HANDLE;
    record.hItem = item;
    record.stateMask = TVIS_EXPANDED | TVIS_SELECTED;
    record.pszText = reinterpret_cast<wchar_t*>(block.Address() + static_cast<LPARAM>(sizeof(record)));
    record.cchTextMax = kTextLength;
    block.Write(&record, sizeof(record));
    Ask(tree, TVM_GETITEMW, 0, block.Address());
    block.Read(&record, sizeof(record));
    std::vector<wchar_t> text(kTextLength);
    block.Read(text.data(), kTextLength * sizeof(wchar_t), sizeof(record));
    text.back() = L'\0';
    TreeNode node;
    node.item = item;
    node.text = text.data();
    node.image = record.iImage;
    node.expanded = (record.state & TVIS_EXPANDED) != 0;
    node.selected = reinterpret_cast<HTREEITEM>(Ask(tree, TVM_GETNEXTITEM, TVGN_CARET)) == item;
    return node;
}

HTREEITEM Next(HWND tree, UINT relation, HTREEITEM item) {
    return reinterpret_cast<HTREEITEM>(Ask(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

void ReadLevel(HWND tree, HTREEITEM item, int depth, const RemoteBlock& block, std::vector<TreeNode>& nodes) {
    for (; item != nullptr; item = Next(tree, TVGN_NEXT, item)) {
        nodes.push_back(ReadNode(tree, item, block));
        nodes.back().depth = depth;
        ReadLevel(tree, Next(tree, TVGN_CHILD, item), depth + 1, block, nodes);
    }
}

POINT Middle(const RECT& rect) {
    return POINT{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

}  // namespace

bool Checked(HWND button) {
    return Ask(button, BM_GETCHECK) == BST_CHECKED;
}

void Click(HWND button) {
    PostMessageW(button, BM_CLICK, 0, 0);
}

void ClickAndWait(HWND button) {
    Ask(button, BM_CLICK);
}

bool Enabled(HWND control) {
    return IsWindowEnabled(control) != FALSE;
}

void TypeText(HWND edit, const std::wstring& text) {
    Ask(edit, EM_SETSEL, 0, -1);
    Ask(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
}

std::vector<std::wstring> ListRows(HWND list) {
    return Rows(list, LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT);
}

int SelectedRow(HWND list) {
    return static_cast<int>(Ask(list, LB_GETCURSEL));
}

void SelectRow(HWND list, int row) {
    Ask(list, LB_SETCURSEL, static_cast<WPARAM>(row));
    Notify(list, LBN_SELCHANGE);
}

std::vector<std::wstring> DropDownRows(HWND combo) {
    return Rows(combo, CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT);
}

void SelectDropDown(HWND combo, int row) {
    Ask(combo, CB_SETCURSEL, static_cast<WPARAM>(row));
    Notify(combo, CBN_SELENDOK);
    Notify(combo, CBN_SELCHANGE);
}

std::vector<TreeNode> TreeNodes(HWND tree) {
    std::vector<TreeNode> nodes;
    const RemoteBlock block(tree, sizeof(TVITEMW) + kTextLength * sizeof(wchar_t));
    ReadLevel(tree, Next(tree, TVGN_ROOT, nullptr), 0, block, nodes);
    return nodes;
}

std::vector<std::wstring> TreeTexts(HWND tree) {
    std::vector<std::wstring> texts;
    for (const TreeNode& node : TreeNodes(tree)) {
        texts.push_back(std::wstring(static_cast<std::size_t>(node.depth) * 2, L' ') + node.text);
    }
    return texts;
}

void SelectNode(HWND tree, HTREEITEM item) {
    Ask(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
}

bool NodeRect(HWND tree, HTREEITEM item, RECT& rect) {
    const RemoteBlock block(tree, sizeof(RECT));
    const auto handle = reinterpret_cast<UINT_PTR>(item);
    block.Write(&handle, sizeof(handle));  // the record takes the node in and gives the rectangle back
    if (Ask(tree, TVM_GETITEMRECT, TRUE, block.Address()) == 0) {
        return false;
    }
    block.Read(&rect, sizeof(rect));
    return true;
}

void ClickNode(HWND tree, HTREEITEM item, bool right) {
    RECT rect{};
    if (NodeRect(tree, item, rect)) {
        PostClick(tree, Middle(rect), right);
    }
}

void DoubleClickNode(HWND tree, HTREEITEM item) {
    RECT rect{};
    if (NodeRect(tree, item, rect)) {
        PostDoubleClick(tree, Middle(rect));
    }
}

std::vector<std::wstring> TabTexts(HWND tabs) {
    constexpr int kLength = 256;
    std::vector<std::wstring> texts;
    const RemoteBlock block(tabs, sizeof(TCITEMW) + kLength * sizeof(wchar_t));
    const LRESULT count = Ask(tabs, TCM_GETITEMCOUNT);
    for (LRESULT i = 0; i < count; ++i) {
        TCITEMW record{};
        record.mask = TCIF_TEXT;
        record.pszText = reinterpret_cast<wchar_t*>(block.Address() + static_cast<LPARAM>(sizeof(record)));
        record.cchTextMax = kLength;
        block.Write(&record, sizeof(record));
        Ask(tabs, TCM_GETITEMW, static_cast<WPARAM>(i), block.Address());
        wchar_t text[kLength];
        block.Read(text, sizeof(text), sizeof(record));
        text[kLength - 1] = L'\0';
        texts.emplace_back(text);
    }
    return texts;
}

int SelectedTab(HWND tabs) {
    return static_cast<int>(Ask(tabs, TCM_GETCURSEL));
}

void ClickTab(HWND tabs, int tab) {
    const RemoteBlock block(tabs, sizeof(RECT));
    RECT rect{};
    if (Ask(tabs, TCM_GETITEMRECT, static_cast<WPARAM>(tab), block.Address()) != 0) {
        block.Read(&rect, sizeof(rect));
        PostClick(tabs, Middle(rect));
    }
}

HWND LabelRightOf(HWND parent, const wchar_t* label) {
    const HWND from = FindInside(parent, L"Static", label);
    const RECT start = RectOf(from);
    const LONG line = (start.top + start.bottom) / 2;
    HWND best = nullptr;
    for (const HWND window : Inside(parent)) {
        const RECT rect = RectOf(window);
        if (from != nullptr && window != from && GetParent(window) == GetParent(from) &&
            lstrcmpiW(ClassOf(window).c_str(), L"Static") == 0 && rect.top <= line && line < rect.bottom &&
            rect.left >= start.left && (best == nullptr || rect.left < RectOf(best).left)) {
            best = window;
        }
    }
    return best;
}

std::wstring TipOf(HWND form, HWND control) {
    DWORD process = 0;
    GetWindowThreadProcessId(form, &process);
    for (const HWND window : TopWindows(process)) {
        if (ClassOf(window) != TOOLTIPS_CLASSW || GetWindow(window, GW_OWNER) != form) {
            continue;
        }
        const RemoteBlock block(window, 4096);
        TTTOOLINFOA tool = {};
        tool.cbSize = TTTOOLINFOA_V1_SIZE;
        tool.uFlags = TTF_IDISHWND;
        tool.hwnd = form;
        tool.uId = reinterpret_cast<UINT_PTR>(control);
        tool.lpszText = reinterpret_cast<char*>(block.Address() + 1024);
        block.Write(&tool, TTTOOLINFOA_V1_SIZE);
        const char nothing = '\0';
        block.Write(&nothing, 1, 1024);
        Ask(window, TTM_GETTEXTA, 1000, block.Address());
        char text[1001] = {};
        block.Read(text, 1000, 1024);
        return std::wstring(text, text + std::strlen(text));
    }
    return L"no tip window";
}

MessageBoxSeen FindMessageBox(DWORD process) {
    MessageBoxSeen box;
    const HWND window = FindTop(process, [](HWND candidate) {
        return IsWindowVisible(candidate) != FALSE && ClassOf(candidate) == L"#32770" &&
               GetDlgItem(candidate, 0xFFFF) != nullptr;
    });
    if (window == nullptr) {
        return box;
    }
    box.caption = TextOf(window);
    box.text = TextOf(GetDlgItem(window, 0xFFFF));
    for (const HWND inner : Inside(window)) {
        if (lstrcmpiW(ClassOf(inner).c_str(), L"Button") == 0 &&
            (GetWindowLongW(inner, GWL_STYLE) & WS_VISIBLE) != 0) {
            box.buttons.push_back(TextOf(inner));
        }
    }
    box.topmost = (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    box.window = window;
    return box;
}

MessageBoxSeen WaitMessageBox(DWORD process, DWORD limit) {
    MessageBoxSeen box;
    WaitUntil(
        [&] {
            box = FindMessageBox(process);
            return static_cast<bool>(box);
        },
        limit);
    return box;
}

bool Dismiss(const MessageBoxSeen& box, int button, DWORD limit) {
    // The message that a press of the button sends, so that a box whose Esc and Enter differ is told apart.
    PostMessageW(box.window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(box.window, button)));
    return WaitUntil([&] { return !IsWindow(box.window); }, limit);
}

}  // namespace kestrelguard::testing
