// The millisecond clock that the serial library's time-outs and the C
// library's time functions count with: the performance counter in whole
// milliseconds, else the millisecond tick of the chosen time source.
#pragma once

#include <cstdint>

namespace tollan::timing {

uint32_t millisecondClock() noexcept;
// Milliseconds since `start` (a millisecondClock value), as an unsigned
// 32-bit difference, so that the clock's wrap does no harm.
uint32_t millisecondsSince(uint32_t start) noexcept;

}  // namespace tollan::timing
