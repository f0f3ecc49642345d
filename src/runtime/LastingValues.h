#pragma once

#include <cstdint>

namespace kestrelguard {

/// The program-wide numbers that outlive a run (all but `WashMinutes` stand in the settings file as they
/// are; `WashMinutes` is derived from the interval and its unit). The main window owns them; whoever counts,
/// washes, saves or loads has a reference.
struct LastingValues {
    /// How often the settings were read.
    std::int32_t useCount = 0;
    /// New windows stopped since the counter was first created.
    std::int32_t popupsStoppedTotal = 0;
    /// The wash interval in minutes. Begins as the pages' own default, 60 minutes, since a first start reads
    /// no file.
    std::int32_t WashMinutes = 60;
};

}  // namespace kestrelguard
