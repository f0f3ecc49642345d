#pragma once

#include <windows.h>

#include <optional>

namespace kestrelguard {

/// Hears a control's messages before the control does. Ends with the control or with this object, whichever
/// goes first.
class SubclassedControl {
 public:
    SubclassedControl(const SubclassedControl&) = delete;
    SubclassedControl& operator=(const SubclassedControl&) = delete;

 protected:
    SubclassedControl() = default;
    virtual ~SubclassedControl();

    /// From now on messages come by here. Once for each object; nobody else may use the control's
    /// GWL_USERDATA.
    void Subclass(HWND control);
    /// Null before Subclass, and once the control has gone.
    HWND Subclassed() const noexcept { return m_control; }
    /// The control's own handling of a message.
    LRESULT Original(UINT message, WPARAM wParam, LPARAM lParam) const;

    /// Answers the message's result, or nothing for the control's own handling.
    virtual std::optional<LRESULT> OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam) noexcept = 0;

 private:
    static LRESULT CALLBACK Procedure(HWND control, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    void Part() noexcept;

    HWND m_control = nullptr;
    WNDPROC m_original = nullptr;
};

}  // namespace kestrelguard
