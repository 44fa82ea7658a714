// Formatting a message of the library message table: the table's texts are
// formats whose arguments the compiler cannot check, so every report formats
// them through here.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace tollan::rtcheck {

// Formats message `number` (printf rules, "%Iu" and its kin for pointer-sized
// integers; in the messages that name types, %t for a const Tynode * written
// as outtype writes it) into buffer, terminated and cut at size; a number outside the
// table gives "Unknown message number". Returns formatText's result.
int formatMessage(char *buffer, size_t size, int32_t number, ...) noexcept;
int formatMessageList(char *buffer, size_t size, int32_t number, va_list arguments) noexcept;

}  // namespace tollan::rtcheck
