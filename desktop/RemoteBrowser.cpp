#include "desktop/RemoteBrowser.h"

#include <cwchar>
#include <stdexcept>

#include "desktop/HostCommands.h"

namespace kestrelguard::desktop {

namespace {

/// Suspends or resumes all threads of a process at once.
void Switch(HANDLE process, const char* function) {
    using Function = LONG(WINAPI*)(HANDLE);
    const auto call = reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), function)));
    if (call == nullptr || call(process) < 0) {
        throw std::runtime_error(std::string(function) + " fails");
    }
}

}  // namespace

RemoteBrowser::RemoteBrowser(kestrelguard::Handle process, ComPtr<IWebBrowser2> browser, LONG cookie)
    : m_process(std::move(process)), m_browser(std::move(browser)), m_cookie(cookie) {
    SHANDLE_PTR window = 0;
    if (SUCCEEDED(m_browser->get_HWND(&window))) {
        m_window = reinterpret_cast<HWND>(window);
    }
}

int RemoteBrowser::Number(const std::wstring& command) const {
    Variant answer;
    return SUCCEEDED(AskHost(*m_browser.Get(), command, answer)) && answer.vt == VT_I4 ? answer.lVal : -1;
}

PendingEvent RemoteBrowser::Start(const std::wstring& command) const {
    return PendingEvent::Begin([browser = m_browser, command] {
        EventResult result;
        Variant answer;
        result.hr = AskHost(*browser.Get(), command, answer);
        if (answer.vt == VT_BSTR) {
            const std::wstring text(answer.bstrVal, SysStringLen(answer.bstrVal));
            long hr = 0;
            int cancel = 0;
            std::swscanf(text.c_str(), L"%ld %d %d", &hr, &cancel, &result.sinks);
            result.hr = hr;
            result.cancelValue = static_cast<VARIANT_BOOL>(cancel);
            result.cancel = result.cancelValue != VARIANT_FALSE;
        }
        return result;
    });
}

void RemoteBrowser::Stop() {
    if (!m_stopped) {
        Switch(m_process.Get(), "NtSuspendProcess");
        m_stopped = true;
    }
}

void RemoteBrowser::GoOn() {
    if (m_stopped) {
        Switch(m_process.Get(), "NtResumeProcess");
        m_stopped = false;
    }
}

bool RemoteBrowser::WaitStalled(Property property, DWORD limit) const {
    const DWORD start = GetTickCount();
    while (Stalled(property) <= 0) {
        if (GetTickCount() - start > limit) {
            return false;
        }
        Sleep(5);
    }
    return true;
}

void RemoteBrowser::Kill() {
    TerminateProcess(m_process.Get(), 9);
    WaitForSingleObject(m_process.Get(), 30000);
}

bool RemoteBrowser::Close(DWORD limit) {
    m_browser->Quit();
    return WaitForSingleObject(m_process.Get(), limit) == WAIT_OBJECT_0;
}

}  // namespace kestrelguard::desktop
