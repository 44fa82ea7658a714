// outtype: the English text of a type, as run-time error messages show it
// ("pointer to array 10 of int", "const char", "int function(int,...)").
#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/log_module.h"
#include "rtcheck/symbols.h"
#include "rtcheck/type_text.h"
#include "rtcheck/type_walk.h"

namespace tollan::rtcheck {
namespace {

constexpr const char *kFunction = "outtype";

void sayFunction(TypeText &out, const Tynode *ty) noexcept
{
    say(out, "%t function", ty->type);
    const TyParams *params = ty->sym != nullptr ? ty->sym->params : nullptr;
    if (params == nullptr) return;
    if (params->count == 0) {
        say(out, params->variadic != 0 ? "(...)" : "(void)");
        return;
    }
    for (uint32_t i = 0; i < params->count; ++i) say(out, i == 0 ? "(%t" : ",%t", params->types[i]);
    if (params->variadic != 0) say(out, ",...");
    say(out, ")");
}

void sayDimension(TypeText &out, const Tynode *array, bool first) noexcept
{
    if (first && isMarkedIncomplete(array)) {
        say(out, "incomplete array");
    } else if (array->size == 0) {
        say(out, first ? "array *" : ",*");
    } else {
        say(out, first ? "array %llu" : ",%llu", static_cast<unsigned long long>(NumArrayEltsEx(array)));
    }
}

void sayArray(TypeText &out, const Tynode *ty) noexcept
{
    sayDimension(out, ty, true);
    const Tynode *element = ty->type;
    for (int dimensions = 1; element != nullptr && element->op == LCC_ARRAY; ++dimensions) {
        if (!withinDepth(out.depth + dimensions, kOutputModule, kFunction)) return;
        sayDimension(out, element, false);
        element = element->type;
    }
    say(out, " of %t", element);
}

void sayTag(TypeText &out, const Tynode *ty) noexcept
{
    if (ty->sym == nullptr) {
        TOLLAN_ASSERT_FAILED("ty->sym", kOutputModule, kFunction);
        return;
    }
    const bool incomplete = ty->size == 0;
    if (incomplete) say(out, "incomplete ");
    const char *name = GetName(ty->sym);
    if (name == nullptr) {
        TOLLAN_ASSERT_FAILED("GetName(ty->sym)", kOutputModule, kFunction);
        return;
    }
    // The compiler names anonymous tags with a number.
    const bool anonymous = name[0] >= '1' && name[0] <= '9';
    if (!anonymous) {
        say(out, "%k %s", ty->op, name);
        if (incomplete) say(out, " defined at %w", &ty->sym->defined);
    } else if (const TySymbol *typeName = findtype(ty)) {
        say(out, "%s", GetName(typeName));
    } else {
        say(out, "%k defined at %w", ty->op, &ty->sym->defined);
    }
}

}  // namespace

void sayType(TypeText &out, const Tynode *ty) noexcept
{
    if (ty == nullptr) {
        TOLLAN_ASSERT_FAILED("ty", kOutputModule, kFunction);
        return;
    }
    if (!withinDepth(out.depth, kOutputModule, kFunction)) return;
    ++out.depth;
    switch (ty->op) {
        case LCC_FLOAT:
        case LCC_DOUBLE:
        case LCC_CHAR:
        case LCC_SHORT:
        case LCC_INT:
        case LCC_UNSIGNED:
        case LCC_VOID:
        case LCC_LONGLONG:
        case LCC_ULONGLONG:
            // A basic type built without a name prints its keyword.
            if (ty->sym != nullptr && ty->sym->name != nullptr) {
                say(out, "%s", ty->sym->name);
            } else {
                say(out, "%k", ty->op);
            }
            break;
        case LCC_CONST:
        case LCC_VOLATILE:
        case LCC_RESTRICT:
        case LCC_PASCAL:
        case LCC_STDCALL:
        case LCC_CDECL:
        case LCC_FASTCALL:
            say(out, "%k %t", ty->op, ty->type);
            break;
        case LCC_POINTER:
            say(out, "pointer to %t", ty->type);
            break;
        case LCC_FUNCTION:
            sayFunction(out, ty);
            break;
        case LCC_ARRAY:
            sayArray(out, ty);
            break;
        case LCC_STRUCT:
        case LCC_UNION:
        case LCC_ENUM:
            sayTag(out, ty);
            break;
        default:
            logger::reportAssertion("0", kOutputModule, kFunction, __LINE__, "unknown type constructor");
            break;
    }
    --out.depth;
}

}  // namespace tollan::rtcheck

extern "C" size_t outtype(const Tynode *ty, char *buffer, size_t bufferSize) noexcept
{
    tollan::rtcheck::TypeText out{buffer, bufferSize == 0 || buffer == nullptr ? 0 : bufferSize - 1};
    tollan::rtcheck::sayType(out, ty);
    if (buffer != nullptr && bufferSize > 0) buffer[out.length < out.room ? out.length : out.room] = '\0';
    return out.length;
}
