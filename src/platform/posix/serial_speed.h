// Baud rates that termios has no B constant for, through termios2 (BOTHER).
#pragma once

namespace tollan::platform::posix {

// Sets both directions of the device to `baud`; false when the driver refuses.
bool setAnySpeed(int fd, int baud) noexcept;
// The device's output speed in baud; false when it cannot be asked.
bool anySpeed(int fd, int *baud) noexcept;

}  // namespace tollan::platform::posix
