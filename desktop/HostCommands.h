#pragma once

#include <string_view>

#include "desktop/Com.h"

namespace kestrelguard::desktop {

class BrowserObject;

/// How the process that started a browser host makes its browser do things: it asks for a property that no
/// real browser has. Its name is this prefix, a verb and, after a blank, the rest: "stand-in:TitleChange
/// Home".
inline constexpr std::wstring_view kCommandPrefix = L"stand-in:";

/// Obeys a command of that kind. The answer is a number, or for an event "HRESULT CANCEL SINKS". E_NOTIMPL
/// when it is none.
HRESULT Obey(BrowserObject& browser, std::wstring_view name, VARIANT& answer) noexcept;

}  // namespace kestrelguard::desktop
