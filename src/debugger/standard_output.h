// The debugger link's share of a program's standard output and standard
// error. Every low-level write to descriptor 1 or 2 goes, in this order:
//   1. to forwardStandardOutput (the transport's output hook),
//   2. to the standard I/O pipe, when it is switched on
//      (platform::writeStandardIoPipe; the switch is on while the debugger's
//      shared block is attached, see CdbInitialize),
//   3. to the descriptor itself.
#pragma once

#include <cstdint>

namespace tollan::debugger {

// Hands `count` bytes of one write to the output hook of the transport in use
// (its slot 16). ZOR_DEBUG_NOT_CONNECTED (-10) without calling it when the
// transport is not connected; 0 when it has no hook; else the hook's result.
int32_t forwardStandardOutput(const void *bytes, uint32_t count) noexcept;

}  // namespace tollan::debugger
