// The variable arguments of a Fmt or Scan call, taken in order: the one place
// that takes them.
#pragma once

#include <cstdarg>

namespace tollan::fmtio {

class FormatArguments {
public:
    // Takes a copy of `arguments`, which must not be used while this lives.
    explicit FormatArguments(va_list arguments) noexcept { va_copy(list_, arguments); }
    ~FormatArguments() { va_end(list_); }
    FormatArguments(const FormatArguments &) = delete;
    FormatArguments &operator=(const FormatArguments &) = delete;

    // The next argument, of the type the name says.
    int nextInt() noexcept;
    long long nextLongLong() noexcept;
    double nextDouble() noexcept;
    const void *nextAddress() noexcept;

private:
    va_list list_;
};

}  // namespace tollan::fmtio
