// Qualifier layers and the depth guard of the type queries.
#include "rtcheck/type_walk.h"

#include "logger/log.h"

namespace tollan::rtcheck {

const Tynode *unqualify(const Tynode *ty, const char *module, const char *function) noexcept
{
    for (int layers = 0; ty != nullptr && isQualifierLayer(ty->op); ++layers) {
        if (layers == TY_MAX_DEPTH) {
            logger::reportAssertion("layers < TY_MAX_DEPTH", module, function, __LINE__,
                                    "qualifier layers form a cycle");
            return nullptr;
        }
        ty = ty->type;
    }
    return ty;
}

bool withinDepth(int depth, const char *module, const char *function) noexcept
{
    if (depth <= TY_MAX_DEPTH) return true;
    logger::reportAssertion("depth <= TY_MAX_DEPTH", module, function, __LINE__,
                            "type chain is cyclic or too deep");
    return false;
}

}  // namespace tollan::rtcheck
