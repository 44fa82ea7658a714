#include "stdc/scanf_input.h"

namespace tollan::stdc {

int ScanInput::next() noexcept
{
    if (ended_) return -1;
    const int byte = source_.next();
    if (byte < 0) {
        ended_ = true;
        return -1;
    }
    ++consumed_;
    return byte;
}

void ScanInput::giveBack(int byte) noexcept
{
    source_.giveBack(byte);
    --consumed_;
}

bool ScanInput::skipWhiteSpace() noexcept
{
    int byte = next();
    while (isScanSpace(byte)) byte = next();
    if (byte < 0) return false;
    giveBack(byte);
    return true;
}

int ScanField::next() noexcept
{
    if (left_ == 0) return -1;
    const int byte = input_.next();
    if (byte < 0) return -1;
    --left_;
    ++taken_;
    return byte;
}

void ScanField::giveBack(int byte) noexcept
{
    input_.giveBack(byte);
    ++left_;
    --taken_;
}

ScanOutcome ScanField::failure() const noexcept
{
    return taken_ == 0 && input_.ended() ? ScanOutcome::inputFailure : ScanOutcome::matchingFailure;
}

}  // namespace tollan::stdc
