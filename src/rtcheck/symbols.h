// Symbols of the type nodes and the tables that findtype searches.
//
// Two places hold named types. While an instrumenting compiler runs inside
// the process, its scope tables are active: one table of 1,024 hash chains
// per scope level, innermost first. Otherwise (the normal case at run time)
// the names that checked code registers live in global chains, one per scope
// level.
#pragma once

#include <cstdint>

#include <tollan/rtcheck.h>

namespace tollan::rtcheck {

inline constexpr uint32_t kScopeBuckets = 1024;

// One scope level of the compiler's tables; symbols chain through `link`.
struct ScopeTable {
    int32_t level = 0;
    ScopeTable *previous = nullptr;
    TySymbol *buckets[kScopeBuckets] = {};
};

// The symbols of one scope level outside a compilation.
struct GlobalChain {
    int32_t level = 0;
    TySymbol *first = nullptr;
    GlobalChain *next = nullptr;
};

struct SymbolSpace {
    bool compilerTablesActive = false;
    ScopeTable *innermost = nullptr;  // while compilerTablesActive
    GlobalChain *chains = nullptr;
    int32_t currentLevel = 0;  // chains above this level are out of scope
};

// The process's symbol space. Callers that change it hold symbolLock().
SymbolSpace &symbolSpace() noexcept;
class SymbolLockGuard {
public:
    SymbolLockGuard() noexcept;
    ~SymbolLockGuard();
    SymbolLockGuard(const SymbolLockGuard &) = delete;
    SymbolLockGuard &operator=(const SymbolLockGuard &) = delete;
};

// A new zeroed symbol of `kind` naming `type`, its name interned. Null when
// memory runs out.
TySymbol *newSymbol(const char *name, uint32_t kind, Tynode *type) noexcept;

// The symbol's interned name; null (reported) for a null symbol.
const char *GetName(const TySymbol *sym) noexcept;

// The hash chain of a scope table that a symbol of this (interned) name
// belongs in.
uint32_t scopeBucketOf(const char *internedName) noexcept;
void addToScope(ScopeTable &table, TySymbol *sym) noexcept;

// Registers a typedef or tag name for `type` at scope `level` in the global
// chains, defined at `where`. The new symbol, or null when memory runs out.
TySymbol *registerTypeName(const char *name, Tynode *type, int32_t level, TyCoordinate where) noexcept;

// The typedef or tag symbol whose type is `ty`, or null.
TySymbol *findtype(const Tynode *ty) noexcept;

}  // namespace tollan::rtcheck
