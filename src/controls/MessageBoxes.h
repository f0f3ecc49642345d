#pragma once

#include <cstdint>
#include <string>

namespace kestrelguard {

/// The platform's style values of a message box, to be or-ed.
namespace box_style {
inline constexpr std::uint32_t kOK = 0;
inline constexpr std::uint32_t kYesNo = 0x4;
inline constexpr std::uint32_t kInformation = 0x40;
inline constexpr std::uint32_t kSystemModal = 0x1000;
inline constexpr std::uint32_t kSetForeground = 0x10000;
/// In front of every window, with the OK button alone.
inline constexpr std::uint32_t kNotice = kOK | kInformation | kSystemModal | kSetForeground;
}  // namespace box_style

/// The platform's numbers of the buttons.
namespace box_answer {
inline constexpr int kYes = 6;
inline constexpr int kNo = 7;
}  // namespace box_answer

/// Message boxes of the platform.
class MessageBoxes {
 public:
    virtual ~MessageBoxes() = default;
    /// Waits for the user. Answers the number of the pressed button.
    virtual int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t style) = 0;
};

}  // namespace kestrelguard
