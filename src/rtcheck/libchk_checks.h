// The argument checks that checked twins are built from, as the twins call
// them: each says whether the argument passed (true also when nothing can
// be checked or nothing is reported at all) and has reported it otherwise.
// The exported _UPLib entry points are thin shells over these.
#pragma once

#include <cstdint>

namespace tollan::rtcheck {

// The byte count of count elements of eltsize bytes; a product that
// overflows 64 bits counts as 4,294,967,295 bytes: a 32-bit ceiling that
// checked programs rely on, kept on purpose.
inline constexpr uint64_t kOverflowedByteCount = UINT64_C(4294967295);
uint64_t neededBytes(uint64_t eltsize, uint64_t count) noexcept;

// Whether a check may report now: checking level and the thread's break on
// protection errors. Every check asks this first and does nothing more
// when it may not.
bool argumentChecksReport() noexcept;

// Whether a check may report now and the caller's call went to the function
// at frame, so that there is information to check the arguments against.
bool argumentsHandedTo(const void *frame) noexcept;

// str must be a string terminated inside what it reaches; a null str passes
// when nullok.
bool checkString(const char *str, bool nullok, int32_t argpos, const void *frame) noexcept;

// ptr must have room for count elements of eltsize bytes (eltsize 0
// passes; count 0 asks only for a valid pointer).
bool checkSize(const void *ptr, uint64_t eltsize, uint64_t count, bool nullok, int32_t argpos,
               const void *frame) noexcept;

// The result is argument argpos, whose value is `value`: its pointer
// information becomes the return value's (none when it carries none).
void returnArgument(int32_t argpos, const void *frame, const void *value) noexcept;

// Forgets the calling thread's hand-over, keeping the callee as the
// previous one, so that the library calls made inside the plain function
// see no slots of their own.
void clearArguments() noexcept;

}  // namespace tollan::rtcheck
