#include "platform/posix/named_region.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <new>

#include "platform/thread.h"

namespace tollan::platform::posix {

namespace {

constexpr uint32_t kRegionMagic = 0x4e4c4f54;  // "TOLN"
constexpr uint32_t kReady = 1;
// How long an opener waits for a creator that is still setting the region up.
constexpr int kSetupWaitMs = 2000;
// Creation races with another process removing a stale region: retry a few times.
constexpr int kAttempts = 8;

struct alignas(64) RegionHeader {
    uint32_t magic;
    uint32_t kind;
    uint32_t state;  // kReady once the payload is set up
    int32_t creatorPid;
    uint64_t payloadSize;
};

constexpr size_t kHeaderSize = sizeof(RegionHeader);

bool processAlive(pid_t pid) noexcept
{
    return pid <= 0 || kill(pid, 0) == 0 || errno != ESRCH;
}

uint32_t loadState(RegionHeader *header) noexcept
{
    return std::atomic_ref<uint32_t>(header->state).load(std::memory_order_acquire);
}

void *mapFd(int fd, size_t size) noexcept
{
    void *base = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    return base == MAP_FAILED ? nullptr : base;
}

// The size of the object behind fd once its creator has sized it; 0 when that
// does not happen in time.
size_t waitForSize(int fd) noexcept
{
    for (int waited = 0; waited < kSetupWaitMs; ++waited) {
        struct stat info {};
        if (fstat(fd, &info) != 0) return 0;
        if (static_cast<size_t>(info.st_size) >= kHeaderSize) return static_cast<size_t>(info.st_size);
        sleepMs(1);
    }
    return 0;
}

enum class OpenOutcome { opened, missing, stale, failed };

// Maps an existing region, waiting for its creator to finish setting it up.
OpenOutcome openExisting(const std::string &objectName, RegionKind kind, size_t payloadSize, void **base,
                         size_t *mappedSize) noexcept
{
    const int fd = shm_open(objectName.c_str(), O_RDWR, 0);
    if (fd < 0) return errno == ENOENT ? OpenOutcome::missing : OpenOutcome::failed;
    const size_t size = waitForSize(fd);
    void *mapped = size ? mapFd(fd, size) : nullptr;
    close(fd);
    if (!mapped) return size ? OpenOutcome::failed : OpenOutcome::stale;

    auto *header = static_cast<RegionHeader *>(mapped);
    OpenOutcome outcome = OpenOutcome::stale;
    for (int waited = 0; waited < kSetupWaitMs; ++waited) {
        if (!processAlive(header->creatorPid)) break;
        if (loadState(header) == kReady) {
            const bool fits = header->magic == kRegionMagic && header->kind == static_cast<uint32_t>(kind) &&
                              header->payloadSize >= payloadSize && kHeaderSize + header->payloadSize <= size;
            outcome = fits ? OpenOutcome::opened : OpenOutcome::failed;
            break;
        }
        sleepMs(1);
    }
    if (outcome != OpenOutcome::opened) {
        munmap(mapped, size);
        return outcome;
    }
    *base = mapped;
    *mappedSize = size;
    return OpenOutcome::opened;
}

// Creates the region exclusively; false with errno EEXIST when the name is taken.
bool createExclusive(const std::string &objectName, RegionKind kind, size_t payloadSize,
                     NamedRegion::Initializer initialize, void *context, void **base,
                     size_t *mappedSize) noexcept
{
    const int fd = shm_open(objectName.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
    if (fd < 0) return false;
    const size_t size = kHeaderSize + payloadSize;
    void *mapped = ftruncate(fd, static_cast<off_t>(size)) == 0 ? mapFd(fd, size) : nullptr;
    close(fd);
    if (!mapped) {
        shm_unlink(objectName.c_str());
        errno = ENOMEM;
        return false;
    }
    auto *header = new (mapped) RegionHeader{};
    header->creatorPid = static_cast<int32_t>(getpid());
    header->magic = kRegionMagic;
    header->kind = static_cast<uint32_t>(kind);
    header->payloadSize = payloadSize;
    if (initialize && !initialize(static_cast<char *>(mapped) + kHeaderSize, context)) {
        munmap(mapped, size);
        shm_unlink(objectName.c_str());
        errno = EINVAL;
        return false;
    }
    std::atomic_ref<uint32_t>(header->state).store(kReady, std::memory_order_release);
    *base = mapped;
    *mappedSize = size;
    return true;
}

}  // namespace

std::string regionObjectName(const char *name)
{
    if (!name || !*name) return {};
    std::string objectName = "/tollan." + std::to_string(getuid()) + ".";
    for (const char *c = name; *c; ++c) objectName += (*c == '/' || *c == '\\') ? '_' : *c;
    if (objectName.size() > NAME_MAX) return {};
    return objectName;
}

std::unique_ptr<NamedRegion> NamedRegion::acquire(RegionKind kind, const char *name, size_t payloadSize,
                                                  bool createIfMissing, Initializer initialize,
                                                  void *context) noexcept
{
    try {
        const std::string objectName = regionObjectName(name);
        if (objectName.empty()) return nullptr;
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            void *base = nullptr;
            size_t mappedSize = 0;
            if (createIfMissing) {
                if (createExclusive(objectName, kind, payloadSize, initialize, context, &base, &mappedSize))
                    return std::unique_ptr<NamedRegion>(new NamedRegion(objectName, base, mappedSize, true));
                if (errno != EEXIST) return nullptr;
            }
            switch (openExisting(objectName, kind, payloadSize, &base, &mappedSize)) {
                case OpenOutcome::opened:
                    return std::unique_ptr<NamedRegion>(new NamedRegion(objectName, base, mappedSize, false));
                case OpenOutcome::stale:
                    shm_unlink(objectName.c_str());
                    if (!createIfMissing) return nullptr;
                    break;
                case OpenOutcome::missing:
                    if (!createIfMissing) return nullptr;
                    break;  // removed between our two calls: create it afresh
                case OpenOutcome::failed:
                    return nullptr;
            }
        }
    } catch (...) {
    }
    return nullptr;
}

NamedRegion::NamedRegion(std::string objectName, void *base, size_t mappedSize, bool created) noexcept
    : objectName_(std::move(objectName)),
      base_(base),
      mappedSize_(mappedSize),
      payload_(static_cast<char *>(base) + kHeaderSize),
      created_(created),
      ownerPid_(static_cast<int>(getpid()))
{
}

NamedRegion::~NamedRegion()
{
    if (!keepMapped_) munmap(base_, mappedSize_);
    // A child of the creator holds the region through fork: the name stays
    // for the creator to remove.
    if (created_ && ownerPid_ == static_cast<int>(getpid())) shm_unlink(objectName_.c_str());
}

void removeStaleRegions(int limit) noexcept
{
    // The shared-memory objects are the files of /dev/shm.
    const std::string prefix = "tollan." + std::to_string(getuid()) + ".";
    DIR *directory = opendir("/dev/shm");
    if (directory == nullptr) return;
    for (int examined = 0; examined < limit;) {
        const dirent *entry = readdir(directory);
        if (entry == nullptr) break;
        if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) != 0) continue;
        ++examined;
        const std::string objectName = std::string("/") + entry->d_name;
        const int fd = shm_open(objectName.c_str(), O_RDONLY, 0);
        if (fd < 0) continue;
        RegionHeader header{};
        const bool read = pread(fd, &header, sizeof header, 0) == static_cast<ssize_t>(sizeof header);
        close(fd);
        // A region still being sized has no header yet; its creator is alive.
        if (read && header.magic == kRegionMagic && !processAlive(header.creatorPid))
            shm_unlink(objectName.c_str());
    }
    closedir(directory);
}

}  // namespace tollan::platform::posix
