#include "fmtio/fmt_arguments.h"

namespace tollan::fmtio {

int FormatArguments::nextInt() noexcept
{
    return va_arg(list_, int);
}

long long FormatArguments::nextLongLong() noexcept
{
    return va_arg(list_, long long);
}

double FormatArguments::nextDouble() noexcept
{
    return va_arg(list_, double);
}

const void *FormatArguments::nextAddress() noexcept
{
    return va_arg(list_, const void *);
}

}  // namespace tollan::fmtio
