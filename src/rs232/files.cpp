// Transfers between a port and a file of the formatting library.
#include <tollan/fmtio.h>
#include <tollan/rs232.h>

#include "rs232/errors.h"
#include "rs232/port_table.h"
#include "rs232/transfer.h"
#include "rs232/writing_thread.h"

namespace tollan::rs232 {

int32_t writeWithTimeout(ComPort &port, const unsigned char *bytes, uint32_t count, uint32_t *taken) noexcept;

namespace {

constexpr size_t kBlock = 255;
constexpr int32_t kNoTerminator = -1;
constexpr int32_t kBadFileHandle = 3;  // the formatting library's "Bad file handle"

bool isLineEnd(unsigned char byte) noexcept
{
    return byte == 13 || byte == 10;
}

}  // namespace
}  // namespace tollan::rs232

using namespace tollan::rs232;

int32_t ComFromFile(int32_t port, int32_t fileHandle, int32_t count, int32_t terminator) noexcept
{
    PortCall call(port, "QX_ComFromFile");
    if (!call) return call.result();
    if (count < 0) return call.finish(ZOR_RS232_INVALID_COUNT);
    ComPort &record = *call.port();
    const unsigned char mask = dataBitMask(record);
    unsigned char block[kBlock];
    size_t inBlock = 0;
    int32_t sent = 0;
    int32_t status = 0;
    bool terminated = false;
    unsigned char terminatorByte = 0;
    // Sends the block; false when the port failed (status then holds why).
    auto flush = [&]() {
        uint32_t taken = 0;
        status = writeWithTimeout(record, block, static_cast<uint32_t>(inBlock), &taken);
        sent += static_cast<int32_t>(taken);
        inBlock = 0;
        return status == 0;
    };
    for (;;) {
        if (count != 0 && sent + static_cast<int32_t>(inBlock) >= count) break;
        unsigned char byte = 0;
        const int32_t read = ZOR_ReadFile(fileHandle, &byte, 1);
        if (read < 0) {
            status =
                GetFmtIOError() == kBadFileHandle ? ZOR_RS232_BAD_FILE_HANDLE : ZOR_RS232_FILE_READ_ERROR;
            break;
        }
        if (read == 0) break;
        if (terminator != kNoTerminator && (byte & mask) == (terminator & mask)) {
            terminated = true;
            terminatorByte = static_cast<unsigned char>(byte & mask);
            break;
        }
        block[inBlock++] = byte;
        if (inBlock == kBlock && !flush()) break;
    }
    if (status == 0 && inBlock > 0) flush();
    if (status == 0 && terminated && isLineEnd(terminatorByte)) {
        // The partner of a line end goes with it; anything else is read again later.
        unsigned char next = 0;
        if (ZOR_ReadFile(fileHandle, &next, 1) == 1 && !(isLineEnd(next) && next != terminatorByte))
            SetFilePtr(fileHandle, -1, 1);
    }
    if (const int32_t deferred = takeDeferredError(record)) return call.finish(deferred);
    if (status != 0 && status != ZOR_RS232_TIMEOUT) return call.finish(status);
    call.finish(status);
    return sent;
}

int32_t ComToFile(int32_t port, int32_t fileHandle, int32_t count, int32_t terminator) noexcept
{
    PortCall call(port, "QX_ComToFile");
    if (!call) return call.result();
    if (count < 0) return call.finish(ZOR_RS232_INVALID_COUNT);
    ComPort &record = *call.port();
    const unsigned char mask = dataBitMask(record);
    unsigned char block[kBlock];
    size_t inBlock = 0;
    int32_t taken = 0;
    int32_t status = 0;
    bool terminated = false;
    unsigned char terminatorByte = 0;
    auto flush = [&]() {
        if (inBlock == 0) return true;
        const bool written =
            ZOR_WriteFile(fileHandle, block, static_cast<int64_t>(inBlock)) == static_cast<int32_t>(inBlock);
        inBlock = 0;
        if (!written) status = ZOR_RS232_FILE_WRITE_ERROR;
        return written;
    };
    SilenceTimer timer(static_cast<uint32_t>(record.timeoutMs));
    while (count == 0 || taken < count) {
        unsigned char byte = 0;
        uint32_t got = 0;
        if (int32_t error = ReadPending(record, &byte, 1, &got)) {
            status = error;
            break;
        }
        if (got == 0) {
            if (timer.expired()) {
                status = ZOR_RS232_TIMEOUT;
                break;
            }
            record.device->waitReadable(timer.remainingMs());
            continue;
        }
        timer.progress();
        ++taken;
        if (terminator != kNoTerminator && (byte & mask) == (terminator & mask)) {
            terminated = true;
            terminatorByte = static_cast<unsigned char>(byte & mask);
            break;
        }
        block[inBlock++] = byte;
        if (inBlock == kBlock && !flush()) break;
    }
    if (status == 0 || status == ZOR_RS232_TIMEOUT) flush();
    if (status == 0 && terminated && isLineEnd(terminatorByte)) swallowPartner(record, terminatorByte);
    if (status != 0 && status != ZOR_RS232_TIMEOUT) return call.finish(status);
    call.finish(status);
    return taken;
}
