#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

#include "WalkedDesktop.h"

namespace kestrelguard::testing {

/// The steps of a random walk that clean and those that make something to clean.
class WalkedCleaning : protected WalkedDesktop {
 protected:
    using WalkedDesktop::WalkedDesktop;

    /// The real minutes are held back, so that those of the walk are all that there are.
    static bool Prepare(const Hook& hook) { return hook.HoldMinutes(); }

    /// Most walks start with a schedule, the others with no settings.
    void PrepareFolder() {
        std::optional<std::string> settings;
        if (Pick(4) != 0) {
            for (std::size_t box = 2; box < 5; ++box) {
                m_model.stored.boxes[box] = Pick(3) != 0;
            }
            m_model.stored.boxes[5] = true;
            m_model.stored.interval = Pick<const char*>({"1", "2", "1.5"});
            m_model.stored.unit = Pick<char>({'M', 'M', 'H'});
            m_model.hasFile = true;
            settings = m_model.File();
        }
        m_folder =
            std::make_unique<GuardFolder>(settings, std::string(kHeader) + "Cookie:jane@bank.example/\r\n");
        m_folder->Add(OwnFolder() + L"\\wininet.dll");
    }

    /// The browser leaves behind what is not there.
    void Browse() {
        if (!m_model.page) {
            m_page = CacheFiller::Add("http://news.example/index.html", "a page");
        }
        if (!m_model.cookie) {
            m_cookie = CacheFiller::Add("Cookie:jane@news.example/", "a cookie");
        }
        Expect(m_model.visited || VisitTwoPages(), "no history");
        m_model.page = m_model.cookie = m_model.visited = true;
    }
    /// Some minutes, or as many as there are until something or nothing is due.
    void Minutes() {
        if (Pick(2) != 0) {
            Browse();
        }
        constexpr long kMost = 150;
        const long left = m_model.washMinutes - m_model.washTicks;
        const long due = left > 1 && left <= kMost ? left : 1;
        const long minutes = Pick<long>({1, 3, std::max(1L, due - 1), due, due, due});
        Say(std::to_string(minutes) + ", " + std::to_string(left) + " left, " +
            (m_model.timer ? "a schedule" : "no schedule") + ", before: " + m_model.Traces());
        for (long minute = 0; minute < minutes; ++minute) {
            m_model.Tick();
            // A wash serves messages in its midst: nothing that is posted would tell its end.
            LRESULT answer = 0;
            Expect(Ask(m_guard->Window(), WM_TIMER, kWasherTimer, 0, answer), "a minute is not answered");
        }
        Say("after: " + m_model.Traces());
    }
    void Interval() {
        const std::string text = Pick<const char*>({"1", "2", "2", "1.5", "60", "soon", ""});
        if (text == m_model.now.interval) {
            return;
        }
        Say(text);
        m_model.TypeInterval(text);
        TypeText(Control(kWash_F), Wide(text));
    }
    void Unit() {
        const unsigned row = Pick<unsigned>({0, 0, 0, 1, 1, 2});
        Say(std::to_string(row));
        m_model.ChooseUnit("MHD"[row]);
        SelectDropDown(Control(kWash_CMB), static_cast<int>(row));
    }
    void Clear() {
        const int button = Pick<int>({kClearIEC, kClearIECookies, kClearIEH});
        Say(std::to_string(button));
        (button == kClearIEC         ? m_model.page
         : button == kClearIECookies ? m_model.cookie
                                     : m_model.visited) = false;
        Press(button);
    }
    void CacheWindow() {
        Click(Control(kShowIEC));
        const HWND window = WaitTop(m_guard->Program().Id(), [](HWND top) {
            return ClassOf(top) == L"KG_Cache" && IsWindowVisible(top);
        });
        Expect(window != nullptr, "no cache window");
        PostMessageW(window, WM_CLOSE, 0, 0);
        Expect(WaitUntil([&] { return !IsWindow(window); }), "the cache window stays");
    }
};

}  // namespace kestrelguard::testing
