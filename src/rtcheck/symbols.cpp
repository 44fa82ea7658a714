// Symbol records and the global chains of registered type names.
#include "rtcheck/symbols.h"

#include <cstdint>

#include "logger/log.h"
#include "platform/lock.h"
#include "rtcheck/log_module.h"
#include "rtcheck/strings.h"
#include "services/memory.h"

namespace tollan::rtcheck {
namespace {

platform::RecursiveLock &symbolLock() noexcept
{
    static platform::RecursiveLock lock;
    return lock;
}

// The chain of `level`, made when it is missing; chains stay sorted by level.
GlobalChain *chainOf(SymbolSpace &space, int32_t level) noexcept
{
    GlobalChain **link = &space.chains;
    while (*link != nullptr && (*link)->level < level) link = &(*link)->next;
    if (*link != nullptr && (*link)->level == level) return *link;
    auto *chain = static_cast<GlobalChain *>(services::allocateBlock(sizeof(GlobalChain)));
    if (chain == nullptr) return nullptr;
    *chain = GlobalChain{level, nullptr, *link};
    *link = chain;
    return chain;
}

}  // namespace

SymbolSpace &symbolSpace() noexcept
{
    static SymbolSpace space;
    return space;
}

SymbolLockGuard::SymbolLockGuard() noexcept
{
    symbolLock().lock();
}

SymbolLockGuard::~SymbolLockGuard()
{
    symbolLock().unlock();
}

TySymbol *newSymbol(const char *name, uint32_t kind, Tynode *type) noexcept
{
    const char *interned = string(name);
    if (name != nullptr && interned == nullptr) return nullptr;
    auto *sym = static_cast<TySymbol *>(services::allocateZeroedBlock(sizeof(TySymbol)));
    if (sym == nullptr) return nullptr;
    sym->flags = kind & TY_SYMBOL_KIND_MASK;
    sym->name = interned;
    sym->type = type;
    return sym;
}

const char *GetName(const TySymbol *sym) noexcept
{
    if (sym != nullptr) return sym->name;
    TOLLAN_ASSERT_FAILED("sym", kSymbolsModule, "GetName");
    return nullptr;
}

uint32_t scopeBucketOf(const char *internedName) noexcept
{
    // Interned names are unique by address; the low bits are alignment.
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(internedName) >> 3) & (kScopeBuckets - 1);
}

void addToScope(ScopeTable &table, TySymbol *sym) noexcept
{
    TySymbol *&head = table.buckets[scopeBucketOf(sym->name)];
    sym->link = head;
    head = sym;
}

TySymbol *registerTypeName(const char *name, Tynode *type, int32_t level, TyCoordinate where) noexcept
{
    TySymbol *sym = newSymbol(name, TY_SYMBOL_KIND_TYPE, type);
    if (sym == nullptr) return nullptr;
    sym->sclass = TY_CLASS_TYPE;
    sym->level = level;
    sym->defined = where;
    SymbolLockGuard guard;
    GlobalChain *chain = chainOf(symbolSpace(), level);
    if (chain == nullptr) {
        services::freeBlock(sym);
        return nullptr;
    }
    sym->link = chain->first;
    chain->first = sym;
    return sym;
}

}  // namespace tollan::rtcheck
