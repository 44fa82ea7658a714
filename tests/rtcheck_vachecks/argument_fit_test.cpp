// Which recorded argument types may be fetched as which expected types.
#include <gtest/gtest.h>

#include "rtcheck/vacheck_types.h"
#include "rtcheck_vachecks/recorded_call.h"

namespace {

using namespace tollan::testing;
using tollan::rtcheck::argumentFits;
using tollan::rtcheck::recordedType;
using tollan::rtcheck::TypeView;

TEST(ArgumentFit, PromotionsSignednessAndPointerLevels)
{
    Tynode anyType{};
    anyType.op = LCC_ANYTYPE;
    Tynode function{};
    function.op = LCC_FUNCTION;
    const struct {
        int32_t found;
        TypeView expected;
        bool fits;
    } rows[] = {
        // values: promoted, then one size of integer or real
        {kChar, {inttype, 0}, true},
        {kShort, {unsignedtype, 0}, true},
        {kUnsigned, {inttype, 0}, true},
        {kLong, {inttype, 0}, true},  // one size in the type model
        {kInt64, {inttype, 0}, false},
        {kUnsignedInt64, {int64type, 0}, true},
        {kFloat, {doubletype, 0}, true},
        {kDouble, {inttype, 0}, false},
        {kInt, {doubletype, 0}, false},
        {kStruct, {inttype, 0}, false},
        {pointerTo(kInt), {inttype, 0}, false},
        {kInt, {intptype, 0}, false},
        // pointers: levels and the bottom type
        {pointerTo(kUnsigned), {intptype, 0}, true},
        {pointerTo(kShort), {intptype, 0}, false},
        {pointerTo(kFloat), {doubleptype, 0}, false},
        {pointerTo(kChar), {chartype, 1}, true},
        {pointerTo(kVoid), {chartype, 1}, true},
        {pointerTo(kDouble), {voidptype, 0}, true},
        {pointerTo(kChar) | tollan::rtcheck::kTypeIndirect2, {voidptype, 0}, true},
        {kVoid | tollan::rtcheck::kTypeIndirect2, {chartype, 1}, false},
        {pointerTo(kStruct), {voidtype, 2}, false},
        {pointerTo(kStruct), {&function, 1}, true},  // a function pointer has no type number of its own
        {kChar | tollan::rtcheck::kTypeIndirect1 | tollan::rtcheck::kTypeIndirect2, {charpptype, 0}, false},
        {tollan::rtcheck::kTypeIndirect2 | kChar, {chartype, 2}, true},
        // wildcards and numbers without a type
        {kStruct, {&anyType, 0}, true},
        {kDouble, {nullptr, 0}, true},
        {99, {inttype, 0}, false},
        {99 | tollan::rtcheck::kTypeIndirect1, {voidptype, 0}, true},
    };
    for (const auto &row : rows)
        EXPECT_EQ(argumentFits(recordedType({row.found, 0, 0}), row.expected), row.fits)
            << "type " << row.found;
}

}  // namespace
