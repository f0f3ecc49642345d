#pragma once

#include <algorithm>
#include <random>
#include <utility>

#include "WalkedProgram.h"

namespace kestrelguard::testing {

/// The desktop of a random walk: chance, and windows that come and go.
class WalkedDesktop : protected WalkedProgram {
 protected:
    explicit WalkedDesktop(unsigned seed) : m_random(seed) {}

    unsigned Pick(unsigned below) { return static_cast<unsigned>(m_random() % below); }
    template <class Value, std::size_t count>
    Value Pick(const Value (&values)[count]) {
        return values[Pick(static_cast<unsigned>(count))];
    }
    void Say(const std::string& more) { m_what += " (" + more + ")"; }

    void Press(int id) { ClickAndWait(Control(id)); }
    Page* AnyPage() {
        return m_pages.empty() ? nullptr : &m_pages[Pick(static_cast<unsigned>(m_pages.size()))];
    }

    // --- windows

    Page NewPage(bool announced) {
        Page page;
        page.title = "page" + std::to_string(m_opened);
        page.url = "http://page" + std::to_string(m_opened) + ".example/";
        ++m_opened;
        desktop::BrowserOptions options;
        options.title = Wide(page.title);
        options.url = Wide(page.url);
        options.statusText = L"http://link.example/";
        options.navigates = false;
        options.announced = announced;
        page.browser = &m_desktop.OpenBrowser(options);
        return page;
    }
    /// The program hears of a window.
    void Told(const Page& page) {
        m_pages.push_back(page);
        m_model.nodes.push_back({page.browser->Handle(), false, Wide(page.title), Wide(page.url)});
    }
    /// With any announcement it finds those that it was not told of.
    void Announced() {
        for (const Page& page : std::exchange(m_silent, {})) {
            Told(page);
        }
    }
    void Open() {
        if (m_pages.size() >= 6) {
            Close();
        }
        const Page page = NewPage(true);
        Announced();
        Told(page);
    }
    void OpenSilently() {
        if (m_pages.size() + m_silent.size() < 6) {
            m_silent.push_back(NewPage(false));
        }
    }
    /// It has closed or died, and the program has been told.
    void Gone(Page* page) {
        m_pages.erase(m_pages.begin() + (page - m_pages.data()));
        Announced();
    }
    void Forget(const Page& page) {
        const int window = page.browser->Handle();
        std::erase_if(m_model.nodes, [&](const auto& node) { return node.window == window; });
    }
    void Close() {
        if (Page* const page = AnyPage()) {
            Forget(*page);
            page->browser->Close();
            Gone(page);
        }
    }
    void Die() {
        if (Page* const page = AnyPage()) {
            Forget(*page);
            page->browser->Die();
            m_desktop.Withdraw(page->browser->Cookie());
            Gone(page);
        }
    }
    GuardModel::Node* NodeOf(const Page& page) {
        const auto found = std::find_if(m_model.nodes.begin(), m_model.nodes.end(), [&](const auto& node) {
            return node.window == page.browser->Handle();
        });
        return found == m_model.nodes.end() ? nullptr : &*found;
    }
    void Rebuild() {
        m_pages.insert(m_pages.end(), m_silent.begin(), m_silent.end());
        m_silent.clear();
        m_model.nodes.clear();
        for (const Page& page : m_pages) {
            m_model.nodes.push_back({page.browser->Handle(), true, Wide(page.title), Wide(page.url)});
        }
    }

 private:
    std::mt19937 m_random;
    int m_opened = 0;
    std::vector<Page> m_silent;  ///< open, and the program does not know
};

}  // namespace kestrelguard::testing
