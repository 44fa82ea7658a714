// Reading, writing and moving an open file. Each function needs the slot's
// lock held (a LockedFile) and returns 0 or an I/O error code.
#pragma once

#include <cstdint>

#include "fmtio/file_table.h"

namespace tollan::fmtio {

// Reads up to count bytes as stored in the file (a byte read ahead earlier
// comes first). *got 0: end of file.
int32_t readRaw(FileSlot &file, char *buffer, uint32_t count, uint32_t *got) noexcept;

// Reads up to count bytes as ZOR_ReadFile returns them: as stored for a
// binary file, without the CR of each CR LF for a text file.
int32_t readData(FileSlot &file, char *buffer, uint32_t count, uint32_t *got) noexcept;

// Writes count bytes, and an LF after them when newline is set, as
// ZOR_WriteFile does: at the end of an appending disk file, each LF as CR LF
// in a text file.
int32_t writeData(FileSlot &file, const char *data, uint32_t count, bool newline) noexcept;

// Moves the file position as seen by the program (a byte read ahead is
// accounted for); *position receives the new one.
int32_t seekData(FileSlot &file, int64_t offset, platform::SeekOrigin origin, int64_t *position) noexcept;

// Makes the last byte read from the file unread again.
int32_t unreadByte(FileSlot &file, char byte) noexcept;

}  // namespace tollan::fmtio
