// The printf and scanf families over the library's streams and strings.
#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

#include <tollan/ansi_c.h>

#include "services/printf_engine.h"
#include "stdc/scanf_engine.h"
#include "stdc/stream.h"
#include "stdc/stream_buffer.h"

using namespace tollan::stdc;

namespace {

// Text for a stream, gathered in a block of its own and handed over in
// large pieces: an unbuffered stream then gets each printf in one write.
class StreamSink final : public tollan::services::TextSink {
public:
    explicit StreamSink(Stream &stream) noexcept : stream_(stream) {}

    bool put(const char *text, size_t length) noexcept override
    {
        if (length > sizeof staged_ - used_ && !drain()) return false;
        if (length >= sizeof staged_) return writeBytes(stream_, text, length) == length;
        std::memcpy(staged_ + used_, text, length);
        used_ += length;
        return true;
    }

    bool drain() noexcept
    {
        const size_t count = used_;
        used_ = 0;
        return count == 0 || writeBytes(stream_, staged_, count) == count;
    }

private:
    Stream &stream_;
    size_t used_ = 0;
    char staged_[512];
};

// sprintf's destination: as much room as the text needs.
class UnboundedSink final : public tollan::services::TextSink {
public:
    explicit UnboundedSink(char *buffer) noexcept : next_(buffer) {}
    bool put(const char *text, size_t length) noexcept override
    {
        std::memcpy(next_, text, length);
        next_ += length;
        return true;
    }
    void terminate() noexcept { *next_ = '\0'; }

private:
    char *next_;
};

class StreamSource final : public TextSource {
public:
    explicit StreamSource(Stream &stream) noexcept : stream_(stream) {}
    int next() noexcept override
    {
        fromStack_ = stream_.pushedCount > 0;
        return getByte(stream_);
    }
    void giveBack(int byte) noexcept override
    {
        if (fromStack_)
            pushBack(stream_, static_cast<unsigned char>(byte));
        else
            --stream_.position;
    }

private:
    Stream &stream_;
    bool fromStack_ = false;
};

class StringSource final : public TextSource {
public:
    explicit StringSource(const char *text) noexcept : next_(text) {}
    int next() noexcept override
    {
        if (*next_ == '\0') return -1;
        return static_cast<unsigned char>(*next_++);
    }
    void giveBack(int) noexcept override { --next_; }

private:
    const char *next_;
};

bool refuseNull(const void *pointer) noexcept
{
    if (pointer != nullptr) return false;
    setErrno(EINVAL);
    return true;
}

}  // namespace

int tollan_vfprintf(TollanFILE *candidate, const char *format, va_list arguments) noexcept
{
    StreamAccess stream(candidate);
    if (!stream || refuseNull(format)) return -1;
    StreamSink sink(*stream);
    const int length = tollan::services::printFormatted(sink, format, arguments);
    if (!sink.drain()) return -1;
    return length;
}

int tollan_fprintf(TollanFILE *stream, const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int length = tollan_vfprintf(stream, format, arguments);
    va_end(arguments);
    return length;
}

int tollan_vprintf(const char *format, va_list arguments) noexcept
{
    return tollan_vfprintf(tollan_stdout, format, arguments);
}

int tollan_printf(const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int length = tollan_vfprintf(tollan_stdout, format, arguments);
    va_end(arguments);
    return length;
}

int tollan_vsnprintf(char *buffer, size_t size, const char *format, va_list arguments) noexcept
{
    if (refuseNull(format) || (size > 0 && refuseNull(buffer))) return -1;
    return tollan::services::printToBuffer(buffer, size, format, arguments);
}

int tollan_snprintf(char *buffer, size_t size, const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int length = tollan_vsnprintf(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}

int tollan_vsprintf(char *buffer, const char *format, va_list arguments) noexcept
{
    if (refuseNull(format) || refuseNull(buffer)) return -1;
    UnboundedSink sink(buffer);
    const int length = tollan::services::printFormatted(sink, format, arguments);
    sink.terminate();
    return length;
}

int tollan_sprintf(char *buffer, const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int length = tollan_vsprintf(buffer, format, arguments);
    va_end(arguments);
    return length;
}

int tollan_vfscanf(TollanFILE *candidate, const char *format, va_list arguments) noexcept
{
    StreamAccess stream(candidate);
    if (!stream || refuseNull(format)) return TOLLAN_EOF;
    StreamSource source(*stream);
    return scanFormatted(source, format, arguments);
}

int tollan_fscanf(TollanFILE *stream, const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int items = tollan_vfscanf(stream, format, arguments);
    va_end(arguments);
    return items;
}

int tollan_vscanf(const char *format, va_list arguments) noexcept
{
    return tollan_vfscanf(tollan_stdin, format, arguments);
}

int tollan_scanf(const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int items = tollan_vfscanf(tollan_stdin, format, arguments);
    va_end(arguments);
    return items;
}

int tollan_vsscanf(const char *text, const char *format, va_list arguments) noexcept
{
    if (refuseNull(text) || refuseNull(format)) return TOLLAN_EOF;
    StringSource source(text);
    return scanFormatted(source, format, arguments);
}

int tollan_sscanf(const char *text, const char *format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int items = tollan_vsscanf(text, format, arguments);
    va_end(arguments);
    return items;
}

void tollan_perror(const char *text) noexcept
{
    const int error = *tollan_errno();
    if (text != nullptr && text[0] != '\0')
        tollan_fprintf(tollan_stderr, "%s: %s\n", text, std::strerror(error));
    else
        tollan_fprintf(tollan_stderr, "%s\n", std::strerror(error));
    *tollan_errno() = error;
}
