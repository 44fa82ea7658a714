// The predefined pointer information and the hand-over area of a call.
#include "rtcheck/pointer_info.h"

#include <array>
#include <atomic>
#include <cstring>

#include <tollan/debugger.h>

namespace tollan::rtcheck {
namespace {

constexpr int kEntries = ZOR_PREDEFINED_PTRINFO_COUNT;

// Each scalar group has one entry per offset 0 .. size into an object of
// that size: the first groups start at entry 0, the last two at entry 55.
struct ScalarGroup {
    int first;
    int size;
};
constexpr std::array<ScalarGroup, 11> kScalarGroups{{
    {0, 1},
    {2, 1},
    {4, 2},
    {7, 2},
    {10, 4},
    {15, 4},
    {20, 4},
    {25, 8},
    {34, 8},  // 0-42
    {55, 8},
    {64, 8},  // 55-72
}};

// The permitted displacements of every entry; entries outside the scalar
// groups permit none and are marked as not scalar.
struct Displacements {
    std::array<int8_t, kEntries> lowest{};
    std::array<int8_t, kEntries> highest{};
    std::array<bool, kEntries> scalar{};
};

constexpr Displacements makeDisplacements()
{
    Displacements table{};
    for (const ScalarGroup &group : kScalarGroups) {
        for (int offset = 0; offset <= group.size; ++offset) {
            const int entry = group.first + offset;
            table.lowest[entry] = static_cast<int8_t>(-offset);
            table.highest[entry] = static_cast<int8_t>(group.size - offset);
            table.scalar[entry] = true;
        }
    }
    return table;
}

constexpr Displacements kDisplacements = makeDisplacements();
static_assert(kDisplacements.scalar[42] && !kDisplacements.scalar[43] && !kDisplacements.scalar[54] &&
                  kDisplacements.scalar[55] && kDisplacements.scalar[72],
              "the scalar groups cover entries 0-42 and 55-72 exactly");

}  // namespace

PtrInfo predefinedTable[kEntries];

std::atomic<const BlkInfo *> staticFreeBlockRecord{nullptr};

PtrInfo *predefinedEntry(int index) noexcept
{
    return &predefinedTable[index];
}

int predefinedIndex(const void *info) noexcept
{
    const auto value = reinterpret_cast<uintptr_t>(info);
    if (value >= 1 && value <= kEntries) return static_cast<int>(value - 1);
    const auto first = reinterpret_cast<uintptr_t>(&predefinedTable[0]);
    if (value < first || value >= first + sizeof predefinedTable) return -1;
    // An address inside an entry stands for that entry.
    return static_cast<int>((value - first) / sizeof(PtrInfo));
}

PtrInfo *resolvePtrInfo(PtrInfo *info) noexcept
{
    const auto value = reinterpret_cast<uintptr_t>(info);
    return value >= 1 && value <= kEntries ? &predefinedTable[value - 1] : info;
}

bool isImplausibleRecord(const void *record) noexcept
{
    const auto value = reinterpret_cast<uintptr_t>(record);
    return value > kEntries && value < kLowestRecordAddress;
}

bool isScalarEntry(int index) noexcept
{
    return index >= 0 && index < kEntries && kDisplacements.scalar[index];
}

int lowestDisplacement(int index) noexcept
{
    return index >= 0 && index < kEntries ? kDisplacements.lowest[index] : 0;
}

int highestDisplacement(int index) noexcept
{
    return index >= 0 && index < kEntries ? kDisplacements.highest[index] : 0;
}

void setStaticFreeBlock(const BlkInfo *blk) noexcept
{
    staticFreeBlockRecord.store(blk, std::memory_order_release);
}

const void *followJumpStubs(const void *entry) noexcept
{
#if defined(__x86_64__) || defined(_M_X64)
    // Stubs may chain (an import thunk to a PLT entry); a loop of stubs ends
    // after a few hops instead of hanging.
    constexpr int kMostHops = 8;
    const auto *code = static_cast<const unsigned char *>(entry);
    for (int hop = 0; code != nullptr && hop < kMostHops; ++hop) {
        // Code built for control-flow protection begins with an end-branch
        // marker (endbr64), and a PLT entry may carry a bnd prefix.
        constexpr unsigned char kEndBranch[] = {0xF3, 0x0F, 0x1E, 0xFA};
        if (std::memcmp(code, kEndBranch, sizeof kEndBranch) == 0) code += sizeof kEndBranch;
        if (code[0] == 0xF2 && code[1] == 0xFF && code[2] == 0x25) ++code;
        int32_t displacement = 0;
        if (code[0] == 0xE9) {
            std::memcpy(&displacement, code + 1, sizeof displacement);
            code = code + 5 + displacement;
        } else if (code[0] == 0xFF && code[1] == 0x25) {
            // x86-64 addresses the jump's target cell relative to the next instruction.
            std::memcpy(&displacement, code + 2, sizeof displacement);
            const void *target = nullptr;
            std::memcpy(&target, code + 6 + displacement, sizeof target);
            code = static_cast<const unsigned char *>(target);
        } else {
            break;
        }
    }
    return code;
#else
    return entry;
#endif
}

ParameterArea *parameterArea() noexcept
{
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    if (record == nullptr) return nullptr;
    // The environment's bytes are the storage of the area that compiled code fills.
    return reinterpret_cast<ParameterArea *>(record->checkingEnvironment + kParameterAreaOffset);
}

const ParameterSlot *callerSlot(int32_t argpos, const void *frame) noexcept
{
    return callerSlot(parameterArea(), argpos, frame);
}

const ParameterSlot *callerSlot(const ParameterArea *area, int32_t argpos, const void *frame) noexcept
{
    if (area == nullptr || argpos < 1 || argpos > area->slotCount || argpos > kParameterSlots) return nullptr;
    if (area->callee == nullptr || followJumpStubs(area->callee) != followJumpStubs(frame)) return nullptr;
    const ParameterSlot &slot = area->slots[argpos - 1];
    return slot.info != nullptr ? &slot : nullptr;
}

}  // namespace tollan::rtcheck
