#include "progress.h"

#include <cstdarg>

namespace tollan::xmodem_tool {
namespace {

constexpr std::chrono::milliseconds kRedrawEvery{100};

}  // namespace

void ProgressLine::waiting(const char *text)
{
    if (shown_) put("%s", text);
}

void ProgressLine::update(int32_t packets, int64_t bytes, int32_t retries)
{
    const Clock::time_point now = Clock::now();
    if (packets_ == 0) {
        first_ = now;
        firstBytes_ = bytes;
    }
    packets_ = packets;
    bytes_ = bytes;
    retries_ = retries;
    if (shown_ && (!everDrawn_ || now - drawn_ >= kRedrawEvery)) {
        drawn_ = now;
        draw();
    }
}

void ProgressLine::finish()
{
    if (!everDrawn_) return;
    if (packets_ > 0) draw();
    std::fputc('\n', terminal_);
    std::fflush(terminal_);
}

void ProgressLine::draw()
{
    char rate[32] = "-";
    const double seconds = std::chrono::duration<double>(Clock::now() - first_).count();
    if (packets_ > 1 && seconds > 0.0) {
        const double perSecond = static_cast<double>(bytes_ - firstBytes_) / seconds;
        if (perSecond < 1024.0)
            std::snprintf(rate, sizeof rate, "%.0f bytes/s", perSecond);
        else
            std::snprintf(rate, sizeof rate, "%.1f KiB/s", perSecond / 1024.0);
    }
    put("%d %s, %lld bytes, %s, %d %s", packets_, packets_ == 1 ? "packet" : "packets",
        static_cast<long long>(bytes_), rate, retries_, retries_ == 1 ? "retry" : "retries");
}

// Writes the line over the one before, blanking what that one had more.
void ProgressLine::put(const char *format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::fputc('\r', terminal_);
    const int width = std::vfprintf(terminal_, format, arguments);
    va_end(arguments);
    if (width < width_) std::fprintf(terminal_, "%*s", width_ - width, "");
    if (width > width_) width_ = width;
    everDrawn_ = true;
    std::fflush(terminal_);
}

}  // namespace tollan::xmodem_tool
