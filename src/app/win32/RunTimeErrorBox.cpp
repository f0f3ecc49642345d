#include "app/win32/RunTimeErrorBox.h"

#include "app/Texts.h"
#include "runtime/Numbers.h"
#include "runtime/win32/AnsiText.h"

namespace kestrelguard {

void ShowRunTimeError(HWND owner, const RunTimeError& error) {
    const std::wstring text =
        texts::kRunTimeError + Decimal(error.Number()) + L"':\r\n\r\n" + error.Description();
    // The box of a window that is away stands alone: with an owner its end would bring the window along.
    const bool away = owner == nullptr || !IsWindowVisible(owner) || IsIconic(owner);
    MessageBoxA(away ? nullptr : owner, ToAnsi(text).c_str(), ToAnsi(texts::kProgramName).c_str(),
                MB_OK | MB_ICONERROR | (away ? MB_SETFOREGROUND : 0U));
}

}  // namespace kestrelguard
