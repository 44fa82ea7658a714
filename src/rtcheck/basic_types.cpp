// The type nodes built at start-up: the basic types with the sizes and
// alignments of the 64-bit target (fixed, not measured on the host, so that
// a 32-bit or foreign host describes the same program), the pointer metrics
// and the derived types that pointer checking uses.
#include <tollan/rtcheck.h>

#include "logger/log.h"
#include "rtcheck/library.h"
#include "rtcheck/log_module.h"
#include "rtcheck/symbols.h"
#include "services/memory.h"

extern "C" {
Tynode *chartype = nullptr;
Tynode *doubletype = nullptr;
Tynode *floattype = nullptr;
Tynode *inttype = nullptr;
Tynode *int64type = nullptr;
Tynode *longdouble = nullptr;
Tynode *longtype = nullptr;
Tynode *shorttype = nullptr;
Tynode *signedchar = nullptr;
Tynode *unsignedchar = nullptr;
Tynode *unsignedlong = nullptr;
Tynode *unsignedint64 = nullptr;
Tynode *unsignedshort = nullptr;
Tynode *unsignedtype = nullptr;
Tynode *voidtype = nullptr;
Tynode *voidptype = nullptr;
Tynode *charptype = nullptr;
Tynode *doubleptype = nullptr;
Tynode *floatptype = nullptr;
Tynode *intptype = nullptr;
Tynode *int64ptype = nullptr;
Tynode *shortptype = nullptr;
Tynode *unsignedcharptype = nullptr;
Tynode *unsignedshortptype = nullptr;
Tynode *unsignedptype = nullptr;
Tynode *unsignedint64ptype = nullptr;
Tynode *charptrarray2type = nullptr;
Tynode *voidptrarray3type = nullptr;
Tynode *voidpptype = nullptr;
Tynode *charptrarray2ptype = nullptr;
Tynode *charpptype = nullptr;
Tynode *sizetype = nullptr;
Tynode *uintptrtype = nullptr;
Tynode *ptrdifftype = nullptr;
Tynode *intptrtype = nullptr;
TyPointerMetrics ptrmetric = {};
TySymbol *chararraysym = nullptr;
}

