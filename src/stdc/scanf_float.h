// The floating-point conversions of the scanf engine (a e f g A E F G).
#pragma once

#include "stdc/scanf_conversion.h"
#include "stdc/scanf_input.h"

namespace tollan::stdc {

// Skips white space, reads a number as scanf_engine.h describes and stores
// it as float, double (l) or long double (L) unless suppressed; errno
// ERANGE when it was out of the type's range.
ScanOutcome scanFloating(ScanInput &input, const ScanConversion &conversion,
                         ScanArguments &arguments) noexcept;

}  // namespace tollan::stdc
