// The exported low-level file calls, over the descriptor list.
#include <cerrno>
#include <climits>

#include <tollan/ansi_c.h>

#include "stdc/descriptors.h"
#include "stdc/stream.h"

using namespace tollan::stdc;

int tollan_open(const char *path, int flags, int permission) noexcept
{
    return tollan_sopen(path, flags, TOLLAN_SH_DENYNO, permission);
}

int tollan_sopen(const char *path, int flags, int share, int permission) noexcept
{
    if (flags < 0) {
        setErrno(EINVAL);
        return -1;
    }
    return openDescriptor(path, static_cast<uint32_t>(flags), share, permission);
}

int tollan_read(int descriptor, void *buffer, unsigned int count) noexcept
{
    if (buffer == nullptr && count > 0) {
        setErrno(EINVAL);
        return -1;
    }
    uint32_t flags = 0;
    descriptorFlags(descriptor, &flags);
    const unsigned int piece = count > INT_MAX ? INT_MAX : count;
    return static_cast<int>(readDescriptor(descriptor, buffer, piece, flags));
}

int tollan_write(int descriptor, const void *bytes, unsigned int count) noexcept
{
    if (descriptor == 0) {
        setErrno(EBADF);
        return -1;
    }
    if (bytes == nullptr && count > 0) {
        setErrno(EINVAL);
        return -1;
    }
    uint32_t flags = 0;
    descriptorFlags(descriptor, &flags);
    const unsigned int piece = count > INT_MAX ? INT_MAX : count;
    return static_cast<int>(writeDescriptor(descriptor, bytes, piece, flags));
}

int64_t tollan_lseek(int descriptor, int64_t offset, int whence) noexcept
{
    return seekDescriptor(descriptor, offset, whence);
}

int tollan_close(int descriptor) noexcept
{
    return closeDescriptor(descriptor);
}

int tollan_eof(int descriptor) noexcept
{
    return descriptorAtEnd(descriptor);
}
