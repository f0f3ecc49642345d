#include "desktop/driver/Guard.h"

#include <algorithm>
#include <stdexcept>

namespace kestrelguard::testing {

GuardFolder::GuardFolder(std::optional<std::string> settings, std::optional<std::string> cookies,
                         const std::wstring& exe) {
    const std::wstring source = exe.empty() ? OwnFolder() + L"\\kestrelguard.exe" : exe;
    if (!CopyFileW(source.c_str(), Exe().c_str(), TRUE)) {
        throw std::runtime_error("kestrelguard.exe cannot be copied");
    }
    if (settings) {
        WriteBytes(File(L"KestrelS.CFG"), *settings);
    }
    if (cookies) {
        WriteBytes(File(L"KestrelC.CFG"), *cookies);
    }
}

void GuardFolder::Add(const std::wstring& path) const {
    const std::wstring name = path.substr(path.find_last_of(L"\\/") + 1);
    if (!CopyFileW(path.c_str(), File(name.c_str()).c_str(), FALSE)) {
        throw std::runtime_error("a file cannot be copied beside kestrelguard.exe");
    }
}

std::string GuardFolder::SettingsLine(const std::string& key) const {
    const std::string text = "\r\n" + Settings();
    const std::size_t start = text.find("\r\n" + key + "/:/:");
    if (start == std::string::npos) {
        return {};
    }
    return text.substr(start + 2, text.find("\r\n", start + 2) - start - 2);
}

Guard::Guard(const GuardFolder& folder, const Preparation& prepare)
    : m_program(folder.Exe(), {}, folder.Path(), prepare != nullptr) {
    if (prepare) {
        if (!prepare(Inside())) {
            throw std::runtime_error("the program does not call what was to be watched or replaced");
        }
        m_program.Resume();
    }
}

bool Guard::WaitReady(DWORD limit) {
    const bool started = WaitUntil(
        [this] {
            m_window = FindTop(m_program.Id(), [](HWND window) {
                return ClassOf(window) == L"Kestrelguard" && (IsWindowVisible(window) || IsIconic(window));
            });
            return m_window != nullptr || !m_program.Running();
        },
        limit);
    LRESULT answer = 0;
    return started && m_window != nullptr && Ask(m_window, WM_NULL, 0, 0, answer, limit);
}

bool Guard::WaitPosted(DWORD limit) const {
    // Something that is posted behind and can be seen: a button that is drawn pressed for a moment.
    const HWND button = Button(L"?");
    for (const WPARAM pressed : {TRUE, FALSE}) {
        PostMessageW(button, BM_SETSTATE, pressed, 0);
        const LRESULT expected = pressed != FALSE ? BST_PUSHED : 0;
        if (!WaitUntil([&] { return (Ask(button, BM_GETSTATE) & BST_PUSHED) == expected; }, limit)) {
            return false;
        }
    }
    return true;
}

const Hook& Guard::Inside() {
    if (!m_hook) {
        m_hook = std::make_unique<Hook>(m_program);
    }
    return *m_hook;
}

std::vector<HWND> Guard::Edits() const {
    std::vector<HWND> edits;
    for (const HWND window : testing::Inside(m_window)) {
        // The drop-down list has none of its own: its text is not typed.
        if (lstrcmpiW(ClassOf(window).c_str(), L"Edit") == 0) {
            edits.push_back(window);
        }
    }
    return edits;
}

std::vector<HWND> Guard::WashBoxes() const {
    std::vector<HWND> boxes;
    for (const HWND window : testing::Inside(m_window)) {
        if (lstrcmpiW(ClassOf(window).c_str(), L"Button") == 0 && TextOf(window) == L"Check1") {
            boxes.push_back(window);
        }
    }
    std::sort(boxes.begin(), boxes.end(),
              [](HWND one, HWND other) { return RectOf(one).top < RectOf(other).top; });
    return boxes;
}

const wchar_t* Guard::ModeCaption(int mode) {
    return mode == 0   ? L"Prevent New Browser Windows - \"Hushpane\""
           : mode == 1 ? L"Prompt me for New Browser Windows"
                       : L"Enable New Browser Windows";
}

int Guard::Mode() const {
    int found = -1;
    for (int mode = 0; mode < 3; ++mode) {
        if (Checked(Button(ModeCaption(mode)))) {
            if (found != -1) {
                return -1;
            }
            found = mode;
        }
    }
    return found;
}

bool Guard::SetMode(int mode) const {
    Click(Button(ModeCaption(mode)));
    return WaitUntil([&] { return Mode() == mode; });
}

bool Guard::Minimise() {
    PostMessageW(m_window, WM_SYSCOMMAND, SC_MINIMIZE, 0);
    return WaitUntil([this] { return InTray(); }) && Icon().has_value();
}

bool Guard::Restore() {
    const auto icon = Icon();
    if (!icon) {
        return false;
    }
    ClickTrayIcon(*icon);
    return WaitUntil([this] { return !Minimised() && IsWindowVisible(m_window); });
}

std::optional<TrayIcon> Guard::Icon(DWORD limit) const {
    std::optional<TrayIcon> found;
    WaitUntil(
        [&] {
            for (const TrayIcon& icon : TrayIcons()) {
                if (icon.tip.find(L"Kestrelguard") != std::wstring::npos) {
                    found = icon;
                    return true;
                }
            }
            return false;
        },
        limit);
    return found;
}

std::wstring Guard::Tip() {
    const auto icon = Icon();
    if (!icon) {
        return {};
    }
    PointAtTrayIcon(*icon);
    // The message goes to the task bar, from there to the program, and its answer back to the task bar.
    Ask(icon->bar, WM_NULL);
    WaitPosted();
    Ask(icon->bar, WM_NULL);
    const auto now = Icon();
    return now ? now->tip : std::wstring();
}

OpenMenu Guard::OpenTrayMenu() {
    const auto icon = Icon();
    if (!icon) {
        return {};
    }
    ClickTrayIcon(*icon, true);
    return Inside().WaitMenu();
}

bool Guard::ChooseFromTrayMenu(const std::wstring& caption) {
    return OpenTrayMenu() && Inside().Choose(caption);
}

bool Guard::ExitByMenu(DWORD limit) {
    return ChooseFromTrayMenu(L"Exit") && m_program.WaitGone(limit);
}

bool Guard::Close(DWORD limit) {
    PostMessageW(m_window, WM_CLOSE, 0, 0);
    return m_program.WaitGone(limit);
}

HeldKeys::HeldKeys(Guard& guard, std::vector<BYTE> keys) : m_guard(guard), m_keys(std::move(keys)) {
    for (const BYTE key : m_keys) {
        m_pressed.push_back(std::make_unique<HeldKey>(key));
    }
    const auto seen = [this] {
        if (AllSeen(true)) {
            return true;
        }
        // Wine lets go of them when a window gets the focus: no real keyboard holds them.
        for (const auto& key : m_pressed) {
            key->Repeat();
        }
        return false;
    };
    if (!WaitUntil(seen)) {
        throw std::runtime_error("the program does not see the keys that are held");
    }
}

HeldKeys::~HeldKeys() {
    m_pressed.clear();
    try {
        WaitUntil([this] { return !m_guard.Program().Running() || AllSeen(false); });
    } catch (const std::exception&) {
        // It has ended meanwhile: nobody is left to see them.
    }
}

bool HeldKeys::AllSeen(bool held) const {
    return std::all_of(m_keys.begin(), m_keys.end(),
                       [&](BYTE key) { return m_guard.Inside().SeesHeld(m_guard.Window(), key) == held; });
}

}  // namespace kestrelguard::testing