namespace tollan::rtcheck {
namespace {

constexpr uint64_t kPointerSize = 8;
constexpr uint8_t kPointerAlign = 8;

struct BasicType {
    Tynode **slot;
    const char *name;
    const char *check;  // the start-up assertion's text
    uint64_t size;
    int32_t op;
    uint8_t align;
    bool marked;
};

// long double has the shape of double, long of int, and the char and short
// variants share their codes: such types differ only by their symbols.
const BasicType kBasicTypes[] = {
    {&chartype, "char", "chartype->align == 0 || chartype->size%chartype->align == 0", 1, LCC_CHAR, 1, false},
    {&doubletype, "double", "doubletype->align == 0 || doubletype->size%doubletype->align == 0", 8,
     LCC_DOUBLE, 8, true},
    {&floattype, "float", "floattype->align == 0 || floattype->size%floattype->align == 0", 4, LCC_FLOAT, 4,
     true},
    {&inttype, "int", "inttype->align == 0 || inttype->size%inttype->align == 0", 4, LCC_INT, 4, false},
    {&int64type, "__int64", "int64type->align == 0 || int64type->size%int64type->align == 0", 8, LCC_LONGLONG,
     8, false},
    {&longdouble, "long double", "longdouble->align == 0 || longdouble->size%longdouble->align == 0", 8,
     LCC_DOUBLE, 8, true},
    {&longtype, "long", "longtype->align == 0 || longtype->size%longtype->align == 0", 4, LCC_INT, 4, false},
    {&shorttype, "short", "shorttype->align == 0 || shorttype->size%shorttype->align == 0", 2, LCC_SHORT, 2,
     false},
    {&signedchar, "signed char", "signedchar->align == 0 || signedchar->size%signedchar->align == 0", 1,
     LCC_CHAR, 1, false},
    {&unsignedchar, "unsigned char",
     "unsignedchar->align == 0 || unsignedchar->size%unsignedchar->align == 0", 1, LCC_CHAR, 1, false},
    {&unsignedlong, "unsigned long",
     "unsignedlong->align == 0 || unsignedlong->size%unsignedlong->align == 0", 4, LCC_UNSIGNED, 4, false},
    {&unsignedint64, "unsigned __int64",
     "unsignedint64->align == 0 || unsignedint64->size%unsignedint64->align == 0", 8, LCC_ULONGLONG, 8,
     false},
    {&unsignedshort, "unsigned short",
     "unsignedshort->align == 0 || unsignedshort->size%unsignedshort->align == 0", 2, LCC_SHORT, 2, false},
    {&unsignedtype, "unsigned int", "unsignedtype->align == 0 || unsignedtype->size%unsignedtype->align == 0",
     4, LCC_UNSIGNED, 4, false},
    {&voidtype, "void", "voidtype->align == 0 || voidtype->size%voidtype->align == 0", 0, LCC_VOID, 0, false},
};

// Pointers built like the void pointer, in this order, after it.
Tynode **const kPointedTypes[][2] = {
    {&charptype, &chartype},
    {&doubleptype, &doubletype},
    {&floatptype, &floattype},
    {&intptype, &inttype},
    {&int64ptype, &int64type},
    {&shortptype, &shorttype},
    {&unsignedcharptype, &unsignedchar},
    {&unsignedshortptype, &unsignedshort},
    {&unsignedptype, &unsignedtype},
    {&unsignedint64ptype, &unsignedint64},
};

Tynode *newNode(int32_t op, Tynode *type, TySymbol *sym, uint64_t size, uint8_t align) noexcept
{
    auto *node = static_cast<Tynode *>(services::allocateZeroedBlock(sizeof(Tynode)));
    if (node == nullptr) return nullptr;
    node->op = op;
    node->type = type;
    node->sym = sym;
    node->size = size;
    node->align = align;
    return node;
}

bool buildBasicType(const BasicType &row) noexcept
{
    TySymbol *sym = newSymbol(row.name, TY_SYMBOL_KIND_TYPE, nullptr);
    if (sym == nullptr) return false;
    if (row.marked) sym->flags |= TY_SYMBOL_MARK;
    Tynode *node = newNode(row.op, nullptr, sym, row.size, row.align);
    if (node == nullptr) return false;
    sym->type = node;
    *row.slot = node;
    if (!(node->align == 0 || node->size % node->align == 0))
        TOLLAN_ASSERT_FAILED(row.check, kTypesModule, "InitRTEBasicTypes");
    return true;
}

Tynode *pointerTo(Tynode *type) noexcept
{
    return newNode(LCC_POINTER, type, ptrmetric.sym, ptrmetric.size, ptrmetric.align);
}

Tynode *arrayOf(Tynode *element, uint64_t count) noexcept
{
    return newNode(LCC_ARRAY, element, element->sym, count * element->size, element->align);
}

bool buildPointerNames() noexcept
{
    TySymbol *pointerName = newSymbol("T*", TY_SYMBOL_KIND_TYPE, nullptr);
    chararraysym = newSymbol("char[]", TY_SYMBOL_KIND_TYPE, nullptr);
    if (pointerName == nullptr || chararraysym == nullptr) return false;
    chararraysym->flags |= TY_SYMBOL_MARK;
    ptrmetric =
        TyPointerMetrics{kPointerSize, kPointerAlign, pointerName->flags & TY_SYMBOL_MARK, pointerName};
    return true;
}

bool buildDerivedTypes() noexcept
{
    voidptype = pointerTo(voidtype);
    if (voidptype == nullptr) return false;
    if (!(voidptype->align > 0 && voidptype->size % voidptype->align == 0))
        TOLLAN_ASSERT_FAILED("voidptype->align > 0 && voidptype->size%voidptype->align == 0", kTypesModule,
                             "InitRTEBasicTypes");
    for (const auto &[pointer, pointee] : kPointedTypes) {
        *pointer = pointerTo(*pointee);
        if (*pointer == nullptr) return false;
    }
    charptrarray2type = arrayOf(charptype, 2);
    voidptrarray3type = arrayOf(voidptype, 3);
    if (charptrarray2type == nullptr || voidptrarray3type == nullptr) return false;
    voidpptype = pointerTo(voidptype);
    charptrarray2ptype = pointerTo(charptrarray2type);
    charpptype = pointerTo(charptype);
    if (voidpptype == nullptr || charptrarray2ptype == nullptr || charpptype == nullptr) return false;
    sizetype = uintptrtype = unsignedint64;
    ptrdifftype = intptrtype = int64type;
    return true;
}

}  // namespace

bool InitRTEBasicTypes() noexcept
{
    if (charpptype != nullptr) return true;
    for (const BasicType &row : kBasicTypes) {
        if (!buildBasicType(row)) return false;
    }
    return buildPointerNames() && buildDerivedTypes();
}

}  // namespace tollan::rtcheck
