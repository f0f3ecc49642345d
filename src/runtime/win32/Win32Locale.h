#pragma once

#include "runtime/System.h"

namespace kestrelguard {

/// The user's own settings for dates, times and numbers, read afresh each time.
class Win32Locale final : public Locale {
 public:
    /// The short date, a blank and the long time; the time is there at midnight too.
    std::wstring GeneralDateNow() const override;
    std::wstring ThousandsSeparator() const override;
};

}  // namespace kestrelguard
