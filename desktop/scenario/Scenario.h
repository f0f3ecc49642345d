#pragma once

#include <memory>
#include <string>
#include <vector>

#include "desktop/Desktop.h"
#include "desktop/driver/Guard.h"

/// Scenes that play by themselves: the stand-in desktop, the unchanged program, and a transcript of what
/// happens between them. Each scene is one function in its own file and one row of the table in Scenario.cpp.
namespace kestrelguard::desktop::scenario {

/// What was asked for on the command line.
struct Request {
    std::wstring name;
    /// The kestrelguard.exe to play with; the one beside the running program when empty.
    std::wstring guard;
};

/// Writes the transcript. Texts are written in the session's 8-bit encoding, one line each.
class Transcript {
 public:
    /// A numbered step.
    void Step(const std::wstring& text);
    /// A line under the step.
    void Say(const std::wstring& text);
    /// "name: value" under the step.
    void Show(const std::wstring& name, const std::wstring& value);
    /// Something that must be so; a line that says "NOT AS EXPECTED" when it is not.
    bool Expect(bool so, const std::wstring& what);
    /// Has a picture of the screen taken, or of a part of it, when somebody does that (scripts/play); waits
    /// until it is there.
    void Picture(const std::wstring& name, const RECT* part = nullptr);
    int Failures() const { return m_failures; }

 private:
    int m_steps = 0;
    int m_failures = 0;
};

/// What a scene plays with. The guard is not running yet: a scene first sets its stage.
struct Stage {
    Transcript& transcript;
    StandInDesktop& desktop;
    testing::GuardFolder& folder;
};

/// Plays the scene of that name: 0 when everything came as expected, 1 when not, 2 when there is no such
/// scene.
int Play(const Request& request);

// The scenes.
void PlayPopup(Stage& stage);
void PlayBlocking(Stage& stage);
void PlayCleaning(Stage& stage);
void PlayCache(Stage& stage);
void PlayUpdate(Stage& stage);

/// The names of all scenes, in the order in which they are worth watching.
std::vector<std::wstring> Names();

/// A browser window that a person can see and use, at an address.
BrowserOptions PageAt(const wchar_t* url, const wchar_t* title);

/// Starts the guard and writes down what it shows. Throws std::runtime_error when it does not start.
std::unique_ptr<testing::Guard> StartGuard(Stage& stage);

/// Each line of a text under the step, as it stands.
void ShowLines(Transcript& transcript, const std::wstring& name, const std::vector<std::wstring>& lines);
std::vector<std::wstring> LinesOf(const std::string& text);

}  // namespace kestrelguard::desktop::scenario
