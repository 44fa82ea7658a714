#include "engine/x87_control.h"

#include <cstdint>

namespace tollan::engine {

void maskX87Exceptions() noexcept
{
#if defined(__x86_64__) || defined(__i386__)
    uint16_t controlWord = 0;
    __asm__ __volatile__("fnstcw %0" : "=m"(controlWord));
    controlWord = static_cast<uint16_t>(controlWord | 0x3F);
    __asm__ __volatile__("fldcw %0" : : "m"(controlWord));
#endif
}

}  // namespace tollan::engine
