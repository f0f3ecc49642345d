#pragma once

#include "browsertree/BrowserTree.h"

namespace kestrelguard {

class PlatformBrowserWindows final : public BrowserWindowActions {
 public:
    void ShowNormal(std::int32_t handle) override;
    void SetForeground(std::int32_t handle) override;
    void PostClose(std::int32_t handle) override;
};

}  // namespace kestrelguard
