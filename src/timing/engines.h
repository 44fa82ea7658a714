// The timer engines and the one that ZORUSTEinitialize chose.
#pragma once

#include "timing/zoruste.h"

namespace tollan::timing {

// The engines, in the order they are tried. They live as long as the process.
ZORUSTE &mmsystemEngine() noexcept;
ZORUSTE &qwusteEngine() noexcept;

// The chosen engine; null until ZORUSTEinitialize succeeded.
ZORUSTE *chosenEngine() noexcept;
// Tries the engines in order under the process's named mutex, unless one is
// already chosen. True when an engine is chosen.
bool chooseEngine() noexcept;
// Makes `engine` the chosen one (null: none), for tests that need the
// external engine although the multimedia timer would win.
void setChosenEngineForTesting(ZORUSTE *engine) noexcept;

}  // namespace tollan::timing
