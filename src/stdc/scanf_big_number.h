// Unsigned integers of a fixed capacity, for the exact floating-point
// reader: as much arithmetic as dividing a number's digits by a power of
// ten to 70-odd bits takes, and no more.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace tollan::stdc {

// Holds values below 2^(32 * kLimbs). The caller keeps every result within
// that (bits past it are lost).
template <size_t kLimbs>
class BigNumber {
public:
    explicit BigNumber(uint32_t value = 0) noexcept
    {
        limbs_[0] = value;
        used_ = value != 0 ? 1 : 0;
    }

    bool isZero() const noexcept { return used_ == 0; }

    size_t bitLength() const noexcept
    {
        return used_ == 0 ? 0 : 32 * (used_ - 1) + static_cast<size_t>(std::bit_width(limbs_[used_ - 1]));
    }

    bool bit(size_t index) const noexcept
    {
        return index / 32 < used_ && (limbs_[index / 32] >> (index % 32) & 1) != 0;
    }

    // Whether any bit below `index` is set.
    bool anyBitBelow(size_t index) const noexcept
    {
        for (size_t limb = 0; limb < used_ && limb < index / 32; ++limb)
            if (limbs_[limb] != 0) return true;
        if (index / 32 >= used_ || index % 32 == 0) return false;
        return (limbs_[index / 32] & ((uint32_t{1} << (index % 32)) - 1)) != 0;
    }

    // The 64 bits from `index` up.
    uint64_t bitsAt(size_t index) const noexcept
    {
        uint64_t bits = 0;
        for (size_t i = 0; i < 64; ++i)
            if (bit(index + i)) bits |= uint64_t{1} << i;
        return bits;
    }

    void setBit(size_t index) noexcept
    {
        if (index / 32 >= kLimbs) return;
        limbs_[index / 32] |= uint32_t{1} << (index % 32);
        if (index / 32 >= used_) used_ = index / 32 + 1;
    }

    // *this = *this * factor + addend.
    void multiplyAdd(uint32_t factor, uint32_t addend) noexcept
    {
        uint64_t carry = addend;
        for (size_t limb = 0; limb < used_; ++limb) {
            carry += uint64_t{limbs_[limb]} * factor;
            limbs_[limb] = static_cast<uint32_t>(carry);
            carry >>= 32;
        }
        if (carry != 0 && used_ < kLimbs) limbs_[used_++] = static_cast<uint32_t>(carry);
        trim();
    }

    void multiplyByPowerOfTen(uint64_t exponent) noexcept
    {
        for (; exponent >= 9; exponent -= 9) multiplyAdd(1000000000, 0);
        uint32_t rest = 1;
        for (; exponent > 0; --exponent) rest *= 10;
        multiplyAdd(rest, 0);
    }

    void shiftLeft(size_t bits) noexcept
    {
        const size_t limbShift = bits / 32;
        const unsigned bitShift = bits % 32;
        if (used_ == 0) return;
        const size_t used = std::min(used_ + limbShift + 1, kLimbs);
        // Downwards, so that every limb is read before it is overwritten.
        for (size_t limb = used; limb-- > 0;) {
            uint32_t value = 0;
            if (limb >= limbShift) {
                const size_t from = limb - limbShift;
                if (from < used_) value = limbs_[from] << bitShift;
                if (bitShift != 0 && from >= 1 && from - 1 < used_)
                    value |= limbs_[from - 1] >> (32 - bitShift);
            }
            limbs_[limb] = value;
        }
        used_ = used;
        trim();
    }

    void shiftRightByOne() noexcept
    {
        for (size_t limb = 0; limb < used_; ++limb)
            limbs_[limb] = limbs_[limb] >> 1 | (limb + 1 < used_ ? limbs_[limb + 1] << 31 : 0);
        trim();
    }

    int compare(const BigNumber &other) const noexcept
    {
        if (used_ != other.used_) return used_ < other.used_ ? -1 : 1;
        for (size_t limb = used_; limb-- > 0;)
            if (limbs_[limb] != other.limbs_[limb]) return limbs_[limb] < other.limbs_[limb] ? -1 : 1;
        return 0;
    }

    // *this -= other, where other <= *this.
    void subtract(const BigNumber &other) noexcept
    {
        uint64_t borrow = 0;
        for (size_t limb = 0; limb < used_; ++limb) {
            const uint64_t taken = (limb < other.used_ ? other.limbs_[limb] : 0) + borrow;
            borrow = limbs_[limb] < taken ? 1 : 0;
            limbs_[limb] = static_cast<uint32_t>(limbs_[limb] - taken);
        }
        trim();
    }

private:
    // Keeps the invariant that limbs from used_ up are 0 and limbs_[used_ - 1] is not.
    void trim() noexcept
    {
        while (used_ > 0 && limbs_[used_ - 1] == 0) --used_;
    }

    uint32_t limbs_[kLimbs] = {};
    size_t used_ = 0;
};

}  // namespace tollan::stdc
