#include "rs232/errors.h"

#include <atomic>
#include <cstdio>
#include <cstring>

#include <tollan/rs232.h>

#include "logger/log.h"
#include "platform/serial.h"
#include "services/thread_record.h"

namespace tollan::rs232 {
namespace {

struct ErrorRow {
    int32_t code;
    const char *text;
};

// Every code the library knows, in the order the texts are searched.
constexpr ErrorRow kErrors[] = {
    {0, "No error"},
    {-1, "Unknown system error"},
    {-2, "Invalid port number"},
    {-3, "Port not open"},
    {-4, "Unknown I/O error"},
    {-5, "Unexpected internal error"},
    {-6, "No port found"},
    {-7, "Cannot open port"},
    {-8, "A NULL pointer was passed when a non-NULL pointer was expected"},
    {-11, "Out of memory"},
    {-12, "Unable to allocate system resources."},
    {-13, "Invalid parameter"},
    {-14, "Invalid baud rate"},
    {-24, "Invalid parity"},
    {-34, "Invalid number of data bits"},
    {-44, "Invalid number of stop bits"},
    {-90, "Bad file handle"},
    {-91, "File I/O error"},
    {-94, "Invalid count = must be 0 or greater"},
    {-97, "Invalid interrupt level"},
    {-99, "I/O operation timed out"},
    {-104, "Break time must be a positive value"},
    {-114, "Input queue size must be 0 or greater"},
    {-124, "Output queue size must be 0 or greater"},
    {-151, "General I/O error"},
    {-152, "Buffer parameter is NULL"},
    // The real-time target build's code; the desktop library never returns it.
    {-180,
     "A necessary run-time library could not be found or loaded.\n\n"
     "On a real-time system the RS-232 library needs the real-time target's serial "
     "driver. Install the driver on the host computer from the maker's driver media, "
     "then deploy it to the target with the maker's configuration tool."},
    {-257, "Package sent but no ACK received"},
    {-258, "Packet not sent within retry limit"},
    {-259, "Packet not received within retry limit"},
    {-260, "Unexpected EOT received"},
    {-261, "Unable to read packet number"},
    {-262, "Inconsistent packet number"},
    {-263, "Unable to read packet data"},
    {-264, "Unable to read checksum"},
    {-265, "Checksum error"},
    {-269, "Packet size greater than input queue size"},
    {-300, "File open error"},
    {-301, "File read error"},
    {-302, "Did not receive initial NAK"},
    {-303, "Did not receive ACK after EOT was sent"},
    {-304, "File write error"},
    {-305, "Did not receive SOH or EOT when expected"},
    {-402, "Transfer was cancelled because CAN was received"},
    // An extension: the progress callback asked to stop.
    {-403, "Transfer was cancelled by the progress callback"},
    {-503, "Invalid start delay"},
    {-504, "Invalid maximum number of retries"},
    {-505, "Invalid wait period"},
    {-506, "Invalid packet size"},
    {-507, "Unable to read CRC"},
    {-508, "CRC error"},
};
static_assert(std::size(kErrors) == 51);

constexpr size_t kMessageSize = 512;

// A thread's error and the buffer GetRS232ErrorString fills.
struct ThreadErrors {
    int32_t error;
    char message[kMessageSize];
};

constinit services::ThreadRecordSlot errorSlot;
// Seeds a thread's new record, and stands in for it when it cannot be made.
std::atomic<int32_t> fallbackError{0};
// rs232err: the last error of any thread.
constinit int32_t libraryError = 0;
constinit thread_local ThreadErrors fallbackRecord{};

ThreadErrors &threadErrors() noexcept
{
    bool made = false;
    if (void *record = errorSlot.record(sizeof(ThreadErrors), &made)) {
        auto *errors = static_cast<ThreadErrors *>(record);
        if (made) errors->error = fallbackError.load(std::memory_order_relaxed);
        return *errors;
    }
    fallbackRecord.error = fallbackError.load(std::memory_order_relaxed);
    return fallbackRecord;
}

}  // namespace

int32_t SetRS232Err(int32_t code) noexcept
{
    const int32_t stored = code >= 0 ? 0 : code;
    std::atomic_ref<int32_t>(libraryError).store(stored, std::memory_order_relaxed);
    ThreadErrors &errors = threadErrors();
    errors.error = stored;
    if (&errors == &fallbackRecord) fallbackError.store(stored, std::memory_order_relaxed);
    return code;
}

int32_t threadError() noexcept
{
    return threadErrors().error;
}

void logFailure(int32_t code, const char *function, std::source_location where) noexcept
{
    if (code >= 0 || !logger::enabled(ZOR_LOG_WARNING)) return;
    WriteZORLogMessage(ZOR_LOG_WARNING, 0, 0, kLogModule, function, static_cast<int32_t>(where.line()), "%s",
                       errorText(code));
}

const char *errorText(int32_t code) noexcept
{
    for (const ErrorRow &row : kErrors)
        if (row.code == code) return row.text;
    return "Unknown error number";
}

int32_t MapWin32CommError() noexcept
{
    switch (platform::lastSerialError() & 0xFFFFu) {
        case platform::kSerialNoError:
            return 0;
        case platform::kSerialNoMemory:
        case 14:
            return ZOR_RS232_NO_RESOURCES;  // ERROR_OUTOFMEMORY
        case platform::kSerialOpenFailed:
            return ZOR_RS232_CANNOT_OPEN;
        case platform::kSerialTimeout:
            return ZOR_RS232_TIMEOUT;
        default:
            return ZOR_RS232_SYSTEM_ERROR;
    }
}

bool reserveErrorSlot() noexcept
{
    return errorSlot.reserve();
}

void releaseErrorSlot() noexcept
{
    errorSlot.release();
}

void freeThreadErrorRecord() noexcept
{
    errorSlot.freeRecord();
}

}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t *_GetRs232Err(void) noexcept
{
    return &libraryError;
}

char *GetRS232ErrorString(int32_t errorCode) noexcept
{
    char *message = threadErrors().message;
    if (errorCode == ZOR_RS232_SYSTEM_ERROR &&
        tollan::platform::serialErrorText(tollan::platform::lastSerialError(), message, kMessageSize))
        return message;
    std::snprintf(message, kMessageSize, "%s", errorText(errorCode));
    return message;
}
