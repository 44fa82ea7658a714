// Opening and closing streams: fopen, freopen, fdopen, fclose, tmpfile, and
// closing every stream at clean-up.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>

#include "platform/c_errno.h"
#include "services/path_check.h"
#include "stdc/descriptors.h"
#include "stdc/library.h"
#include "stdc/stream.h"
#include "stdc/stream_buffer.h"

namespace tollan::stdc {
namespace {

TollanFILE *handed(Stream *stream) noexcept
{
    return reinterpret_cast<TollanFILE *>(stream);
}

// The mode bits of a mode text; false (errno 22) for a text that is none.
bool parseMode(const char *text, uint32_t *bits) noexcept
{
    if (text == nullptr) return false;
    switch (text[0]) {
        case 'r':
            *bits = mode::kRead;
            break;
        case 'w':
            *bits = mode::kWrite | mode::kCreate | mode::kTruncate;
            break;
        case 'a':
            *bits = mode::kWrite | mode::kAppend | mode::kCreate;
            break;
        default:
            return false;
    }
    for (const char *at = text + 1; *at == 'b' || *at == '+'; ++at)
        *bits |= *at == 'b' ? mode::kBinary : mode::kRead | mode::kWrite;
    return true;
}

uint32_t lowFlagsForOpen(uint32_t bits) noexcept
{
    uint32_t flags = 0;
    if ((bits & mode::kRead) != 0) flags |= lowflag::kRead;
    if ((bits & mode::kWrite) != 0) flags |= lowflag::kWrite;
    if ((bits & mode::kBinary) != 0) flags |= lowflag::kBinary;
    if ((bits & mode::kAppend) != 0) flags |= lowflag::kAppend;
    if ((bits & mode::kTruncate) != 0) flags |= lowflag::kTruncate;
    if ((bits & mode::kCreate) != 0) flags |= lowflag::kCreate;
    return flags;
}

// The descriptions resource tracking shows for a stream. The library prints
// every pointer as 16 hexadecimal digits, so the 0 flag (which C leaves
// undefined for %p, and -Wformat rejects) changes nothing.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
void trackStream(Stream &stream, const char *path) noexcept
{
    __ZOR_Resource_Acquire(&stream, "Files", "FILE* 0x%016p \"%s\"", static_cast<void *>(&stream), path);
}

void trackStreamOnDescriptor(Stream &stream, int descriptor) noexcept
{
    __ZOR_Resource_Acquire(&stream, "Files", "FILE* 0x%016p from POSIX file handle %u",
                           static_cast<void *>(&stream), static_cast<unsigned>(descriptor));
}
#pragma GCC diagnostic pop

// Opens path on `stream`, a free record; false with errno on failure.
bool openOn(Stream &stream, const char *path, const char *modeText) noexcept
{
    uint32_t bits = 0;
    if (!parseMode(modeText, &bits) || services::checkPath(path) != platform::FileError::none) {
        setErrno(EINVAL);
        return false;
    }
    const int descriptor = openDescriptor(path, lowFlagsForOpen(bits), 0, 0666);
    if (descriptor < 0) return false;
    stream.mode = bits;
    stream.descriptor = descriptor;
    stream.pushedCount = 0;
    stream.state = (stream.state & state::kHasLock) | state::kInUse;
    trackStream(stream, path);
    return true;
}

// Flushes and closes a stream; its record stays for the next open.
int closeLocked(Stream &stream) noexcept
{
    const int flushed = flushStream(stream);
    __ZOR_Resource_Release(&stream);
    const int closed = closeStream(stream);
    return flushed == 0 && closed == 0 ? 0 : -1;
}

}  // namespace

void closeAllStreams() noexcept
{
    std::lock_guard hold(tableLock());
    for (int slot = 0; slot < kStreamSlots; ++slot) {
        Stream *record = streamInSlot(slot);
        if (record == nullptr || (record->state & state::kInUse) == 0) continue;
        StreamAccess stream(record);
        if (stream) closeLocked(*stream);
    }
}

}  // namespace tollan::stdc

using namespace tollan::stdc;

TollanFILE *tollan_fopen(const char *path, const char *mode) noexcept
{
    std::lock_guard hold(tableLock());
    Stream *stream = takeSlot();
    if (stream == nullptr) return nullptr;
    std::lock_guard own(lockOf(*stream));
    return openOn(*stream, path, mode) ? handed(stream) : nullptr;
}

TollanFILE *tollan_freopen(const char *path, const char *mode, TollanFILE *candidate) noexcept
{
    std::lock_guard hold(tableLock());
    StreamAccess stream(candidate);
    if (!stream) return nullptr;
    const int kept = *tollan::platform::cErrnoLocation();
    closeLocked(*stream);
    setErrno(kept);
    return openOn(*stream, path, mode) ? handed(&*stream) : nullptr;
}

TollanFILE *tollan_fdopen(int descriptor, const char *mode) noexcept
{
    uint32_t bits = 0;
    uint32_t flags = 0;
    if (descriptor < 0 || !parseMode(mode, &bits)) {
        setErrno(EINVAL);
        return nullptr;
    }
    if (!descriptorFlags(descriptor, &flags)) {
        setErrno(EBADF);
        return nullptr;
    }
    std::lock_guard hold(tableLock());
    Stream *stream = takeSlot();
    if (stream == nullptr) return nullptr;
    std::lock_guard own(lockOf(*stream));
    stream->mode = (bits & ~(mode::kCreate | mode::kTruncate)) | mode::kFromDescriptor;
    stream->descriptor = descriptor;
    stream->pushedCount = 0;
    stream->state = (stream->state & state::kHasLock) | state::kInUse;
    if (void *entry = descriptorTrackingHandle(descriptor)) __ZOR_Resource_Release(entry);
    trackStreamOnDescriptor(*stream, descriptor);
    return handed(stream);
}

int tollan_fclose(TollanFILE *candidate) noexcept
{
    StreamAccess stream(candidate);
    if (!stream) return TOLLAN_EOF;
    return closeLocked(*stream);
}

TollanFILE *tollan_tmpfile(void) noexcept
{
    std::lock_guard hold(tableLock());
    char name[TOLLAN_L_tmpnam];
    if (tollan_tmpnam(name) == nullptr) return nullptr;
    TollanFILE *file = tollan_fopen(name, "wb+");
    if (file == nullptr) return nullptr;
    Stream &stream = *reinterpret_cast<Stream *>(file);
    const size_t size = std::strlen(name) + 1;
    stream.temporaryName = static_cast<char *>(std::malloc(size));
    if (stream.temporaryName == nullptr) {
        tollan_fclose(file);
        tollan::platform::removeFile(name);
        setErrno(ENOMEM);
        return nullptr;
    }
    std::memcpy(stream.temporaryName, name, size);
    return file;
}
