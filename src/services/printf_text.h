// Characters and strings: %c and %s, and their wide forms %lc and %ls,
// which are written in UTF-8.
#pragma once

#include <cwchar>

#include "services/printf_conversion.h"
#include "services/printf_output.h"

namespace tollan::services::formatting {

// %c: the int converted to unsigned char.
bool putCharacter(Output &out, const Conversion &conversion, int character) noexcept;

// %s: at most precision bytes of the string, never reading past them; a
// null string prints as "(null)".
bool putString(Output &out, const Conversion &conversion, const char *text) noexcept;

// %lc: one wide character in UTF-8. False with errno EILSEQ, writing
// nothing, for a surrogate or a value past U+10FFFF.
bool putWideCharacter(Output &out, const Conversion &conversion, wint_t character) noexcept;

// %ls: a wide string (UTF-16 where wchar_t has 16 bits, so surrogate pairs
// join) in UTF-8. The precision counts bytes written and never splits a
// character, and no wide character is read that the precision leaves out.
// False with errno EILSEQ, writing nothing, when a character it reaches
// cannot be encoded. A null string prints as "(null)".
bool putWideString(Output &out, const Conversion &conversion, const wchar_t *text) noexcept;

}  // namespace tollan::services::formatting
