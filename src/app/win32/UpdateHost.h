#pragma once

#include <windows.h>

#include "runtime/LastingValues.h"
#include "settings/SettingsStore.h"
#include "update/UpdateCheck.h"

namespace kestrelguard {

/// What the update check knows of the program. The values outlive it.
class UpdateHost final : public UpdateProgram {
 public:
    UpdateHost(HWND form, const LastingValues& lasting, SettingsStore& settings)
        : m_form(form), m_lasting(lasting), m_settings(settings) {}

    /// The update check's members at start-up.
    static UpdateData Beginning();

    std::int32_t UseCount() const override { return m_lasting.useCount; }
    std::wstring MainWindowText() const override;
    void WriteSettings() override;
    void StartUpdater(const std::wstring& arguments) override;

 private:
    HWND m_form;
    const LastingValues& m_lasting;
    SettingsStore& m_settings;
};

}  // namespace kestrelguard
