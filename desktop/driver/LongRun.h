#pragma once

#include <cstdlib>

namespace kestrelguard::testing {

/// Whether this is a long run (`./test --long`): everything rather than a fixed part.
inline bool LongRun() {
    return std::getenv("KESTRELGUARD_LONG") != nullptr;
}

/// A number from the environment; `otherwise` when there is none.
inline unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

}  // namespace kestrelguard::testing
