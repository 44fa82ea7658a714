#include "record_stream.h"

namespace tollan::monitor {

bool RecordStream::next(Record *record)
{
    constexpr size_t kHeader = 5;
    if (broken_ || buffer_.size() < kHeader) return false;
    uint32_t length = 0;
    for (int i = 4; i >= 1; --i)
        length = length << 8 | static_cast<unsigned char>(buffer_[static_cast<size_t>(i)]);
    if (length > kMaxPayload) {
        broken_ = true;
        return false;
    }
    if (buffer_.size() < kHeader + length) return false;
    record->kind = buffer_[0];
    record->payload.assign(buffer_, kHeader, length);
    buffer_.erase(0, kHeader + length);
    return true;
}

}  // namespace tollan::monitor
