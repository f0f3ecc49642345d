#include "desktop/scenario/Scenario.h"

#include <cstdio>
#include <stdexcept>

namespace kestrelguard::desktop::scenario {

namespace {

struct Scene {
    const wchar_t* name;
    void (*play)(Stage& stage);
};

constexpr Scene kScenes[] = {
    {L"popup", PlayPopup}, {L"blocking", PlayBlocking}, {L"cleaning", PlayCleaning},
    {L"cache", PlayCache}, {L"update", PlayUpdate},
};

std::string ToLocal(const std::wstring& text) {
    std::string local(text.size() * 4 + 1, '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()),
                                           local.data(), static_cast<int>(local.size()), nullptr, nullptr);
    local.resize(static_cast<std::size_t>(length));
    return local;
}

void Write(const std::wstring& line) {
    std::printf("%s\n", ToLocal(line).c_str());
    std::fflush(stdout);
}

}  // namespace

void Transcript::Step(const std::wstring& text) {
    Write((m_steps > 0 ? L"\n" : L"") + std::to_wstring(m_steps + 1) + L". " + text);
    ++m_steps;
}

void Transcript::Say(const std::wstring& text) {
    Write(L"   " + text);
}

void Transcript::Show(const std::wstring& name, const std::wstring& value) {
    Say(name + L": " + value);
}

bool Transcript::Expect(bool so, const std::wstring& what) {
    Say((so ? L"" : L"NOT AS EXPECTED: ") + what);
    m_failures += so ? 0 : 1;
    return so;
}

void Transcript::Picture(const std::wstring& name, const RECT* part) {
    wchar_t folder[MAX_PATH];
    const DWORD length = GetEnvironmentVariableW(L"KESTRELGUARD_PICTURES", folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return;
    }
    std::wstring line = L"picture: " + name;
    if (part != nullptr) {
        line += L" " + std::to_wstring(part->right - part->left) + L"x" +
                std::to_wstring(part->bottom - part->top) + L"+" + std::to_wstring(part->left) + L"+" +
                std::to_wstring(part->top);
    }
    Write(line);
    const std::wstring file = L"Z:" + std::wstring(folder) + L"/" + name + L".png";
    const bool taken = testing::WaitUntil(
        [&] { return GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES; }, 30000);
    Expect(taken, taken ? L"(picture: " + name + L".png)" : L"no picture was taken: " + name);
}

int Play(const Request& request) {
    for (const Scene& scene : kScenes) {
        if (request.name == scene.name) {
            Transcript transcript;
            StandInDesktop desktop;
            testing::GuardFolder folder({}, {}, request.guard);
            Stage stage{transcript, desktop, folder};
            try {
                scene.play(stage);
            } catch (const std::exception& error) {
                const std::string what = error.what();
                transcript.Expect(false, std::wstring(what.begin(), what.end()));
            }
            return transcript.Failures() == 0 ? 0 : 1;
        }
    }
    Write(L"There is no scene of that name. There are:");
    for (const std::wstring& name : Names()) {
        Write(L"  " + name);
    }
    return 2;
}

std::vector<std::wstring> Names() {
    std::vector<std::wstring> names;
    for (const Scene& scene : kScenes) {
        names.emplace_back(scene.name);
    }
    return names;
}

BrowserOptions PageAt(const wchar_t* url, const wchar_t* title) {
    BrowserOptions options;
    options.url = url;
    options.title = title;
    options.dressed = true;
    options.shown = true;
    return options;
}

std::unique_ptr<testing::Guard> StartGuard(Stage& stage) {
    auto guard = std::make_unique<testing::Guard>(stage.folder);
    if (!guard->WaitReady()) {
        throw std::runtime_error("kestrelguard.exe does not start");
    }
    return guard;
}

void ShowLines(Transcript& transcript, const std::wstring& name, const std::vector<std::wstring>& lines) {
    transcript.Say(name + L":");
    for (const std::wstring& line : lines) {
        transcript.Say(L"  | " + line);
    }
}

std::vector<std::wstring> LinesOf(const std::string& text) {
    std::vector<std::wstring> lines;
    std::wstring line;
    for (const char c : text) {
        if (c == '\n') {
            lines.push_back(std::exchange(line, {}));
        } else if (c != '\r') {
            line += static_cast<wchar_t>(static_cast<unsigned char>(c));
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace kestrelguard::desktop::scenario
