// The predefined entry of a pointer into a scalar object, and the block that
// stands for freed static storage.
#include <array>
#include <cstdint>

#include <tollan/rtcheck.h>

#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"

namespace tollan::rtcheck {
namespace {

// The first entry of the scalar group for objects of a kind and size. A kind
// with two groups of a size (char and unsigned char, short and unsigned
// short, double and long double) takes the second for the library's own
// node of the second type, which compiled code may use directly.
struct BasicGroup {
    int32_t op;
    uint64_t size;
    int first;
};
constexpr std::array<BasicGroup, 11> kBasicGroups{{
    {LCC_CHAR, 1, 0},
    {LCC_SHORT, 2, 4},
    {LCC_INT, 4, 10},
    {LCC_ENUM, 4, 10},
    {LCC_UNSIGNED, 4, 15},
    {LCC_FLOAT, 4, 20},
    {LCC_INT, 8, 25},
    {LCC_LONGLONG, 8, 25},
    {LCC_UNSIGNED, 8, 34},
    {LCC_ULONGLONG, 8, 34},
    {LCC_DOUBLE, 8, 55},
}};

int secondGroup(const Tynode *type) noexcept
{
    if (type == unsignedchar) return 2;
    if (type == unsignedshort) return 7;
    if (type == longdouble) return 64;
    return -1;
}

int firstEntry(const Tynode *type) noexcept
{
    if (const int second = secondGroup(type); second >= 0) return second;
    for (const BasicGroup &group : kBasicGroups) {
        if (group.op == type->op && group.size == type->size) return group.first;
    }
    return -1;
}

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" {

PtrInfo *_UPLookupBasicPtrInfo(const Tynode *type, uint64_t offset) noexcept
{
    const Tynode *plain = plainType(type);
    const int first = plain != nullptr ? firstEntry(plain) : -1;
    if (first < 0 || offset > plain->size) return uncheckedInfo();
    return &predefinedTable[first + static_cast<int>(offset)];
}

void _PtrSetStaticFreeBlkInfo(const BlkInfo *blk) noexcept
{
    setStaticFreeBlock(isRealBlock(blk) ? blk : nullptr);
}

}  // extern "C"
