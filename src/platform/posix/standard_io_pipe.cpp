// The standard I/O pipe on POSIX: a connection to the Unix-domain socket
// that stands for the named pipe (tollan-monitor listens there), carrying one
// record per write, tagged with the stream it was written to.
#include "platform/standard_io_pipe.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "platform/posix/monitor_channel.h"
#include "platform/posix/system_calls.h"

namespace tollan::platform {
using posix::sys;

namespace {

// A write longer than this goes as several records, so that a reader never
// has to hold more than this of one record (and a length always fits the
// record's 32 bits).
constexpr size_t kLongestRecord = size_t{1} << 20;

std::mutex pipeLock;
int pipeSocket = -1;

void dropConnection() noexcept
{
    if (pipeSocket >= 0) sys().close(pipeSocket);
    pipeSocket = -1;
}

// A child of fork() gets the lock free and no connection: the inherited one
// is its parent's, and the child's writes go to the pipe named after its own
// id, never into the middle of its parent's records.
void beforeFork() noexcept
{
    pipeLock.lock();
}

void afterForkInParent() noexcept
{
    pipeLock.unlock();
}

void afterForkInChild() noexcept
{
    dropConnection();
    pipeLock.unlock();
}

// The connection, made now when there is none; -1 when nobody listens. The
// caller holds pipeLock.
int connection() noexcept
{
    if (pipeSocket >= 0) return pipeSocket;
    char name[kStandardIoPipeNameSize];
    standardIoPipeName(static_cast<uint32_t>(getpid()), name);
    try {
        pipeSocket = posix::connectTo(posix::pipeSocketPath(name));
    } catch (...) {
        pipeSocket = -1;  // no memory for the path: as if nobody listened
    }
    return pipeSocket;
}

}  // namespace

void writeStandardIoPipe(int descriptor, const void *bytes, size_t count) noexcept
{
    if ((descriptor != 1 && descriptor != 2) || bytes == nullptr || count == 0 || !standardIoPipeOn()) return;
    // Until the first write with the switch on, a fork has nothing to look after.
    [[maybe_unused]] static const bool forkHandled =
        pthread_atfork(beforeFork, afterForkInParent, afterForkInChild) == 0;
    const int savedErrno = errno;
    {
        std::lock_guard hold(pipeLock);
        const int fd = standardIoPipeOn() ? connection() : -1;
        const char kind = descriptor == 1 ? posix::kRecordStandardOutput : posix::kRecordStandardError;
        const char *next = static_cast<const char *>(bytes);
        for (size_t left = count; fd >= 0 && left > 0;) {
            const size_t piece = std::min(left, kLongestRecord);
            // A record broken off would garble every later one: the reader
            // is gone, or could not follow any more. The connection goes,
            // and the next write connects anew.
            if (!posix::sendRecord(fd, kind, next, piece)) {
                dropConnection();
                break;
            }
            next += piece;
            left -= piece;
        }
    }
    errno = savedErrno;
}

void closeStandardIoPipe() noexcept
{
    const int savedErrno = errno;
    {
        // A socket keeps no buffers of ours: what was sent is the reader's already.
        std::lock_guard hold(pipeLock);
        dropConnection();
    }
    errno = savedErrno;
}

}  // namespace tollan::platform
