// The formatting library's per-thread block: the thread's I/O error and the
// buffer that GetFmtIOErrorString fills.
#pragma once

#include <cstdint>

namespace tollan::fmtio {

inline constexpr int kErrorTextSize = 512;

struct ThreadBlock {
    int32_t ioError;
    char errorText[kErrorTextSize];
};

// The calling thread's block, made (zero-filled) on first use. When no block
// can be had (no memory, or the library's thread slot is not set up) the
// thread uses a fallback block of its own.
ThreadBlock &threadBlock() noexcept;

inline void setIoError(int32_t code) noexcept
{
    threadBlock().ioError = code;
}

// Sets the I/O error and gives the failure result -1.
inline int32_t failWith(int32_t code) noexcept
{
    setIoError(code);
    return -1;
}

// Obtains the library's cell in the engine's thread-variable scheme; false
// when the scheme has no room.
bool reserveThreadSlot() noexcept;
// Frees the calling thread's block (the next use makes a new one).
void freeThreadBlock() noexcept;
// Frees the calling thread's block and gives the cell back.
void releaseThreadSlot() noexcept;

}  // namespace tollan::fmtio
