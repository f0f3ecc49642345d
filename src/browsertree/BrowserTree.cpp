#include "browsertree/BrowserTree.h"

#include <unordered_set>

#include "browsertree/Texts.h"
#include "runtime/ErrorsIgnored.h"
#include "runtime/FirstFailure.h"
#include "runtime/Flagged.h"
#include "runtime/Numbers.h"
#include "runtime/Text.h"

namespace kestrelguard {

namespace {

constexpr int kRightButton = 2;

std::wstring BrowserKey(std::int32_t handle) {
    return tree_texts::kKeySeparator + Decimal(handle);
}

std::wstring DetailKey(const std::wstring& browserKey, const std::wstring& suffix) {
    return browserKey + tree_texts::kKeySeparator + suffix;
}

}  // namespace

std::optional<std::int32_t> WindowHandleOf(std::wstring_view key) {
    if (!Contains(key, tree_texts::kKeySeparator)) {
        return std::nullopt;
    }
    for (const std::wstring_view part : Split(key, tree_texts::kKeySeparator)) {
        if (const std::optional<double> number = NumberOf(part)) {
            return RoundToInteger(*number);
        }
    }
    return std::nullopt;
}

void BrowserTree::RefreshBrowserTree() {
    if (m_rebuilding) {
        m_rebuildAgain = true;
        return;
    }
    const Flagged rebuilding(m_rebuilding);
    const int number = ++m_lastRebuild;
    FirstFailure failure;
    do {
        m_rebuildAgain = false;
        failure.Try([&] { Rebuild(number); });
    } while (number == m_lastRebuild && m_rebuildAgain);
    if (number == m_lastRebuild) {
        failure.Rethrow();
    }
}

void BrowserTree::GoOn() {
    if (m_rebuilding) {
        m_rebuilding = false;
        RefreshBrowserTree();
    }
}

void BrowserTree::Rebuild(int number) {
    Tree& tree = m_parts.tvBrowsers;
    m_parts.IEEvents1.SetEnabled(true);
    if (number != m_lastRebuild) {
        return;
    }
    tree.Clear();
    m_createdMeanwhile = false;
    tree.Add({}, tree_texts::kRootKey, tree_texts::kAllInstances, tree_images::kRoot);
    tree.Expand(tree_texts::kRootKey);
    ShowCount();
    const auto add = [&](auto&& node) {
        if (number == m_lastRebuild) {
            AddUnlessThere(node);
        }
    };
    for (const std::shared_ptr<Browser>& browser : m_parts.IEEvents1.Browsers()) {
        add([&] { AddBrowserNode(*browser, tree_texts::kRebuiltBrowser); });
        add([&] { AddTitleNode(*browser); });
        add([&] { AddAddressNode(*browser); });
    }
}

/// A key that is taken fails the rebuild, unless an event has come in between: then the node may be the
/// event's.
template <class Add>
void BrowserTree::AddUnlessThere(Add&& add) {
    try {
        add();
    } catch (const RunTimeError& error) {
        if (!m_createdMeanwhile || error.Number() != RunTimeError::kKeyNotUnique) {
            throw;
        }
    }
}

void BrowserTree::ShowCount() {
    m_parts.tvBrowsers.SetText(tree_texts::kRootKey, std::wstring(tree_texts::kWindowsBrowsers) + L" (" +
                                                         Decimal(m_parts.IEEvents1.Count()) + L")");
}

// The handle is read afresh for every node: a browser that dies in between yields what it still can.

void BrowserTree::AddBrowserNode(const Browser& browser, const std::wstring& text) {
    const std::wstring key = BrowserKey(browser.Handle());
    m_parts.tvBrowsers.Add(tree_texts::kRootKey, key, text, tree_images::kBrowser);
    m_parts.tvBrowsers.Expand(key);
}

void BrowserTree::AddTitleNode(const Browser& browser) {
    const std::wstring parent = BrowserKey(browser.Handle());
    m_parts.tvBrowsers.Add(parent, DetailKey(parent, tree_texts::kTitleSuffix),
                           tree_texts::kTitle + browser.LocationName(), tree_images::kDetail);
}

void BrowserTree::AddAddressNode(const Browser& browser) {
    const std::wstring parent = BrowserKey(browser.Handle());
    m_parts.tvBrowsers.Add(parent, DetailKey(parent, tree_texts::kURLSuffix),
                           tree_texts::kURL + browser.LocationURL(), tree_images::kDetail);
}

void BrowserTree::SetBrowserNodeText(const Browser& browser, const std::wstring& suffix,
                                     const std::wstring& text) {
    // The browser waits for this: no call back to it.
    ErrorsIgnored(
        [&] { m_parts.tvBrowsers.SetText(DetailKey(BrowserKey(browser.KnownHandle()), suffix), text); });
}

void BrowserTree::BrowserCreated(const Browser& browser) {
    m_createdMeanwhile = true;
    ErrorsIgnored([&] { ShowCount(); }, [&] { AddBrowserNode(browser, tree_texts::kCreatedBrowser); },
                  [&] { AddTitleNode(browser); }, [&] { AddAddressNode(browser); });
}

void BrowserTree::BrowserDestroyed() {
    ErrorsIgnored([&] { ShowCount(); });
    // Looking for the node lets events in: another window that goes meanwhile has its turn afterwards.
    ++m_windowsGone;
    if (m_removing) {
        return;
    }
    const Flagged removing(m_removing);
    while (m_windowsGone > 0) {
        --m_windowsGone;
        ErrorsIgnored([&] { RemoveFirstStaleNode(); });
    }
}

void BrowserTree::RemoveFirstStaleNode() {
    const std::vector<std::shared_ptr<Browser>> browsers = m_parts.IEEvents1.Browsers();
    // A node that comes while the handles are read is none of this event's.
    std::unordered_set<std::wstring> candidates;
    for (TreeNode& node : m_parts.tvBrowsers.Nodes()) {
        if (node.parent == tree_texts::kRootKey) {
            candidates.insert(std::move(node.key));
        }
    }
    // The handles that the rebuild has just read; one it could not read is asked for once. A browser that
    // does not answer then matches none.
    for (const std::shared_ptr<Browser>& browser : browsers) {
        ErrorsIgnored([&] { candidates.erase(BrowserKey(browser->KnownHandle())); });
    }
    if (candidates.empty()) {
        return;
    }
    for (const TreeNode& node : m_parts.tvBrowsers.Nodes()) {
        if (candidates.contains(node.key)) {
            // One at most: one event stands for one window gone.
            m_parts.tvBrowsers.Remove(node.key);
            return;
        }
    }
}

bool BrowserTree::RootIsSelected() const {
    const std::optional<TreeNode> node = m_parts.tvBrowsers.Selected();
    return node && Contains(node->text, tree_texts::kWindowsBrowsers);
}

void BrowserTree::tvBrowsers_Click() {
    ErrorsIgnored([&] {
        if (RootIsSelected()) {
            ErrorsIgnored([&] { m_parts.IEEvents1.Refresh(); }, [&] { m_parts.messageLoop.DoEvents(); });
        }
    });
}

void BrowserTree::tvBrowsers_DblClick() {
    ErrorsIgnored([&] {
        if (RootIsSelected()) {
            ErrorsIgnored([&] { m_parts.IEEvents1.SetEnabled(false); }, [&] { RefreshBrowserTree(); },
                          [&] { m_parts.messageLoop.DoEvents(); });
        }
    });
}

void BrowserTree::tvBrowsers_MouseDown(int button) {
    // Kept: the selection stays where it is, whatever the pointer is over.
    if (button == kRightButton) {
        ErrorsIgnored([&] { m_parts.bMnu.PopUp(); });
    }
}

std::optional<std::int32_t> BrowserTree::SelectedWindow() const {
    std::optional<std::int32_t> handle;
    ErrorsIgnored([&] {
        if (const std::optional<TreeNode> node = m_parts.tvBrowsers.Selected()) {
            handle = WindowHandleOf(node->key);
        }
    });
    return handle;
}

void BrowserTree::mnuSB_Click() {
    if (const std::optional<std::int32_t> handle = SelectedWindow()) {
        ErrorsIgnored([&] { m_parts.windows.ShowNormal(*handle); },
                      [&] { m_parts.windows.SetForeground(*handle); });
    }
}

void BrowserTree::mnuCB_Click() {
    if (const std::optional<std::int32_t> handle = SelectedWindow()) {
        ErrorsIgnored([&] { m_parts.windows.PostClose(*handle); });
    }
}

}  // namespace kestrelguard
