// findtype: the name a type is known by, for printing anonymous tags.
#include "logger/log.h"
#include "rtcheck/log_module.h"
#include "rtcheck/symbols.h"

namespace tollan::rtcheck {
namespace {

bool namesType(const TySymbol *sym, const Tynode *ty) noexcept
{
    return sym->type == ty && sym->sclass == TY_CLASS_TYPE;
}

TySymbol *searchScopes(const ScopeTable *table, const Tynode *ty) noexcept
{
    for (; table != nullptr; table = table->previous) {
        for (TySymbol *head : table->buckets) {
            for (TySymbol *sym = head; sym != nullptr; sym = sym->link) {
                if (namesType(sym, ty)) return sym;
            }
        }
    }
    return nullptr;
}

TySymbol *searchChains(const SymbolSpace &space, const Tynode *ty) noexcept
{
    for (const GlobalChain *chain = space.chains; chain != nullptr; chain = chain->next) {
        if (chain->level > space.currentLevel) continue;
        for (TySymbol *sym = chain->first; sym != nullptr; sym = sym->link) {
            if (namesType(sym, ty)) return sym;
        }
    }
    return nullptr;
}

}  // namespace

TySymbol *findtype(const Tynode *ty) noexcept
{
    SymbolLockGuard guard;
    const SymbolSpace &space = symbolSpace();
    if (!space.compilerTablesActive) return searchChains(space, ty);
    if (space.innermost == nullptr) {
        TOLLAN_ASSERT_FAILED("tp", kSymbolsModule, "findtype");
        return nullptr;
    }
    return searchScopes(space.innermost, ty);
}

}  // namespace tollan::rtcheck
