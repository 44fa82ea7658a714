// printToBuffer: the engine into a caller's buffer, vsnprintf's contract.
#include <cstring>

#include "services/printf_engine.h"

namespace tollan::services {
namespace {

// Copies what fits (keeping a byte for the terminator) and drops the rest;
// the engine goes on counting.
class BufferSink final : public TextSink {
public:
    BufferSink(char *buffer, size_t size) noexcept : next_(buffer), room_(size > 0 ? size - 1 : 0) {}

    bool put(const char *text, size_t length) noexcept override
    {
        const size_t taken = length < room_ ? length : room_;
        if (taken > 0) {
            std::memcpy(next_, text, taken);
            next_ += taken;
            room_ -= taken;
        }
        return true;
    }

    char *end() const noexcept { return next_; }

private:
    char *next_;
    size_t room_;
};

}  // namespace

int printToBuffer(char *buffer, size_t size, const char *format, va_list arguments) noexcept
{
    BufferSink sink(buffer, size);
    const int length = printFormatted(sink, format, arguments);
    if (size > 0) *sink.end() = '\0';
    return length;
}

}  // namespace tollan::services
