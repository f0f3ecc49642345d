#include "desktop/HostCommands.h"

#include "desktop/BrowserObject.h"
#include "desktop/HandOut.h"

namespace kestrelguard::desktop {

namespace {

constexpr std::wstring_view kPrefix = L"stand-in:";

Variant Deliver(BrowserObject& browser, const EventCall& call) {
    const EventResult result = browser.Events().Deliver(call);
    return Variant::Text(std::to_wstring(result.hr) + L" " + std::to_wstring(result.cancelValue) + L" " +
                         std::to_wstring(result.sinks));
}

Property Named(const std::wstring& number) {
    return static_cast<Property>(std::stoi(number));
}

struct Command {
    std::wstring_view verb;
    Variant (*obey)(BrowserObject& browser, const std::wstring& rest);
};

constexpr Command kCommands[] = {
    {L"BeforeNavigate2",
     [](BrowserObject& browser, const std::wstring& rest) {
         return Deliver(browser, EventCall::BeforeNavigate2(browser.Dispatch(), rest));
     }},
    {L"NavigateComplete2",
     [](BrowserObject& browser, const std::wstring& rest) {
         browser.SetUrl(rest);
         return Deliver(browser, EventCall::NavigateComplete2(browser.Dispatch(), rest));
     }},
    {L"DocumentComplete",
     [](BrowserObject& browser, const std::wstring& rest) {
         return Deliver(browser, EventCall::DocumentComplete(browser.Dispatch(), rest));
     }},
    {L"TitleChange",
     [](BrowserObject& browser, const std::wstring& rest) {
         browser.SetTitle(rest);
         return Deliver(browser, EventCall::TitleChange(rest));
     }},
    {L"NewWindow2",
     [](BrowserObject& browser, const std::wstring&) { return Deliver(browser, EventCall::NewWindow2()); }},
    {L"references",
     [](BrowserObject& browser, const std::wstring& rest) {
         return PackReferences(browser.Dispatch(), std::stoi(rest));
     }},
    {L"load",
     [](BrowserObject& browser, const std::wstring& rest) {
         browser.Load(rest);
         return Variant::Long(0);
     }},
    {L"sinks", [](BrowserObject& browser,
                  const std::wstring&) { return Variant::Long(browser.Events().Counts().connected); }},
    {L"reads", [](BrowserObject& browser,
                  const std::wstring& rest) { return Variant::Long(browser.Of(Named(rest)).Calls()); }},
    {L"stall",
     [](BrowserObject& browser, const std::wstring& rest) {
         browser.Stall(Named(rest));
         return Variant::Long(0);
     }},
    {L"go",
     [](BrowserObject& browser, const std::wstring& rest) {
         browser.LetGo(Named(rest));
         return Variant::Long(0);
     }},
    {L"stalled", [](BrowserObject& browser,
                    const std::wstring& rest) { return Variant::Long(browser.Of(Named(rest)).Stalled()); }},
};

}  // namespace

HRESULT AskHost(IWebBrowser2& browser, const std::wstring& command, VARIANT& answer) noexcept {
    const Bstr name(std::wstring(kPrefix) + command);
    return browser.GetProperty(name.Get(), &answer);
}

HRESULT Obey(BrowserObject& browser, std::wstring_view name, VARIANT& answer) noexcept {
    if (!name.starts_with(kPrefix)) {
        return E_NOTIMPL;
    }
    name.remove_prefix(kPrefix.size());
    const std::size_t blank = name.find(L' ');
    const std::wstring rest(blank == std::wstring_view::npos ? std::wstring_view() : name.substr(blank + 1));
    for (const Command& command : kCommands) {
        if (command.verb == name.substr(0, blank)) {
            Variant said = command.obey(browser, rest);
            answer = static_cast<VARIANT&>(said);
            said.vt = VT_EMPTY;
            return S_OK;
        }
    }
    return E_NOTIMPL;
}

}  // namespace kestrelguard::desktop
