#include "logger/output.h"

#include <algorithm>

#include <tollan/logger.h>

#include "platform/debugger.h"

namespace tollan::logger {

namespace {

constexpr size_t kEchoLimit = 4095;

void writeStream(std::FILE *stream, const char *text, size_t length, bool endLine) noexcept
{
    std::fwrite(text, 1, length, stream);
    if (endLine) std::fflush(stream);
}

}  // namespace

bool Output::select(uint32_t location, int32_t fileFormat, const char *fileName) noexcept
{
    if (location > ZOR_LOG_LOCATION_FILE) return false;
    if (location == ZOR_LOG_LOCATION_STDERR && std::ferror(standardError_)) return false;
    if (location == ZOR_LOG_LOCATION_FILE) {
        if (!fileName) return false;
        // Opened before the old file is closed, so that a failure loses nothing.
        platform::FileOpenRequest request;
        request.write = true;
        request.create = true;
        request.truncate = fileFormat == 0;
        platform::NativeFile file = platform::kNoFile;
        if (platform::openFile(fileName, request, &file) != platform::FileError::none) return false;
        int64_t end = 0;
        if (!request.truncate) platform::seekFile(file, 0, platform::SeekOrigin::end, &end);
        closeFile();
        file_ = file;
    } else {
        closeFile();
    }
    location_ = location;
    return true;
}

void Output::closeFile() noexcept
{
    if (file_ == platform::kNoFile) return;
    platform::closeFile(file_);  // a failure to close cannot be reported to anyone
    file_ = platform::kNoFile;
}

void Output::write(const char *text, size_t length, bool endLine) noexcept
{
    switch (location_) {
        case ZOR_LOG_LOCATION_STDOUT:
            // A standard output that failed once stays silent.
            if (!std::ferror(standardOutput_)) writeStream(standardOutput_, text, length, endLine);
            break;
        case ZOR_LOG_LOCATION_STDERR:
            writeStream(standardError_, text, length, endLine);
            break;
        case ZOR_LOG_LOCATION_DEBUG_OUTPUT:
            platform::debugOutput(text);
            break;
        case ZOR_LOG_LOCATION_FILE:
            if (file_ != platform::kNoFile) platform::writeFile(file_, text, static_cast<uint32_t>(length));
            break;
        default:
            break;
    }
}

void Output::echo(const char *text, size_t length) noexcept
{
    std::fwrite(text, 1, std::min(length, kEchoLimit), standardOutput_);
    std::fputc('\n', standardOutput_);
    std::fflush(standardOutput_);
}

}  // namespace tollan::logger
