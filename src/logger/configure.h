// Reading the logger's settings.
#pragma once

namespace tollan::logger {

// Applies the settings as they stand now: the level mask (64 when
// unreadable), the output location (3 when unreadable; for 5 only when the
// file name and format can both be read) and the template (unchanged when
// unreadable). ConfigureZORLoggerOnce runs it once per process; tests may
// run it again.
void configureFromSettings() noexcept;

}  // namespace tollan::logger
