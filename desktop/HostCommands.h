#pragma once

#include <windows.h>

#include <exdisp.h>

#include <string>
#include <string_view>

#include "desktop/Com.h"

namespace kestrelguard::desktop {

class BrowserObject;

/// How the process that started a browser host makes its browser do things: it asks for a property that no
/// real browser has. Its name is a prefix, a verb and, after a blank, the rest: "stand-in:TitleChange Home".
HRESULT AskHost(IWebBrowser2& browser, const std::wstring& command, VARIANT& answer) noexcept;

/// The other side: obeys a command of that kind. The answer is a number, an array of bytes, or for an event
/// the text "HRESULT CANCEL SINKS". E_NOTIMPL when it is none.
HRESULT Obey(BrowserObject& browser, std::wstring_view name, VARIANT& answer) noexcept;

}  // namespace kestrelguard::desktop
