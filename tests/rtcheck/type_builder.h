// Builds type nodes for tests, as instrumented code builds them in its own
// storage: the nodes live as long as the builder.
#pragma once

#include <deque>
#include <initializer_list>
#include <vector>

#include <tollan/rtcheck.h>

#include "rtcheck/strings.h"

namespace rtchecktest {

class TypeBuilder {
public:
    Tynode *node(int32_t op, Tynode *type, uint64_t size, uint8_t align, TySymbol *sym = nullptr)
    {
        Tynode &n = nodes_.emplace_back();
        n.op = op;
        n.type = type;
        n.size = size;
        n.align = align;
        n.sym = sym;
        return &n;
    }
    Tynode *pointer(Tynode *to) { return node(LCC_POINTER, to, 8, 8, ptrmetric.sym); }
    Tynode *array(Tynode *of, uint64_t count)
    {
        return node(LCC_ARRAY, of, count * of->size, of->align == 0 ? 1 : of->align, of->sym);
    }
    // An array declared without a size.
    Tynode *incompleteArray(Tynode *of)
    {
        Tynode *a = array(of, 0);
        a->extra[0] = 1;
        return a;
    }
    Tynode *qualified(int32_t layer, Tynode *type)
    {
        return node(layer, type, type->size, type->align, type->sym);
    }
    TySymbol *symbol(const char *name)
    {
        TySymbol &s = symbols_.emplace_back();
        s.flags = TY_SYMBOL_KIND_TYPE;
        s.sclass = TY_CLASS_TYPE;
        s.name = tollan::rtcheck::string(name);
        return &s;
    }
    // A struct or union tag; `size` 0 leaves it incomplete.
    Tynode *tag(int32_t op, const char *name, uint64_t size, TyCoordinate defined = {"file.c", 3, 1})
    {
        TySymbol *s = symbol(name);
        s->defined = defined;
        Tynode *t = node(op, nullptr, size, size == 0 ? 1 : 8, s);
        s->type = t;
        return t;
    }
    // Appends a member to a tag.
    void field(Tynode *record, const char *name, Tynode *type, uint64_t offset, uint16_t bitSize = 0,
               uint16_t bitOffset = 0)
    {
        TyField &f = fields_.emplace_back();
        f = TyField{tollan::rtcheck::string(name), type, offset, bitSize, bitOffset, nullptr};
        TyField **link = &record->sym->fields;
        while (*link != nullptr) link = &(*link)->link;
        *link = &f;
    }
    // A function returning `result`; `prototype` false gives no parameter list.
    Tynode *function(Tynode *result, std::initializer_list<Tynode *> params, bool prototype = true,
                     bool variadic = false)
    {
        TySymbol *s = symbol("");
        if (prototype) {
            std::vector<Tynode *> &types = paramTypes_.emplace_back(params);
            TyParams &p = params_.emplace_back();
            p = TyParams{types.data(), static_cast<uint32_t>(types.size()), variadic ? 1u : 0u};
            s->params = &p;
        }
        return node(LCC_FUNCTION, result, 0, 0, s);
    }

private:
    std::deque<Tynode> nodes_;
    std::deque<TySymbol> symbols_;
    std::deque<TyField> fields_;
    std::deque<TyParams> params_;
    std::deque<std::vector<Tynode *>> paramTypes_;
};

}  // namespace rtchecktest
