// Pointer information across calls: arguments taken only by the function
// the call went to (through jump stubs too), their types matched, and the
// result's information handed back.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <tollan/debugger.h>
#include <tollan/rtcheck.h>

#include "rtcheck/checking_environment.h"
#include "rtcheck_pointers/pointer_fixture.h"

namespace {

using pointertest::entry;
using pointertest::kCol;
using pointertest::kLine;
using pointertest::nonFatal;

extern "C" int calledFunction(int value)
{
    return value + 1;
}

extern "C" int otherFunction(int value)
{
    return value - 1;
}

class Calls : public pointertest::PointerTest {
protected:
    void *env_ = __DBG_GetCurrentThreadEnv()->checkingEnvironment;
    PtrInfo *table_ = _UPLookupBasicPtrInfo(nullptr, 0) - 48;
    PtrInfo shadow_[2] = {};
    BlkInfo block_{1 << 20, 64};
    const void *callee_ = reinterpret_cast<const void *>(&calledFunction);
};

TEST_F(Calls, OnlyTheFunctionCalledTakesTheArguments)
{
    _PtrPreCall(env_, callee_);
    _PassParamInfo(env_, 2, intptype, shadow_, &block_);
    _PassParamInfo(env_, 0, inttype, entry(10), &block_);  // not a pointer: no block
    EXPECT_EQ(_GetParamInfo(env_, 2, callee_, intptype, kLine, kCol), shadow_);
    EXPECT_EQ(_ReceiveBlkInfo(env_, 2, callee_, intptype), &block_);
    EXPECT_EQ(_GetParamInfo(nullptr, 0, callee_, inttype, kLine, kCol),
              &table_[10]);  // the thread's own area
    EXPECT_EQ(_ReceiveBlkInfo(env_, 0, callee_, inttype), nullptr);
    const struct {
        const char *what;
        int32_t index;
        const void *self;
    } missing[] = {
        {"a skipped slot", 1, callee_},
        {"past the filled slots", 3, callee_},
        {"outside the area", 48, callee_},
        {"negative", -1, callee_},
        {"another function", 2, reinterpret_cast<const void *>(&otherFunction)},
    };
    for (const auto &row : missing) {
        EXPECT_EQ(_GetParamInfo(env_, row.index, row.self, intptype, kLine, kCol), &table_[48]) << row.what;
        EXPECT_EQ(_ReceiveBlkInfo(env_, row.index, row.self, intptype), nullptr) << row.what;
    }
    _PtrPostCall(env_);
    EXPECT_EQ(_GetParamInfo(env_, 2, callee_, intptype, kLine, kCol), &table_[48]);  // the call is over
    _PtrPostCall(env_);  // as after a library twin that forgot the call first
    const auto *area = static_cast<const tollan::rtcheck::ParameterArea *>(env_);
    EXPECT_EQ(area->callee, nullptr);
    EXPECT_EQ(area->previousCallee, callee_);
}

TEST_F(Calls, AnArgumentOfAnotherTypeIsReportedAtItsCoordinate)
{
    Tynode *intpp = types_.pointer(intptype);
    _PtrPreCall(env_, callee_);
    _PassParamInfo(env_, 0, doubleptype, shadow_, &block_);
    _PassParamInfo(env_, 1, doubleptype, shadow_, &block_);
    _PassArgCoord(env_, 1, 31, 4);
    EXPECT_EQ(reportsOf([&] { EXPECT_EQ(_GetParamInfo(env_, 0, callee_, intpp, kLine, kCol), &table_[48]); }),
              nonFatal("Parameter type does not match argument type."));
    EXPECT_EQ(reportsOf([&] { _GetParamInfo(env_, 1, callee_, intpp, kLine, kCol); }),
              "main.c[12, 5]-[31, 4]: NON-FATAL - Parameter type does not match argument type.\n");
    EXPECT_EQ(
        reportsOf([&] { EXPECT_EQ(_GetParamInfo(env_, 1, callee_, doubleptype, kLine, kCol), shadow_); }),
        "");
    _PtrPostCall(env_);
}

#if defined(__x86_64__) || defined(_M_X64)
// A relative jump to an indirect jump through a cell that holds the
// function: as an import thunk leads to a linker's stub. The stubs are only
// read, never run.
struct JumpStubs {
    unsigned char relative[5];
    unsigned char indirect[6];
    const void *cell;
};

JumpStubs stubs;

void makeStubs(const void *target)
{
    const auto displacement = [](const void *from, const void *to) {
        return static_cast<int32_t>(reinterpret_cast<intptr_t>(to) - reinterpret_cast<intptr_t>(from));
    };
    stubs.relative[0] = 0xE9;
    const int32_t toIndirect = displacement(stubs.relative + 5, stubs.indirect);
    std::memcpy(stubs.relative + 1, &toIndirect, 4);
    stubs.indirect[0] = 0xFF;
    stubs.indirect[1] = 0x25;
    const int32_t toCell = displacement(stubs.indirect + 6, &stubs.cell);
    std::memcpy(stubs.indirect + 2, &toCell, 4);
    stubs.cell = target;
}

TEST_F(Calls, ArgumentsPassThroughJumpStubs)
{
    makeStubs(callee_);
    // Called through the stubs: the callee knows its own address.
    _PtrPreCall(env_, stubs.relative);
    _PassParamInfo(env_, 0, intptype, shadow_, &block_);
    EXPECT_EQ(_GetParamInfo(env_, 0, callee_, intptype, kLine, kCol), shadow_);
    // And the other way round.
    _PtrPreCall(env_, callee_);
    _PassParamInfo(env_, 0, intptype, shadow_, &block_);
    EXPECT_EQ(_GetParamInfo(env_, 0, stubs.indirect, intptype, kLine, kCol), shadow_);
    // A stub to another function leads elsewhere.
    makeStubs(reinterpret_cast<const void *>(&otherFunction));
    EXPECT_EQ(_GetParamInfo(env_, 0, stubs.relative, intptype, kLine, kCol), &table_[48]);
    _PtrPostCall(env_);
}
#endif

TEST_F(Calls, TheResultsInformationComesBack)
{
    const void *value = shadow_;
    PtrInfo received{};
    const struct {
        const char *what;
        void (*callee)(void *env, PtrInfo *shadow, const BlkInfo *blk, const void *value);
        const void *value;
        std::string text;
        int entryReceived;  // -1: the callee's own record
    } rows[] = {
        {"nothing handed back", [](void *, PtrInfo *, const BlkInfo *, const void *) {}, value, "", 48},
        {"handed back",
         [](void *env, PtrInfo *shadow, const BlkInfo *blk, const void *v) {
             _ReturnPtrInfo(env, shadow, blk, v);
         },
         value, "", -1},
        {"from the returned variable's record",
         [](void *env, PtrInfo *shadow, const BlkInfo *blk, const void *v) {
             static PtrInfo variable;
             variable = {reinterpret_cast<uintptr_t>(shadow), reinterpret_cast<uintptr_t>(blk),
                         reinterpret_cast<uintptr_t>(v)};
             _PtrSetRetValLoc(env, &variable);
         },
         value, "", -1},
        {"for another value",
         [](void *env, PtrInfo *shadow, const BlkInfo *blk, const void *v) {
             _ReturnPtrInfo(env, shadow, blk, v);
         },
         nullptr, "", 48},
        {"a table entry",
         [](void *env, PtrInfo *, const BlkInfo *, const void *) {
             _ReturnPtrInfo(env, entry(47), nullptr, nullptr);
         },
         value, "", 47},
        {"no return value",
         [](void *env, PtrInfo *, const BlkInfo *, const void *) {
             _ReturnPtrInfo(env, entry(52), nullptr, nullptr);
         },
         value, "Missing return value.", 45},
    };
    for (const auto &row : rows) {
        _PtrPreCall(env_, callee_);
        row.callee(env_, shadow_, &block_, value);
        _PtrPostCall(env_);
        PtrInfo *info = nullptr;
        EXPECT_EQ(reportsOf([&] { info = _ReceivePtrInfo(env_, &received, row.value, kLine, kCol); }),
                  nonFatal(row.text))
            << row.what;
        PtrInfo *expected = row.entryReceived < 0 ? shadow_ : &table_[row.entryReceived];
        EXPECT_EQ(info, expected) << row.what;
        EXPECT_EQ(received.info, reinterpret_cast<uintptr_t>(expected)) << row.what;
        EXPECT_EQ(received.value, reinterpret_cast<uintptr_t>(row.value)) << row.what;
        // Settled once: asking again reports nothing more.
        EXPECT_EQ(reportsOf([&] {
                      EXPECT_EQ(_PtrGetRetValLoc(env_, row.value, kLine, kCol)->info, received.info);
                  }),
                  "")
            << row.what;
    }
}

}  // namespace
