// The interned-string table: 32,768 hash chains over character pools that
// are never freed, so a returned pointer stays valid for the process.
#include "rtcheck/strings.h"

#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "logger/log.h"
#include "platform/lock.h"
#include "rtcheck/log_module.h"
#include "services/memory.h"

namespace tollan::rtcheck {
namespace {

constexpr size_t kBucketCount = 32768;
constexpr uint32_t kBucketMask = kBucketCount - 1;
constexpr size_t kPoolReserve = 8192;

// 256 fixed pseudo-random words (splitmix64 from a fixed seed): each byte
// value scatters over the bucket bits.
constexpr std::array<uint32_t, 256> makeScatterTable() noexcept
{
    std::array<uint32_t, 256> table{};
    uint64_t state = 0x5DEECE66DULL;
    for (uint32_t &word : table) {
        state += 0x9E3779B97F4A7C15ULL;
        uint64_t z = state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        word = static_cast<uint32_t>(z ^ (z >> 31));
    }
    return table;
}
constexpr std::array<uint32_t, 256> kScatter = makeScatterTable();

// "0" to "99" without hashing: one-digit texts at 0-9, two-digit at 10-99.
constexpr std::array<std::array<char, 3>, 100> makeNumberTexts() noexcept
{
    std::array<std::array<char, 3>, 100> texts{};
    for (int n = 0; n < 100; ++n) {
        if (n < 10) {
            texts[n] = {static_cast<char>('0' + n), '\0', '\0'};
        } else {
            texts[n] = {static_cast<char>('0' + n / 10), static_cast<char>('0' + n % 10), '\0'};
        }
    }
    return texts;
}
constexpr std::array<std::array<char, 3>, 100> kNumberTexts = makeNumberTexts();
constexpr char kEmpty[] = "";

// A chain is an array of slots rather than a linked list: with a million
// names each chain holds about 30, and a walk through one contiguous array
// costs a few cache lines where a list costs a miss per name. The whole hash
// rides along so that the walk rejects most slots without touching their
// text.
struct Slot {
    uint32_t hash;
    uint32_t length;
    const char *text;
};

struct Chain {
    Slot *slots = nullptr;
    uint32_t count = 0;
    uint32_t capacity = 0;
};

constexpr uint32_t kFirstChainCapacity = 4;

struct Table {
    std::array<Chain, kBucketCount> buckets{};
    char *poolNext = nullptr;
    char *poolEnd = nullptr;
};

Table &table() noexcept
{
    static Table instance;
    return instance;
}

platform::RecursiveLock &tableLock() noexcept
{
    static platform::RecursiveLock lock;
    return lock;
}

const char *prebuilt(const char *s, size_t length) noexcept
{
    if (length == 0) return kEmpty;
    auto digit = [](char c) { return c >= '0' && c <= '9'; };
    auto value = [](char c) { return static_cast<size_t>(c - '0'); };
    if (length == 1 && digit(s[0])) return kNumberTexts[value(s[0])].data();
    if (length == 2 && s[0] >= '1' && s[0] <= '9' && digit(s[1]))
        return kNumberTexts[value(s[0]) * 10 + value(s[1])].data();
    return nullptr;
}

uint32_t hashOf(const char *s, size_t length) noexcept
{
    uint32_t h = 0;
    for (size_t i = 0; i < length; ++i) h = kScatter[static_cast<unsigned char>(s[i])] + (h << 1);
    return h;
}

void reportOutOfMemory(const char *function) noexcept
{
    TOLLAN_LOG(ZOR_LOG_FATAL, kStringsModule, function, "Out of memory");
}

// Room for `bytes` characters; a pool that lacks it is left behind (never
// freed: its strings are still in use) and a fresh one taken.
char *takeCharacters(Table &t, size_t bytes) noexcept
{
    if (static_cast<size_t>(t.poolEnd - t.poolNext) < bytes) {
        const size_t poolSize = ((bytes + 7) & ~size_t{7}) + kPoolReserve;
        auto *pool = static_cast<char *>(services::allocateBlock(poolSize));
        if (pool == nullptr) return nullptr;
        t.poolNext = pool;
        t.poolEnd = pool + poolSize;
    }
    char *room = t.poolNext;
    t.poolNext += bytes;
    return room;
}

// Makes room for one more slot in chain; false without memory.
bool roomForSlot(Chain &chain) noexcept
{
    if (chain.count < chain.capacity) return true;
    const uint32_t capacity = chain.capacity == 0 ? kFirstChainCapacity : chain.capacity * 2;
    auto *slots = static_cast<Slot *>(services::allocateBlock(capacity * sizeof(Slot)));
    if (slots == nullptr) return false;
    if (chain.count != 0) std::memcpy(slots, chain.slots, chain.count * sizeof(Slot));
    services::freeBlock(chain.slots);
    chain.slots = slots;
    chain.capacity = capacity;
    return true;
}

}  // namespace

const char *stringn(const char *s, size_t length) noexcept
{
    if (s == nullptr) return nullptr;
    if (length >= static_cast<size_t>(INT_MAX)) {
        logger::reportAssertion("s - str < INT_MAX", kStringsModule, "stringn", __LINE__,
                                "string too long for structure");
        return nullptr;
    }
    if (const char *fixed = prebuilt(s, length)) return fixed;

    const uint32_t hash = hashOf(s, length);
    Table &t = table();
    std::lock_guard guard(tableLock());
    Chain &chain = t.buckets[hash & kBucketMask];
    const auto length32 = static_cast<uint32_t>(length);
    for (const Slot *slot = chain.slots, *end = chain.slots + chain.count; slot != end; ++slot) {
        if (slot->hash == hash && slot->length == length32 && std::memcmp(slot->text, s, length) == 0)
            return slot->text;
    }
    char *text = roomForSlot(chain) ? takeCharacters(t, length + 1) : nullptr;
    if (text == nullptr) {
        reportOutOfMemory("stringn");
        return nullptr;
    }
    std::memcpy(text, s, length);
    text[length] = '\0';
    chain.slots[chain.count++] = Slot{hash, length32, text};
    return text;
}

const char *string(const char *s) noexcept
{
    return s == nullptr ? nullptr : stringn(s, std::strlen(s));
}

}  // namespace tollan::rtcheck
