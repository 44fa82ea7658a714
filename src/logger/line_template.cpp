#include "logger/line_template.h"

#include <cstring>
#include <cstdlib>

#include "logger/levels.h"
#include "platform/thread.h"

namespace tollan::logger {

namespace {

// Indexed by LineTemplate::Field.
constexpr const char *kFieldNames[] = {"[TIME]",  "[FILE]",   "[LINE]", "[FUNC]",
                                       "[LEVEL]", "[THREAD]", "[MSG]"};

}  // namespace

LineTemplate::~LineTemplate()
{
    if (!pinned_) std::free(owned_);
}

bool LineTemplate::assign(const char *text) noexcept
{
    if (!text) return false;
    const size_t length = std::strlen(text);
    auto *copy = static_cast<char *>(std::malloc(length + 1));
    if (copy == nullptr) return false;
    std::memcpy(copy, text, length + 1);
    if (!pinned_) std::free(owned_);
    owned_ = copy;
    pinned_ = false;
    text_ = owned_;
    locateFields();
    return true;
}

void LineTemplate::locateFields() noexcept
{
    struct Found {
        size_t at;
        Field field;
    };
    Found found[static_cast<size_t>(Field::count)];
    size_t foundCount = 0;
    for (size_t i = 0; i < static_cast<size_t>(Field::count); ++i) {
        // Field names start with '[' and hold no other bracket, so two of
        // them never overlap.
        const char *at = std::strstr(text_, kFieldNames[i]);
        if (!at) continue;
        // Kept in text order by insertion: there are only a handful.
        size_t slot = foundCount++;
        for (; slot > 0 && found[slot - 1].at > static_cast<size_t>(at - text_); --slot)
            found[slot] = found[slot - 1];
        found[slot] = {static_cast<size_t>(at - text_), static_cast<Field>(i)};
    }

    size_t literalStart = 0;
    pieceCount_ = 0;
    for (size_t i = 0; i < foundCount; ++i) {
        pieces_[pieceCount_++] = {literalStart, found[i].at - literalStart, found[i].field};
        literalStart = found[i].at + std::strlen(kFieldNames[static_cast<size_t>(found[i].field)]);
    }
    pieces_[pieceCount_++] = {literalStart, std::strlen(text_) - literalStart, Field::count};
}

void LineTemplate::appendField(Field field, const LineFields &fields, TimeStamp &time,
                               LineBuffer &out) noexcept
{
    switch (field) {
        case Field::time:
            time.append(out);
            break;
        case Field::file:
            out.append(fields.file);
            break;
        case Field::line:
            out.appendDecimal(fields.line);
            break;
        case Field::function:
            out.append(fields.function);
            break;
        case Field::level:
            out.append(levelName(fields.level));
            break;
        // Signed, as "%d" prints it.
        case Field::thread:
            out.appendDecimal(static_cast<int32_t>(platform::currentThreadId()));
            break;
        case Field::message:
            out.append(fields.message, fields.messageLength);
            break;
        case Field::count:
            break;
    }
}

void LineTemplate::expand(const LineFields &fields, TimeStamp &time, LineBuffer &out) const noexcept
{
    for (size_t i = 0; i < pieceCount_; ++i) {
        out.append(text_ + pieces_[i].literalStart, pieces_[i].literalLength);
        appendField(pieces_[i].field, fields, time, out);
    }
}

}  // namespace tollan::logger
