#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "GuardModel.h"
#include "app/win32/ControlIds.h"
#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"

namespace kestrelguard::testing {

inline std::wstring Wide(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

/// The program on a random walk, its browsers, the model beside it, and where they differ.
class WalkedProgram {
 protected:
    using Browser = desktop::Browser;
    using Lines = std::vector<std::wstring>;

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
    Lines ExpectedTree() const {
        Lines lines{L"Windows Browsers (" + std::to_wstring(m_pages.size()) + L")"};
        for (const GuardModel::Node& node : m_model.nodes) {
            lines.insert(lines.end(), {node.atRebuild ? L"  Browser " : L"  Browser",
                                       L"    Title : " + node.title, L"    URL : " + node.url});
        }
        return lines;
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
        if (m_guard->Minimised() != m_model.icon) {
            return differs("minimised", m_guard->Minimised(), m_model.icon);
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
};

}  // namespace kestrelguard::testing
