#include "controls/win32/PlatformMessageBoxes.h"

#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

static_assert(box_style::kOK == MB_OK && box_style::kYesNo == MB_YESNO &&
              box_style::kInformation == MB_ICONINFORMATION && box_style::kSystemModal == MB_SYSTEMMODAL &&
              box_style::kSetForeground == MB_SETFOREGROUND);
static_assert(box_answer::kYes == IDYES && box_answer::kNo == IDNO);

int PlatformMessageBoxes::Show(const std::wstring& text, const std::wstring& caption, std::uint32_t style) {
    return MessageBoxA(m_owner, ToAnsi(text).c_str(), ToAnsi(caption).c_str(), style);
}

}  // namespace kestrelguard
