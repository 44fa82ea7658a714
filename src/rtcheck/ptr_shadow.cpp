// Whole shadows: their set-up for a new object, copies and assignments from
// one object to another, their comparison, and marking every pointer of an
// object as unchecked or invalid.
#include <cstdint>
#include <cstring>

#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/pointer_info.h"
#include "rtcheck/ptr_checks.h"
#include "rtcheck/ptr_shadow.h"

namespace tollan::rtcheck {
namespace {

// Whether the program may write the shadow at info: not a table entry (an
// assertion says so) and not a refused value.
bool writableShadow(PtrInfo *info, const char *function) noexcept
{
    if (classifyInfo(info).entry < 0) return true;
    const auto value = reinterpret_cast<uintptr_t>(info);
    if (value != 0 && (value <= ZOR_PREDEFINED_PTRINFO_COUNT || value >= kLowestRecordAddress))
        logger::reportAssertion("!IsPredefinedPtrInfo(info)", kPointerModule, function, __LINE__,
                                "Predefined PtrInfo should never change");
    return false;
}

// The entry that stands for every pointer of an object whose shadow is a
// table entry: an assignment stores 48 for 49 and 50.
uint64_t assignedEntry(int entry) noexcept
{
    if (entry >= kFirstReplacedEntry && entry <= kLastReplacedEntry) entry = kUncheckedEntry;
    return word(&predefinedTable[entry]);
}

// New objects: pointers uninitialised, headers the block information of
// their part of the object (unchecked when the object has no block).
struct Initializer {
    void *shadow;
    const BlkInfo *blk;
    bool record(ShadowPlace at, uint64_t) noexcept
    {
        *recordAt(shadow, at.shadow) = {word(&predefinedTable[kUninitializedEntry]), 0, 0};
        return true;
    }
    void header(ShadowPlace at, uint64_t bytes) noexcept
    {
        BlkInfo part{at.data, bytes | ZOR_BLK_UNCHECKED};
        if (isRealBlock(blk)) part = {blk->base + at.data, bytes | (blk->size & ZOR_BLK_UNCHECKED)};
        std::memcpy(recordAt(shadow, at.shadow), &part, sizeof part);
    }
};

// Copies the pointer records (never the headers, which describe the
// destination's own storage) of the first `bytes` bytes of an object; a
// pointer only partly copied becomes invalid. An assignment replaces 49 and
// 50 by 48.
struct Copier {
    void *dest;
    const PtrInfo *src;  // null: every pointer gets `entry`
    uint64_t entry;
    uint64_t bytes;
    bool assigning;
    bool record(ShadowPlace at, uint64_t pointerSize) noexcept
    {
        if (at.data >= bytes) return true;
        PtrInfo &to = *recordAt(dest, at.shadow);
        if (at.data + pointerSize > bytes) {
            to = {word(invalidInfo()), 0, to.value};
            return true;
        }
        if (src == nullptr) {
            to = {entry, 0, 0};
            return true;
        }
        to = *recordAt(const_cast<PtrInfo *>(src), at.shadow);
        if (assigning) {
            const int index = infoOf(to).entry;
            if (index >= 0) to.info = assignedEntry(index);
        }
        return true;
    }
    void header(ShadowPlace, uint64_t) noexcept {}
};

void copyShadow(const Tynode *type, PtrInfo *dest, const PtrInfo *src, uint64_t bytes, bool assigning,
                const char *function) noexcept
{
    if (!writableShadow(dest, function)) return;
    const ResolvedInfo from = classifyInfo(const_cast<PtrInfo *>(src));
    Copier copier{dest, from.entry < 0 ? src : nullptr, 0, bytes, assigning};
    if (from.entry >= 0) copier.entry = assigning ? assignedEntry(from.entry) : word(from.record);
    walkShadow(type, copier);
}

// Sets the information word of every pointer, keeping the value it describes.
struct Marker {
    void *shadow;
    uint64_t entry;
    bool record(ShadowPlace at, uint64_t) noexcept
    {
        PtrInfo &record = *recordAt(shadow, at.shadow);
        record = {entry, 0, record.value};
        return true;
    }
    void header(ShadowPlace, uint64_t) noexcept {}
};

void markShadow(const Tynode *type, PtrInfo *info, int entry, const char *function) noexcept
{
    if (!writableShadow(info, function)) return;
    Marker marker{info, word(&predefinedTable[entry])};
    walkShadow(type, marker);
}

struct Comparer {
    const PtrInfo *a;
    const PtrInfo *b;
    bool record(ShadowPlace at, uint64_t) noexcept
    {
        return std::memcmp(recordAt(const_cast<PtrInfo *>(a), at.shadow),
                           recordAt(const_cast<PtrInfo *>(b), at.shadow), sizeof(PtrInfo)) == 0;
    }
    void header(ShadowPlace, uint64_t) noexcept {}
};

}  // namespace
}  // namespace tollan::rtcheck

using namespace tollan::rtcheck;

extern "C" {

void _InitPtrInfo(void *, const Tynode *type, PtrInfo *info, const BlkInfo *blk) noexcept
{
    if (!writableShadow(info, "_InitPtrInfo")) return;
    Initializer initializer{info, blk};
    walkShadow(type, initializer);
}

void _InitBlkInfo(void *, const Tynode *type, const void *addr, BlkInfo *blk) noexcept
{
    if (!isRealBlock(blk)) return;
    const Tynode *plain = plainType(type);
    const uint64_t size = plain != nullptr ? plain->size : 0;
    // Without a usable size the bounds cannot be known: the block is not checked.
    const bool known = size != 0 && (size & ZOR_BLK_UNCHECKED) == 0;
    *blk = {word(addr), known ? size : ZOR_BLK_UNCHECKED};
}

void _CopyPtrInfo(void *, const Tynode *type, PtrInfo *dest, const PtrInfo *src) noexcept
{
    copyShadow(type, dest, src, UINT64_MAX, false, "_CopyPtrInfo");
}

void _PtrAssignStruct(void *, const Tynode *type, PtrInfo *dest, const PtrInfo *src) noexcept
{
    copyShadow(type, dest, src, UINT64_MAX, true, "_PtrAssignStruct");
}

void _StructIncompleteAssign(void *, const Tynode *type, PtrInfo *dest, const PtrInfo *src,
                             uint64_t bytes) noexcept
{
    copyShadow(type, dest, src, bytes, true, "_StructIncompleteAssign");
}

int _ComparePtrInfo(void *, const Tynode *type, const PtrInfo *a, const PtrInfo *b) noexcept
{
    if (a == b) return 1;
    if (classifyInfo(const_cast<PtrInfo *>(a)).entry >= 0 ||
        classifyInfo(const_cast<PtrInfo *>(b)).entry >= 0)
        return 0;
    Comparer comparer{a, b};
    return walkShadow(type, comparer) ? 1 : 0;
}

void _PtrIgnoreStruct(void *, const Tynode *type, PtrInfo *info) noexcept
{
    markShadow(type, info, kUncheckedEntry, "_PtrIgnoreStruct");
}

void _PtrInvalidStruct(void *, const Tynode *type, PtrInfo *info) noexcept
{
    markShadow(type, info, kInvalidEntry, "_PtrInvalidStruct");
}

}  // extern "C"
