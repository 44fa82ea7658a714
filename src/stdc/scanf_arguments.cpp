// Every pointer type a conversion stores through, instantiated here once:
// the sizes' typedefs (int64_t, size_t, intptr_t, ...) name these types.
#include "stdc/scanf_arguments.h"

namespace tollan::stdc {

template <typename T>
T *ScanArguments::next() noexcept
{
    return va_arg(list_, T *);
}

template signed char *ScanArguments::next<signed char>() noexcept;
template unsigned char *ScanArguments::next<unsigned char>() noexcept;
template short *ScanArguments::next<short>() noexcept;
template unsigned short *ScanArguments::next<unsigned short>() noexcept;
template int *ScanArguments::next<int>() noexcept;
template unsigned *ScanArguments::next<unsigned>() noexcept;
template long *ScanArguments::next<long>() noexcept;
template unsigned long *ScanArguments::next<unsigned long>() noexcept;
template long long *ScanArguments::next<long long>() noexcept;
template unsigned long long *ScanArguments::next<unsigned long long>() noexcept;
template char *ScanArguments::next<char>() noexcept;
template wchar_t *ScanArguments::next<wchar_t>() noexcept;
template float *ScanArguments::next<float>() noexcept;
template double *ScanArguments::next<double>() noexcept;
template long double *ScanArguments::next<long double>() noexcept;
template void **ScanArguments::next<void *>() noexcept;

}  // namespace tollan::stdc
