#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "BrowserTraces.h"
#include "GuardModel.h"
#include "app/win32/ControlIds.h"
#include "desktop/Desktop.h"
#include "desktop/driver/CacheFiller.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::testing {

inline std::wstring Wide(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

/// The program on a random walk, its browsers, the model beside it, and where they differ.
class WalkedProgram {
 protected:
    WalkedProgram() {
        CacheFiller::Empty();
        DeleteFileW(kHistoryFile);
        m_saved = CacheFiller::Add("Cookie:jane@bank.example/", "a saved cookie");
    }
    ~WalkedProgram() {
        m_guard.reset();
        CacheFiller::Empty();
    }
    WalkedProgram(const WalkedProgram&) = delete;
    WalkedProgram& operator=(const WalkedProgram&) = delete;

    using Browser = desktop::Browser;
    using Texts = std::vector<std::wstring>;

    struct Page {
        Browser* browser = nullptr;
        std::string title;
        std::string url;
        std::size_t navigations = 0;
    };

    void Expect(bool holds, const std::string& what) {
        if (!holds) {
            m_problem += what + "; ";
        }
    }
    HWND Control(int id) const {
        for (const HWND window : Inside(m_guard->Window())) {
            if (IdOf(window) == id) {
                return window;
            }
        }
        return nullptr;
    }
    // --- what is so

    void ExpectFile() {
        const std::string difference = FileDifference();
        Expect(difference.empty(), difference);
    }
    std::string FileDifference() const {
        const std::string file = m_folder->Settings();
        const std::size_t start = file.find("PT1/:/:");
        const std::string found = start == std::string::npos ? file : file.substr(start);
        return found == m_model.File() ? "" : "the file holds\n" + found + "instead of\n" + m_model.File();
    }
    Texts ExpectedTree() const {
        Texts lines{L"Windows Browsers (" + std::to_wstring(m_pages.size()) + L")"};
        for (const GuardModel::Node& node : m_model.nodes) {
            lines.insert(lines.end(), {node.atRebuild ? L"  Browser " : L"  Browser",
                                       L"    Title : " + node.title, L"    URL : " + node.url});
        }
        return lines;
    }
    /// What the browser has left behind and nobody has cleared.
    std::string Traces() const {
        return std::string(kestrelguard::FileExists(m_page) ? "page " : "") +
               (kestrelguard::FileExists(m_cookie) ? "cookie " : "") +
               (kestrelguard::FileExists(m_saved) ? "saved" : "") + (Visited() != 0 ? " history" : "");
    }
    /// Moves the pointer over the icon: whether a real move comes as well, or none, the tip is as it is after
    /// one.
    void PointAtIcon() {
        if (m_guard->Minimised()) {
            Ask(m_guard->Window(), WM_MOUSEMOVE, 1, WM_MOUSEMOVE);
        }
    }
    std::string Difference() const {
        const auto differs = [](const std::string& what, const auto& found, const auto& expected) {
            return what + " " + ::testing::PrintToString(found) + " instead of " +
                   ::testing::PrintToString(expected);
        };
        if (!m_guard->Program().Running()) {
            return "it has ended";
        }
        if (const MessageBoxSeen box = FindMessageBox(m_guard->Program().Id())) {
            return differs("a box", box.text, L"none");
        }
        if (m_guard->InTray() != m_model.icon) {
            return differs("in the tray", m_guard->InTray(), m_model.icon);
        }
        Texts tips;
        for (const TrayIcon& icon : TrayIcons()) {
            tips.push_back(icon.tip);
        }
        const Texts expectedTips = m_model.icon ? Texts{Wide(m_model.tip)} : Texts{};
        if (tips != expectedTips) {
            return differs("tips of icons", tips, expectedTips);
        }
        if (Traces() != m_model.Traces()) {
            return differs("left in the cache and the history", Traces(), m_model.Traces());
        }
        if (TextOf(Control(kWash_F)) != Wide(m_model.now.interval)) {
            return differs("interval", TextOf(Control(kWash_F)), m_model.now.interval);
        }
        if (TextOf(Control(kWash_CMB)).substr(0, 1) !=
            std::wstring(1, static_cast<wchar_t>(m_model.now.unit))) {
            return differs("unit", TextOf(Control(kWash_CMB)), m_model.now.unit);
        }
        if (m_guard->Mode() != m_model.now.mode) {
            return differs("mode", m_guard->Mode(), m_model.now.mode);
        }
        static constexpr int kBoxes[] = {kKG_C0, kKG_C1, kKG_C2, kKG_C3, kKG_C4, kKG_C5};
        for (std::size_t i = 0; i < 6; ++i) {
            if (Checked(Control(kBoxes[i])) != m_model.now.boxes[i]) {
                return differs("box " + std::to_string(i), !m_model.now.boxes[i], m_model.now.boxes[i]);
            }
        }
        if (Enabled(m_guard->Apply()) != m_model.apply) {
            return differs("Apply", !m_model.apply, m_model.apply);
        }
        if (m_guard->Today() != Wide(m_model.labelToday) || m_guard->Total() != Wide(m_model.labelTotal)) {
            return differs("counters", m_guard->Today() + L", " + m_guard->Total(),
                           m_model.labelToday + ", " + m_model.labelTotal);
        }
        if (TextOf(Control(kTitleBan)) != Wide(m_model.now.keywords)) {
            return differs("keywords", TextOf(Control(kTitleBan)), m_model.now.keywords);
        }
        if (m_guard->TreeLines() != ExpectedTree()) {
            return differs("tree", m_guard->TreeLines(), ExpectedTree());
        }
        for (const Page& page : m_pages) {
            if (page.browser->Sinks().connected != 1) {
                return differs("sinks", page.browser->Sinks().connected, 1);
            }
        }
        if (m_desktop.Sinks().connected != 1) {
            return differs("sinks of the list", m_desktop.Sinks().connected, 1);
        }
        return FileDifference();
    }

    desktop::Apartment m_apartment;
    desktop::StandInDesktop m_desktop;
    std::unique_ptr<GuardFolder> m_folder;
    std::unique_ptr<Guard> m_guard;
    GuardModel m_model;
    std::vector<Page> m_pages;
    std::string m_what;
    std::string m_problem;
    // The files behind the entries of the cache.
    std::string m_page;
    std::string m_cookie;
    std::string m_saved;
};

}  // namespace kestrelguard::testing
