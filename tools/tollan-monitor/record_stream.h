// The records of one connection from the program (see
// platform/posix/monitor_channel.h): a kind byte, a 32-bit little-endian
// length and the payload. Bytes come in as the connection delivers them and
// whole records go out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tollan::monitor {

struct Record {
    char kind = 0;
    std::string payload;
};

class RecordStream {
public:
    // The longest payload accepted; a longer one is a broken connection.
    static constexpr uint32_t kMaxPayload = 16u << 20;

    void append(const char *bytes, size_t count) { buffer_.append(bytes, count); }
    // Takes the next whole record out; false when none is complete yet.
    bool next(Record *record);
    // A record announced a payload longer than kMaxPayload.
    bool broken() const noexcept { return broken_; }
    // Bytes of an unfinished record are waiting.
    bool pending() const noexcept { return !buffer_.empty(); }

private:
    std::string buffer_;
    bool broken_ = false;
};

}  // namespace tollan::monitor
