#include "controls/win32/TreeViewControl.h"

#include <utility>

#include "runtime/RunTimeError.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

void TreeViewControl::UseImages(HIMAGELIST images) {
    Send(TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images));
}

TreeViewControl::Item& TreeViewControl::Existing(const std::wstring& key) const {
    const auto found = m_items.find(key);
    if (found == m_items.end()) {
        throw RunTimeError(RunTimeError::kElementNotFound);
    }
    return *found->second;
}

const TreeViewControl::Item& TreeViewControl::ItemOf(HTREEITEM item) const {
    TVITEMA data = {};
    data.mask = TVIF_HANDLE | TVIF_PARAM;
    data.hItem = item;
    if (Send(TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data)) == FALSE) {
        throw RunTimeError(RunTimeError::kElementNotFound);
    }
    return *reinterpret_cast<const Item*>(data.lParam);
}

HTREEITEM TreeViewControl::Next(UINT relation, HTREEITEM item) const {
    return reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

void TreeViewControl::Clear() {
    // The control may still ask for an item while it lets go of the others, so ours go last.
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    m_items.clear();
}

void TreeViewControl::Add(const std::wstring& parent, const std::wstring& key, const std::wstring& text,
                          int image) {
    Item* const above = parent.empty() ? nullptr : &Existing(parent);
    const auto [place, isNew] = m_items.try_emplace(key, nullptr);
    if (!isNew) {
        throw RunTimeError(RunTimeError::kKeyNotUnique);
    }
    try {
        place->second = std::make_unique<Item>(Item{TreeNode{key, text, parent}, nullptr, above});
        std::string shown = ToAnsi(text);
        TVINSERTSTRUCTA insertion = {};
        insertion.hParent = above != nullptr ? above->item : TVI_ROOT;
        insertion.hInsertAfter = TVI_LAST;
        insertion.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_PARAM;
        insertion.item.pszText = shown.data();
        insertion.item.iImage = image - 1;
        insertion.item.iSelectedImage = image - 1;
        insertion.item.lParam = reinterpret_cast<LPARAM>(place->second.get());
        place->second->item =
            reinterpret_cast<HTREEITEM>(Send(TVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&insertion)));
        if (place->second->item == nullptr) {
            throw RunTimeError(RunTimeError::kOutOfMemory);
        }
    } catch (...) {
        m_items.erase(place);
        throw;
    }
    if (above != nullptr && std::exchange(above->expandWithChildren, false) && !Expanded(*above)) {
        Send(TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(above->item));
    }
}

void TreeViewControl::Expand(const std::wstring& key) {
    Item& node = Existing(key);
    if (Next(TVGN_CHILD, node.item) == nullptr) {
        ExpandWithChildren(node);
    } else {
        Send(TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(node.item));
    }
}

bool TreeViewControl::Expanded(const Item& node) const {
    TVITEMA data = {};
    data.mask = TVIF_HANDLE | TVIF_STATE;
    data.hItem = node.item;
    data.stateMask = TVIS_EXPANDED;
    Send(TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&data));
    return (data.state & TVIS_EXPANDED) != 0;
}

void TreeViewControl::ExpandWithChildren(Item& node) {
    // TVM_EXPAND does nothing for a node without children, and with them it scrolls until they are in view. A
    // node that is marked as open before they come does neither.
    TVITEMA data = {};
    data.mask = TVIF_HANDLE | TVIF_STATE;
    data.hItem = node.item;
    data.state = TVIS_EXPANDED;
    data.stateMask = TVIS_EXPANDED;
    Send(TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&data));
    node.expandWithChildren = true;
}

void TreeViewControl::SetText(const std::wstring& key, const std::wstring& text) {
    Item& node = Existing(key);
    if (node.node.text == text) {
        return;
    }
    std::string shown = ToAnsi(text);
    TVITEMA data = {};
    data.mask = TVIF_HANDLE | TVIF_TEXT;
    data.hItem = node.item;
    data.pszText = shown.data();
    if (Send(TVM_SETITEMA, 0, reinterpret_cast<LPARAM>(&data)) == FALSE) {
        throw RunTimeError(RunTimeError::kInvalidCall);
    }
    node.node.text = text;
}

void TreeViewControl::Remove(const std::wstring& key) {
    const Item& node = Existing(key);
    std::vector<TreeNode> gone{node.node};
    Walk(Next(TVGN_CHILD, node.item), gone);
    Item* const above = node.parent;
    const bool aboveWasOpen = above != nullptr && Expanded(*above);
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(node.item));
    for (const TreeNode& each : gone) {
        m_items.erase(each.key);
    }
    if (aboveWasOpen && Next(TVGN_CHILD, above->item) == nullptr) {
        // An open node that lost its last child opens again with the next one.
        ExpandWithChildren(*above);
    }
}

void TreeViewControl::Walk(HTREEITEM first, std::vector<TreeNode>& nodes) const {
    for (HTREEITEM item = first; item != nullptr; item = Next(TVGN_NEXT, item)) {
        nodes.push_back(ItemOf(item).node);
        Walk(Next(TVGN_CHILD, item), nodes);
    }
}

std::vector<TreeNode> TreeViewControl::Nodes() const {
    std::vector<TreeNode> nodes;
    nodes.reserve(m_items.size());
    Walk(Next(TVGN_ROOT, nullptr), nodes);
    return nodes;
}

std::optional<TreeNode> TreeViewControl::Selected() const {
    const HTREEITEM item = Next(TVGN_CARET, nullptr);
    if (item == nullptr) {
        return std::nullopt;
    }
    return ItemOf(item).node;
}

}  // namespace kestrelguard
