// Clean-ups that the debugger's interface runs when the program ends
// (__RegisterAtExitCleanup): a function and three arguments each, run last
// registered first when the library closes its debugger side.
#pragma once

#include <cstdint>

namespace tollan::debugger {

// The run-time record's operations. function is a void (*)(intptr_t,
// intptr_t, intptr_t); flags must be 0. Register returns 1 (0 for a null
// function, a non-zero flag or no memory); unregister removes the clean-up
// registered with the same function and arguments and returns 1, or 0 when
// there is none.
intptr_t registerAtExitCleanup(intptr_t function, intptr_t a, intptr_t b, intptr_t c,
                               intptr_t flags) noexcept;
intptr_t unregisterAtExitCleanup(intptr_t function, intptr_t a, intptr_t b, intptr_t c,
                                 intptr_t flags) noexcept;
// Runs and forgets every registered clean-up.
void runAtExitCleanups() noexcept;

}  // namespace tollan::debugger
