#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "update/UpdateCheck.h"
#include "update/UpdateWorld.h"

namespace kestrelguard {

using Calls = std::vector<std::string>;

inline constexpr std::int64_t kSomeDay = 3'900'000'000;

struct FakeVersion : WindowsVersionSource {
    std::optional<WindowsVersion> version;
    std::optional<WindowsVersion> Version() const override { return version; }
};

class UpdateCheckTest : public testing::Test, protected UpdateWorld {};

}  // namespace kestrelguard
