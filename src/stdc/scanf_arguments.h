// The arguments of a scanf format: destinations, taken in order, one for
// each conversion that stores. The one place that takes them.
#pragma once

#include <cstdarg>

namespace tollan::stdc {

class ScanArguments {
public:
    // Takes a copy of `arguments`, which must not be used while this lives.
    explicit ScanArguments(va_list arguments) noexcept { va_copy(list_, arguments); }
    ~ScanArguments() { va_end(list_); }
    ScanArguments(const ScanArguments &) = delete;
    ScanArguments &operator=(const ScanArguments &) = delete;

    // The next argument, a T *. T is one of the standard integer types,
    // char, wchar_t, a floating type or void *.
    template <typename T>
    T *next() noexcept;

private:
    va_list list_;
};

}  // namespace tollan::stdc
