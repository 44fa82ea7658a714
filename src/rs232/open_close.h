// Opening and closing ports, and checking the settings an open gives.
#pragma once

#include <cstdint>

#include "rs232/com_port.h"

namespace tollan::rs232 {

// The device path of a port: `name` (at most 250 characters) or "COM<port>",
// with "\\.\" in front unless it begins with a backslash.
void BuildDeviceName(int32_t port, const char *name, char *path, size_t size) noexcept;

// Checks and stores the settings of an open (-2, -14, -24, -34, -44, -114;
// the queue sizes as their rules make them). 0 or the first failing code.
int32_t CheckParmAndUpdateComConfig(ComPort &port, int32_t baud, int32_t parity, int32_t dataBits,
                                    int32_t stopBits, int32_t inputQueueSize,
                                    int32_t outputQueueSize) noexcept;

// Shuts the port down: the writing thread, the device (when closeDevice),
// the settings back to their defaults, its resource-tracking entry. 0, or -5
// when the device could not be purged or closed.
int32_t ClosePortAndReset(ComPort &port, bool closeDevice) noexcept;

}  // namespace tollan::rs232
