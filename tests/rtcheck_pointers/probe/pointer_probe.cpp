// Makes one dereference check as a user's program would, with reports going
// to an error file; every failed dereference is fatal and ends the program.
// Usage: pointer_probe CASE ERRORFILE. Returns 7 when the program goes on,
// 2 on bad usage.
#include <cstdint>
#include <cstring>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

namespace {

constexpr int kWentOn = 7;

PtrInfo *entry(int index)
{
    return reinterpret_cast<PtrInfo *>(static_cast<uintptr_t>(index + 1));
}

alignas(8) unsigned char data[16];
PtrInfo shadow;
const BlkInfo block{reinterpret_cast<uintptr_t>(data), 16};
const BlkInfo freed{reinterpret_cast<uintptr_t>(data), 0};

const unsigned char *at(int64_t offset)
{
    return reinterpret_cast<const unsigned char *>(reinterpret_cast<uintptr_t>(data) +
                                                   static_cast<uint64_t>(offset));
}

struct Case {
    const char *name;
    const Tynode *(*type)();
    const void *value;
    PtrInfo *info;
    const BlkInfo *blk;
};

const Tynode *integer()
{
    return inttype;
}

const Tynode *function()
{
    static Tynode node{};
    node.op = LCC_FUNCTION;
    return &node;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 3) return 2;
    const Case cases[] = {
        {"uninitialized", integer, data, entry(45), nullptr},
        {"invalid", integer, data, entry(46), nullptr},
        {"null-entry", integer, data, entry(47), nullptr},
        {"null-unchecked", integer, nullptr, entry(48), nullptr},
        {"freed", integer, data, &shadow, &freed},
        {"past-end", integer, at(16), &shadow, &block},
        {"before-start", integer, at(-4), &shadow, &block},
        {"short-object", integer, at(14), &shadow, &block},
        {"scalar-past-end", integer, data, entry(14), nullptr},
        {"scalar-short", integer, data, entry(12), nullptr},
        {"data-as-function", function, data, &shadow, nullptr},
        {"function-as-data", integer, data, entry(43), nullptr},
        {"in-bounds", integer, at(12), &shadow, &block},
    };
    for (const Case &c : cases) {
        if (std::strcmp(c.name, argv[1]) != 0) continue;
        __SetDebuggingLevel(2);
        __DBG_SetCurrentThreadEnvLocation(__DBG_GetCurrentThreadEnv(), nullptr, "probe.c", 3, 7);
        TollanFILE *file = tollan_fopen(argv[2], "wb");
        if (file == nullptr) return 2;
        __SetUPErrorFile(file);
        _PtrChkDeref(c.type(), c.value, c.info, c.blk, 4, 8);
        tollan_fclose(file);
        return kWentOn;
    }
    return 2;
}
