#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "desktop/driver/Guard.h"

namespace kestrelguard::testing {

/// The program in a folder of its own, started and ready. Ended when this goes away.
class RunningGuard : public Guard {
 public:
    /// `settings` are the lines of its settings file; no file when empty. Throws std::runtime_error when it
    /// does not start.
    explicit RunningGuard(const std::string& settings = {}, const Preparation& prepare = {})
        : RunningGuard(std::make_shared<GuardFolder>(settings.empty() ? std::nullopt
                                                                      : std::optional<std::string>(settings)),
                       prepare) {}
    /// In a folder that an earlier run has left.
    explicit RunningGuard(std::shared_ptr<GuardFolder> folder, const Preparation& prepare = {})
        : Guard(*folder, prepare), m_folder(std::move(folder)) {
        if (!WaitReady()) {
            throw std::runtime_error("The program does not start");
        }
    }

    const std::shared_ptr<GuardFolder>& Folder() const { return m_folder; }
    bool Shown() const { return IsWindowVisible(Window()) != FALSE && !Minimised(); }
    HWND ModeButton(int mode) const { return Button(ModeCaption(mode)); }
    /// Closes it and answers whether it ended well.
    bool EndsWell() { return Close() && Program().ExitCode() == 0; }
    /// What stands in the settings file after the key.
    std::string Setting(const std::string& key) const {
        const std::string start = key + "/:/:";
        const std::string line = m_folder->SettingsLine(key);
        return line.starts_with(start) ? line.substr(start.size()) : std::string();
    }

 private:
    std::shared_ptr<GuardFolder> m_folder;
};

}  // namespace kestrelguard::testing
