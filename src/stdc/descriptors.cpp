// The low-level descriptor list and its calls.
#include "stdc/descriptors.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>

#include <tollan/debugger.h>

#include "debugger/standard_output.h"
#include "platform/lock.h"
#include "platform/standard_io_pipe.h"
#include "services/line_ends.h"
#include "services/process_object.h"
#include "stdc/stream.h"

namespace tollan::stdc {
namespace {

struct Entry {
    platform::NativeFile file = platform::kNoFile;
    std::atomic<bool> inUse{false};
    uint32_t flags = 0;
    bool diskFile = false;
    // A byte read ahead to see whether a CR began a line end; served first.
    int heldByte = -1;
    platform::RecursiveLock lock;
};

// Entries live in chunks that never move, so a descriptor finds its entry
// without the list lock; the list lock guards only the growth.
constexpr int kChunkSize = 64;
constexpr int kChunks = 32;
std::atomic<Entry *> chunks[kChunks];
std::atomic<int> entryCount{0};

platform::RecursiveLock &listLock() noexcept
{
    return services::processObject<platform::RecursiveLock, struct DescriptorListLockTag>();
}

Entry *entryAt(int index) noexcept
{
    if (index < 0 || index >= entryCount.load(std::memory_order_acquire)) return nullptr;
    return &chunks[index / kChunkSize].load(std::memory_order_acquire)[index % kChunkSize];
}

// The open entry of `descriptor` (3 and up), or null with errno 9.
Entry *openEntry(int descriptor) noexcept
{
    Entry *entry = entryAt(descriptor - kFirstDescriptor);
    if (entry == nullptr || !entry->inUse.load(std::memory_order_acquire)) {
        setErrno(EBADF);
        return nullptr;
    }
    return entry;
}

// One call's hold on an open descriptor (3 and up) whose open flags allow
// `access` (lowflag::kRead, lowflag::kWrite or 0): its entry, locked until
// the call returns. False, with errno 9, for any other number.
class LockedEntry {
public:
    LockedEntry(int descriptor, uint32_t access) noexcept : entry_(openEntry(descriptor))
    {
        if (entry_ == nullptr) return;
        entry_->lock.lock();
        if (!entry_->inUse.load(std::memory_order_relaxed) || (entry_->flags & access) != access) {
            entry_->lock.unlock();
            entry_ = nullptr;
            setErrno(EBADF);
        }
    }
    ~LockedEntry()
    {
        if (entry_ != nullptr) entry_->lock.unlock();
    }
    LockedEntry(const LockedEntry &) = delete;
    LockedEntry &operator=(const LockedEntry &) = delete;
    explicit operator bool() const noexcept { return entry_ != nullptr; }
    Entry *operator->() const noexcept { return entry_; }
    Entry *get() const noexcept { return entry_; }

private:
    Entry *entry_;
};

// A free entry, marked in use; its index in *index. Null when the list is full.
Entry *claimEntry(int *index) noexcept
{
    std::lock_guard hold(listLock());
    const int count = entryCount.load(std::memory_order_relaxed);
    for (int i = 0; i < count; ++i) {
        Entry *entry = entryAt(i);
        if (!entry->inUse.load(std::memory_order_relaxed)) {
            entry->inUse.store(true, std::memory_order_release);
            *index = i;
            return entry;
        }
    }
    if (count == kChunkSize * kChunks) return nullptr;
    if (count % kChunkSize == 0) {
        Entry *chunk = new (std::nothrow) Entry[kChunkSize];
        if (chunk == nullptr) return nullptr;
        chunks[count / kChunkSize].store(chunk, std::memory_order_release);
    }
    Entry *entry = &chunks[count / kChunkSize].load(std::memory_order_relaxed)[count % kChunkSize];
    entry->inUse.store(true, std::memory_order_release);
    entryCount.store(count + 1, std::memory_order_release);
    *index = count;
    return entry;
}

bool failWith(platform::FileError error) noexcept
{
    setErrno(errnoOf(error));
    return false;
}

int64_t failed(platform::FileError error) noexcept
{
    failWith(error);
    return -1;
}

// One system write of all the bytes.
bool writeAll(platform::NativeFile file, const char *bytes, size_t count) noexcept
{
    while (count > 0) {
        const auto piece = static_cast<uint32_t>(std::min<size_t>(count, UINT32_MAX));
        if (const platform::FileError error = platform::writeFile(file, bytes, piece);
            error != platform::FileError::none)
            return failWith(error);
        bytes += piece;
        count -= piece;
    }
    return true;
}

// Text mode: each LF goes out as CR LF, through a small staging block.
bool writeText(platform::NativeFile file, const char *bytes, size_t count) noexcept
{
    char staged[1024];
    while (count > 0) {
        size_t taken = 0;
        const size_t put = services::expandLineFeeds(bytes, count, staged, sizeof staged, &taken);
        if (!writeAll(file, staged, put)) return false;
        bytes += taken;
        count -= taken;
    }
    return true;
}

bool writeTo(platform::NativeFile file, const void *bytes, size_t count, bool text) noexcept
{
    const auto *data = static_cast<const char *>(bytes);
    return text ? writeText(file, data, count) : writeAll(file, data, count);
}

// Standard output and error: the debugger's hook and the standard I/O pipe
// see every write first; a process without the handle writes only there.
int64_t writeStandard(int descriptor, const void *bytes, size_t count, uint32_t flags) noexcept
{
    for (size_t done = 0; done < count;) {
        const auto piece = static_cast<uint32_t>(std::min<size_t>(count - done, UINT32_MAX));
        debugger::forwardStandardOutput(static_cast<const char *>(bytes) + done, piece);
        done += piece;
    }
    platform::writeStandardIoPipe(descriptor, bytes, count);
    const platform::NativeFile file = platform::standardFile(descriptor);
    if (file == platform::kNoFile) return static_cast<int64_t>(count);
    const bool text = (flags & lowflag::kBinary) == 0 && platform::standardFilesUseCrLf();
    return writeTo(file, bytes, count, text) ? static_cast<int64_t>(count) : -1;
}

// A text-mode read: CR LF becomes LF. A CR that ends what the system gave is
// settled by reading one byte more; a byte that is not LF waits in the entry.
int64_t readText(platform::NativeFile file, char *buffer, size_t got, int *heldByte) noexcept
{
    size_t kept = services::dropCarriageReturns(buffer, got);
    if (kept > 0 && buffer[kept - 1] == '\r') {
        char next = 0;
        uint32_t more = 0;
        if (platform::readFile(file, &next, 1, &more) == platform::FileError::none && more == 1) {
            if (next == '\n')
                buffer[kept - 1] = '\n';
            else
                *heldByte = static_cast<unsigned char>(next);
        }
    }
    return static_cast<int64_t>(kept);
}

int64_t readFrom(platform::NativeFile file, char *buffer, size_t count, bool text, int *heldByte) noexcept
{
    if (count == 0) return 0;
    size_t first = 0;
    if (*heldByte >= 0) {
        buffer[first++] = static_cast<char>(*heldByte);
        *heldByte = -1;
    }
    uint32_t got = 0;
    if (first < count) {
        const auto piece = static_cast<uint32_t>(std::min<size_t>(count - first, INT32_MAX));
        if (const platform::FileError error = platform::readFile(file, buffer + first, piece, &got);
            error != platform::FileError::none) {
            if (first == 0) return failed(error);
            got = 0;
        }
    }
    const size_t total = first + got;
    return text ? readText(file, buffer, total, heldByte) : static_cast<int64_t>(total);
}

int standardInputHeld = -1;

}  // namespace

int errnoOf(platform::FileError error) noexcept
{
    // In FileError's order: none, not found, general, bad handle, no memory,
    // exists, access denied, invalid argument, too many files, disk full,
    // name too long.
    constexpr int kErrno[] = {0,      ENOENT, EIO,    EBADF,  ENOMEM,      EEXIST,
                              EACCES, EINVAL, EMFILE, ENOSPC, ENAMETOOLONG};
    static_assert(std::size(kErrno) == static_cast<size_t>(platform::FileError::nameTooLong) + 1);
    const auto index = static_cast<size_t>(error);
    return index < std::size(kErrno) ? kErrno[index] : EIO;
}

int openDescriptor(const char *path, uint32_t flags, int share, int permission) noexcept
{
    if ((flags & ~lowflag::kAll) != 0 || (flags & (lowflag::kRead | lowflag::kWrite)) == 0 || share < 0 ||
        share > 3 || path == nullptr) {
        setErrno(EINVAL);
        return -1;
    }
    platform::FileOpenRequest request;
    request.read = (flags & lowflag::kRead) != 0;
    request.write = (flags & lowflag::kWrite) != 0;
    request.truncate = (flags & lowflag::kTruncate) != 0;
    request.create = (flags & lowflag::kCreate) != 0;
    request.exclusive = (flags & lowflag::kExclusive) != 0;
    request.sharing = static_cast<platform::FileSharing>(share);
    request.readOnlyWhenCreated = (permission & 0x222) == 0;
    request.deleteOnClose = (flags & lowflag::kTemporary) != 0;
    request.sequential = (flags & lowflag::kSequential) != 0;
    request.randomAccess = (flags & lowflag::kRandom) != 0;

    int index = 0;
    Entry *entry = claimEntry(&index);
    if (entry == nullptr) {
        setErrno(ENOMEM);
        return -1;
    }
    std::lock_guard hold(entry->lock);
    platform::NativeFile file = platform::kNoFile;
    if (const platform::FileError error = platform::openFile(path, request, &file);
        error != platform::FileError::none) {
        entry->inUse.store(false, std::memory_order_release);
        failWith(error);
        return -1;
    }
    entry->file = file;
    entry->flags = flags;
    entry->heldByte = -1;
    entry->diskFile = platform::isDiskFile(file);
    if ((flags & lowflag::kAppend) != 0 && entry->diskFile) {
        int64_t end = 0;
        platform::seekFile(file, 0, platform::SeekOrigin::end, &end);
    }
    const int descriptor = index + kFirstDescriptor;
    __ZOR_Resource_Acquire(entry, "Files", "POSIX file handle %u \"%s\"", static_cast<unsigned>(descriptor),
                           path);
    return descriptor;
}

int64_t readDescriptor(int descriptor, void *buffer, size_t count, uint32_t flags) noexcept
{
    auto *bytes = static_cast<char *>(buffer);
    if (descriptor == 0) {
        const platform::NativeFile file = platform::standardFile(0);
        if (file == platform::kNoFile) return 0;
        const bool text = (flags & lowflag::kBinary) == 0 && platform::standardFilesUseCrLf();
        return readFrom(file, bytes, count, text, &standardInputHeld);
    }
    LockedEntry entry(descriptor, lowflag::kRead);
    if (!entry) return -1;
    return readFrom(entry->file, bytes, count, (flags & lowflag::kBinary) == 0, &entry->heldByte);
}

int64_t writeDescriptor(int descriptor, const void *bytes, size_t count, uint32_t flags) noexcept
{
    if (descriptor == 1 || descriptor == 2) return writeStandard(descriptor, bytes, count, flags);
    LockedEntry entry(descriptor, lowflag::kWrite);
    if (!entry) return -1;
    if ((flags & lowflag::kAppend) != 0 && entry->diskFile) {
        int64_t end = 0;
        if (const platform::FileError error =
                platform::seekFile(entry->file, 0, platform::SeekOrigin::end, &end);
            error != platform::FileError::none)
            return failed(error);
    }
    return writeTo(entry->file, bytes, count, (flags & lowflag::kBinary) == 0) ? static_cast<int64_t>(count)
                                                                               : -1;
}

int64_t seekDescriptor(int descriptor, int64_t offset, int whence) noexcept
{
    if (descriptor < kFirstDescriptor) return 0;
    LockedEntry entry(descriptor, 0);
    if (!entry) return -1;
    if (whence < 0 || whence > 2) {
        setErrno(EINVAL);
        return -1;
    }
    // A byte held back by a text read was read from the file already.
    if (whence == 1 && entry->heldByte >= 0) --offset;
    int64_t position = 0;
    if (const platform::FileError error =
            platform::seekFile(entry->file, offset, static_cast<platform::SeekOrigin>(whence), &position);
        error != platform::FileError::none)
        return failed(error);
    entry->heldByte = -1;
    return position;
}

int closeDescriptor(int descriptor) noexcept
{
    LockedEntry entry(descriptor, 0);
    if (!entry) return -1;
    const platform::FileError error = platform::closeFile(entry->file);
    __ZOR_Resource_Release(entry.get());
    entry->file = platform::kNoFile;
    entry->inUse.store(false, std::memory_order_release);
    return error == platform::FileError::none ? 0 : static_cast<int>(failed(error));
}

int commitDescriptor(int descriptor) noexcept
{
    if (descriptor < kFirstDescriptor) return 0;
    return openEntry(descriptor) != nullptr ? 0 : -1;
}

int descriptorAtEnd(int descriptor) noexcept
{
    if (descriptor < kFirstDescriptor) return 0;
    LockedEntry entry(descriptor, 0);
    if (!entry) return -1;
    if (entry->heldByte >= 0) return 0;
    int64_t here = 0;
    int64_t end = 0;
    platform::FileError error = platform::seekFile(entry->file, 0, platform::SeekOrigin::current, &here);
    if (error == platform::FileError::none)
        error = platform::seekFile(entry->file, 0, platform::SeekOrigin::end, &end);
    if (error == platform::FileError::none)
        error = platform::seekFile(entry->file, here, platform::SeekOrigin::begin, &here);
    if (error != platform::FileError::none) return failed(error);
    return here >= end ? 1 : 0;
}

bool descriptorFlags(int descriptor, uint32_t *flags) noexcept
{
    if (descriptor >= 0 && descriptor < kFirstDescriptor) {
        *flags = descriptor == 0 ? lowflag::kRead : lowflag::kWrite;
        return true;
    }
    Entry *entry = entryAt(descriptor - kFirstDescriptor);
    if (entry == nullptr || !entry->inUse.load(std::memory_order_acquire)) return false;
    *flags = entry->flags;
    return true;
}

void *descriptorTrackingHandle(int descriptor) noexcept
{
    Entry *entry = entryAt(descriptor - kFirstDescriptor);
    return entry != nullptr && entry->inUse.load(std::memory_order_acquire) ? entry : nullptr;
}

size_t countNewlines(const char *begin, const char *end) noexcept
{
    return static_cast<size_t>(std::count(begin, end, '\n'));
}

}  // namespace tollan::stdc
