#pragma once

#include "blocking/BrowserNodes.h"
#include "blocking/SiteBlocking.h"
#include "blocking/TitleBlocking.h"
#include "browsertree/BrowserTree.h"
#include "monitoring/win32/IEEvents.h"
#include "popup/PopupPolicy.h"
#include "update/UpdateCheck.h"

namespace kestrelguard {

/// The form's handlers of the browser events control: `IEEvents1_<event>`. Each hands the event to the
/// subsystems that act on it, in the order in which they must, and does nothing else. On the events that are
/// not here nobody acts.
class FormEvents final : public NoBrowserEvents {
 public:
    /// All of it outlives the events.
    struct Parts {
        SiteBlocking& siteBlocking;
        TitleBlocking& titleBlocking;
        PopupPolicy& popupPolicy;
        BrowserTree& browserTree;
        UpdateCheck& updateCheck;
    };

    explicit FormEvents(const Parts& parts) : m_parts(parts) {}

    void BrowserNavigating(IWebBrowser2*& Browser, IDispatch* pDisp, VARIANT& URL, VARIANT& Flags,
                           VARIANT& TargetFrameName, VARIANT& PostData, VARIANT& Headers,
                           VARIANT_BOOL& Cancel) override;
    void DocumentComplete(IWebBrowser2*& Browser, IDispatch*& pDisp, VARIANT& URL) override;
    void NewWindow(IWebBrowser2*& Browser, IDispatch*& ppDisp, VARIANT_BOOL& Cancel) override;
    void TitleChange(IWebBrowser2*& Browser, const std::wstring& Text) override;
    void BrowserCreated(IWebBrowser2* Browser) override;
    void BrowserDestroyed() override;

 private:
    Parts m_parts;
};

/// The tree's nodes as the filters write them.
class TreeNodes final : public BrowserNodes {
 public:
    explicit TreeNodes(BrowserTree& tree) : m_tree(tree) {}
    void SetBrowserNodeText(Browser& browser, const std::wstring& suffix, const std::wstring& text) override {
        m_tree.SetBrowserNodeText(browser, suffix, text);
    }

 private:
    BrowserTree& m_tree;
};

/// The browser events control as the tree works on it.
class TreeEventsControl final : public BrowserEventsControl {
 public:
    /// The control is made after the tree that it reports to.
    void Attach(IEEvents& control) { m_control = &control; }

    void SetEnabled(bool enabled) override { m_control->SetEnabled(enabled); }
    void Refresh() override { m_control->Refresh(); }
    std::int16_t Count() const override { return m_control->Browsers()->Count(); }
    std::vector<std::shared_ptr<Browser>> Browsers() const override;

 private:
    IEEvents* m_control = nullptr;
};

}  // namespace kestrelguard
