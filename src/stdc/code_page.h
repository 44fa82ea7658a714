// The process code page as the C library's multibyte functions see it: its
// number and which bytes start a two-byte character. InitializeCodePage reads
// it at start-up; until then (and when it cannot be read) text is single-byte.
#pragma once

#include <cstdint>

namespace tollan::stdc {

// Reads the code page. Cannot fail: a code page that cannot be read leaves
// the single-byte defaults.
void InitializeCodePage() noexcept;

// The code page's Windows number; 0 until it is known.
uint32_t codePageNumber() noexcept;
// True when the code page has two-byte characters (a lead-byte table).
bool multibyteCodePage() noexcept;
// True when `byte` starts a two-byte character of the code page.
bool isLeadByte(unsigned char byte) noexcept;

}  // namespace tollan::stdc
