#pragma once

#include <windows.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include "runtime/RunTimeError.h"

namespace kestrelguard {

/// Tells the user of an error that left a handler. The window owns the box; null when it is gone.
using ErrorReport = std::function<void(HWND, const RunTimeError&)>;

/// One picture in the two sizes that the system asks for. They belong to the caller.
struct WindowIcons {
    HICON bigIcon = nullptr;
    HICON smallIcon = nullptr;
};

/// What a kind of window has in common.
struct WindowKind {
    const char* name;
    HBRUSH background = nullptr;
    WindowIcons icons = {};
};

/// One window of a kind.
struct WindowFrame {
    const char* caption = "";
    DWORD style = 0;
    DWORD extendedStyle = 0;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    HWND parent = nullptr;
    int id = 0;
};

/// A window whose messages reach an object: every window of the program's own begins here.
class WindowBase {
 public:
    WindowBase(const WindowBase&) = delete;
    WindowBase& operator=(const WindowBase&) = delete;

    /// Null before Create, and once the window has gone.
    HWND Handle() const noexcept { return m_window; }

 protected:
    explicit WindowBase(ErrorReport report = {});
    /// Destroys the window, which tells nothing any more.
    virtual ~WindowBase();

    /// Throws kOutOfMemory when the system refuses the window.
    void Create(const WindowKind& kind, const WindowFrame& frame);

    /// Answers the message's result, or nothing for the system's own handling. What it throws is reported,
    /// and the message counts as handled. It may destroy the object.
    virtual std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;

    /// The only way to destroy it: messages that tell of an end which is none are not heard.
    void DestroyOwnWindow() noexcept;

    /// Parts the object from its window: no message reaches it from now on. Answers the window.
    HWND Detach() noexcept;

 private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;

    /// Shared: it is still needed when a handler has destroyed the object.
    std::shared_ptr<const ErrorReport> m_report;
    HWND m_window = nullptr;
};

/// What is done about one control's or menu item's notification.
template <class Form>
struct Command {
    int id;
    int notification;
    void (*handler)(Form& form);
};

/// Runs the handler of a notification; nothing happens when the table has none.
template <class Form, std::size_t Count>
void RunCommand(const Command<Form> (&commands)[Count], Form& form, int id, int notification) {
    for (const Command<Form>& command : commands) {
        if (command.id == id && command.notification == notification) {
            command.handler(form);
            return;
        }
    }
}

}  // namespace kestrelguard
