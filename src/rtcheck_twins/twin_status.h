// The last step of a checked twin: the plain function's failure, offered
// as a break on library errors.
#pragma once

#include <cerrno>
#include <cstdint>
#include <type_traits>

namespace tollan::rtcheck {

// Whether a failure would be reported now; the elaboration of a failure is
// only worked out when it would.
bool libraryBreaksWanted() noexcept;

// Reports the failure of the plain function at `plain` ("return value"
// with value, or the status "errno" with errno's value and text).
void breakOnResult(intptr_t value, const char *elaboration, const void *plain) noexcept;
void breakOnErrno(const void *plain) noexcept;

template <typename T>
intptr_t statusValue(T value) noexcept
{
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<intptr_t>(value);
    else
        return static_cast<intptr_t>(value);
}

// The address of a function or an object, as the checks and the reports
// take it.
template <typename T>
const void *addressOf(T *pointer) noexcept
{
    return reinterpret_cast<const void *>(pointer);
}

// errno is 0 while the plain function runs, so that what it sets tells its
// failure; the caller's errno comes back when the function set none.
class ErrnoWatch {
public:
    ErrnoWatch() noexcept : saved_(errno) { errno = 0; }
    ~ErrnoWatch()
    {
        if (errno == 0) errno = saved_;
    }
    ErrnoWatch(const ErrnoWatch &) = delete;
    ErrnoWatch &operator=(const ErrnoWatch &) = delete;

private:
    int saved_;
};

}  // namespace tollan::rtcheck
