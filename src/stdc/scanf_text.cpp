#include "stdc/scanf_text.h"

#include <optional>

#include "stdc/scanf_arguments.h"
#include "stdc/scanf_scanset.h"
#include "stdc/scanf_utf8.h"

namespace tollan::stdc {
namespace {

// Where a text conversion stores: the argument's bytes or wide characters,
// or nowhere for a suppressed one.
class TextDestination {
public:
    TextDestination(const ScanConversion &conversion, ScanArguments &arguments) noexcept
    {
        if (conversion.suppress) return;
        if (conversion.size == ScanSize::l)
            wide_ = arguments.next<wchar_t>();
        else
            narrow_ = arguments.next<char>();
    }
    void putByte(int byte) noexcept
    {
        if (narrow_ != nullptr) *narrow_++ = static_cast<char>(byte);
    }
    void putCharacter(char32_t character) noexcept
    {
        if (wide_ != nullptr) putWide(character, &wide_);
    }
    void terminate() noexcept
    {
        if (narrow_ != nullptr) *narrow_ = '\0';
        if (wide_ != nullptr) *wide_ = L'\0';
    }

private:
    char *narrow_ = nullptr;
    wchar_t *wide_ = nullptr;
};

// Which bytes and characters a run (%s or %[) takes.
class RunMembers {
public:
    explicit RunMembers(const ScanConversion &conversion) noexcept
    {
        if (conversion.type == '[') set_.emplace(conversion);
    }

    enum class Verdict { member, outsider, undecided };
    // The verdict on a byte of %s or %[, or on the first byte of a
    // character of %ls or %l[: undecided when only some of the characters
    // that start with it are members. A byte that starts no UTF-8 character
    // is let in, for the reading to report it.
    Verdict byFirstByte(int byte, bool wide) const noexcept
    {
        const bool single = !wide || byte < 0x80;
        if (!set_) return single && isScanSpace(byte) ? Verdict::outsider : Verdict::member;
        if (single) return set_->contains(static_cast<char32_t>(byte)) ? Verdict::member : Verdict::outsider;
        const auto lead = static_cast<unsigned char>(byte);
        if (utf8SequenceLength(lead) == 0) return Verdict::member;
        const CodePointSpan span = codePointsStartingWith(lead);
        switch (set_->share(span.first, span.last)) {
            case ScanSet::Share::all:
                return Verdict::member;
            case ScanSet::Share::none:
                return Verdict::outsider;
            case ScanSet::Share::some:
                break;
        }
        return Verdict::undecided;
    }
    // For an undecided verdict: whether the whole character is a member.
    bool contains(char32_t character) const noexcept { return set_->contains(character); }

private:
    std::optional<ScanSet> set_;  // none for %s, whose members are all but white space
};

}  // namespace

ScanOutcome scanCharacters(ScanInput &input, const ScanConversion &conversion,
                           ScanArguments &arguments) noexcept
{
    const bool wide = conversion.size == ScanSize::l;
    // Without a width, one byte or one character (of up to 4 bytes).
    const bool oneCharacter = wide && conversion.width == kNoWidth;
    ScanField field(input, conversion.width != kNoWidth ? conversion.width : oneCharacter ? 4 : 1);
    TextDestination destination(conversion, arguments);
    while (field.left() > 0) {
        const int byte = field.next();
        if (byte < 0) return field.failure();
        if (!wide) {
            destination.putByte(byte);
            continue;
        }
        char32_t character = 0;
        // A character cut by the width cannot make the exact count.
        if (finishUtf8(field, byte, &character) != Utf8Result::character) return ScanOutcome::matchingFailure;
        destination.putCharacter(character);
        if (oneCharacter) break;
    }
    return ScanOutcome::done;
}

ScanOutcome scanRun(ScanInput &input, const ScanConversion &conversion, ScanArguments &arguments) noexcept
{
    if (conversion.type == 's' && !input.skipWhiteSpace()) return ScanOutcome::inputFailure;
    ScanField field(input, conversion.width);
    const RunMembers members(conversion);
    const bool wide = conversion.size == ScanSize::l;
    TextDestination destination(conversion, arguments);
    bool anyTaken = false;
    for (int byte = field.next(); byte >= 0; byte = field.next()) {
        const RunMembers::Verdict verdict = members.byFirstByte(byte, wide);
        if (verdict == RunMembers::Verdict::outsider) {
            field.giveBack(byte);
            break;
        }
        if (!wide) {
            destination.putByte(byte);
            anyTaken = true;
            continue;
        }
        char32_t character = 0;
        const Utf8Result read = finishUtf8(field, byte, &character);
        if (read == Utf8Result::tooLong) break;
        if (read == Utf8Result::invalid) return ScanOutcome::matchingFailure;
        // Read whole to be tested, an outsider cannot be given back.
        if (verdict == RunMembers::Verdict::undecided && !members.contains(character))
            return ScanOutcome::matchingFailure;
        destination.putCharacter(character);
        anyTaken = true;
    }
    if (!anyTaken) return field.failure();
    destination.terminate();
    return ScanOutcome::done;
}

}  // namespace tollan::stdc
