// Handing a port's settings to its device, and reading them back.
#pragma once

#include <cstdint>

#include "rs232/com_port.h"

namespace tollan::rs232 {

// The port's baud rate, framing, flow control and queue sizes to the device,
// with reads that return at once with what has arrived. 0, or -5 (logged).
int32_t ApplyPortSettings(ComPort &port) noexcept;
// The device's write time-out in milliseconds. 0, or -1.
int32_t ApplyWriteTimeout(ComPort &port, uint32_t ms) noexcept;

}  // namespace tollan::rs232
