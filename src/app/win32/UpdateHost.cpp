#include "app/win32/UpdateHost.h"

#include "controls/win32/Win32Controls.h"
#include "runtime/ProgramVersion.h"
#include "update/win32/UpdatePlatform.h"

namespace kestrelguard {

UpdateData UpdateHost::Beginning() {
    UpdateData data;
    data.versionText = VersionText();
    return data;
}

std::wstring UpdateHost::MainWindowText() const {
    return WindowText(m_form);
}

void UpdateHost::WriteSettings() {
    std::wstring mode = L"Write";
    m_settings.SettingsFile(mode);
}

void UpdateHost::StartUpdater(const std::wstring& arguments) {
    StartUpdaterProgram(arguments);
}

}  // namespace kestrelguard
