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
constexpr size_t kEntriesPerBlock = 512;

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

// The whole hash rides along so that a walk down a long chain rejects most
// entries without touching their text.
struct Entry {
    const char *text;
    size_t length;
    Entry *next;
    uint32_t hash;
};

struct Table {
    std::array<Entry *, kBucketCount> buckets{};
    char *poolNext = nullptr;
    char *poolEnd = nullptr;
    Entry *entriesNext = nullptr;
    Entry *entriesEnd = nullptr;
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

Entry *takeEntry(Table &t) noexcept
{
    if (t.entriesNext == t.entriesEnd) {
        auto *block = static_cast<Entry *>(services::allocateBlock(kEntriesPerBlock * sizeof(Entry)));
        if (block == nullptr) return nullptr;
        t.entriesNext = block;
        t.entriesEnd = block + kEntriesPerBlock;
    }
    return t.entriesNext++;
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
    const uint32_t bucket = hash & kBucketMask;
    Table &t = table();
    std::lock_guard guard(tableLock());
    for (Entry *e = t.buckets[bucket]; e != nullptr; e = e->next) {
        if (e->hash == hash && e->length == length && std::memcmp(e->text, s, length) == 0) return e->text;
    }
    Entry *entry = takeEntry(t);
    char *text = entry != nullptr ? takeCharacters(t, length + 1) : nullptr;
    if (text == nullptr) {
        // An entry taken without its text goes back for the next miss.
        if (entry != nullptr) --t.entriesNext;
        reportOutOfMemory("stringn");
        return nullptr;
    }
    std::memcpy(text, s, length);
    text[length] = '\0';
    *entry = Entry{text, length, t.buckets[bucket], hash};
    t.buckets[bucket] = entry;
    return text;
}

const char *string(const char *s) noexcept
{
    return s == nullptr ? nullptr : stringn(s, std::strlen(s));
}

}  // namespace tollan::rtcheck
