// Parameter type records: the compiler's descriptions mapped to codes, the
// variadic parameters recorded in the thread's checking environment, and
// the names the checking messages give the codes.
#include <gtest/gtest.h>

#include <cstring>

#include <tollan/debugger.h>
#include <tollan/fmtio.h>

#include "fixtures/log_capture.h"
#include "fmtio/parameter_types.h"

namespace {

using tollan::fmtio::ConvertTypeSizeInfoToParmTypeInfo;
using tollan::fmtio::GetParmType;
using tollan::fmtio::ParmTypeInfo;
using tollan::rtcheck::kTypeIndirect1;
using tollan::rtcheck::kTypeIndirect2;
using tollan::rtcheck::TypeSizeInfo;
using tollan::testing::LogCapture;

TEST(FormatParameterTypes, NamesOfTheCodes)
{
    const struct {
        int32_t code;
        const char *name;
    } rows[] = {
        {0, "aggregate or userdefined"},
        {1, "int"},
        {5, "long"},
        {9, "float"},
        {10, "short"},
        {11, "void"},
        {12, "pointer to void"},
        {13, "char"},
        {14, "double"},
        {15, "long long"},
    };
    for (const auto &row : rows) EXPECT_STREQ(GetTypeString(row.code), row.name);

    LogCapture capture(0, "[LEVEL]|[FILE]|[FUNC]|[MSG]");
    for (int32_t code : {2, 3, 4, 6, 16, -1, INT32_MAX}) EXPECT_STREQ(GetTypeString(code), "") << code;
    EXPECT_EQ(capture.count("FATAL|stdlib/fmtio|GetTypeString|Assertion failed"), 7u);
}

TEST(FormatParameterTypes, CompilerTypeNumbersToCodes)
{
    const int32_t codes[] = {13, 13, 13, 10, 10, 1, 1, 5, 5, 9, 14, 14, -1, 0, 15, 15};
    for (int32_t type = 1; type <= 16; ++type) {
        if (type == 13) continue;
        for (int32_t bits : {0, kTypeIndirect1, kTypeIndirect2, kTypeIndirect1 | kTypeIndirect2}) {
            const ParmTypeInfo info = ConvertTypeSizeInfoToParmTypeInfo(TypeSizeInfo{type | bits, 0, 0});
            EXPECT_EQ(info.code, codes[type - 1]) << type;
            EXPECT_EQ(info.isPointer, bits != 0 ? 1 : 0) << type;
        }
    }
    // void: 11 with the first indirection bit, else 12; only meaningful as a pointer.
    EXPECT_EQ(ConvertTypeSizeInfoToParmTypeInfo({13 | kTypeIndirect1, 0, 0}).code, 11);
    EXPECT_EQ(ConvertTypeSizeInfoToParmTypeInfo({13 | kTypeIndirect1 | kTypeIndirect2, 0, 0}).code, 11);
    EXPECT_EQ(ConvertTypeSizeInfoToParmTypeInfo({13 | kTypeIndirect2, 0, 0}).code, 12);
    LogCapture capture(0, "[LEVEL]|[FILE]|[FUNC]|[MSG]");
    EXPECT_EQ(ConvertTypeSizeInfoToParmTypeInfo({13, 0, 0}).code, 12);
    EXPECT_EQ(capture.text(),
              "FATAL|stdlib/fmtio|ConvertTypeSizeInfoToParmTypeInfo|Assertion failed: tsi.type & "
              "(TYPE_INDIRECT1 | TYPE_INDIRECT2)\n");
}

TEST(FormatParameterTypes, SizeInformation)
{
    const struct {
        int64_t sizeInfo;
        uint64_t count;
        int8_t sizeClass;
    } rows[] = {
        {-1, 0, -1},          {-2, 0, -2},
        {-3, 0, -3},          {-5, 0, -5},
        {-4, UINT64_MAX, -4}, {-6, static_cast<uint64_t>(-6), -6},
        {0, 0, -6},           {1, 1, -6},
        {1000, 1000, -6},     {INT64_MAX, INT64_MAX, -6},
    };
    for (const auto &row : rows) {
        const ParmTypeInfo info = ConvertTypeSizeInfoToParmTypeInfo({6, 0, row.sizeInfo});
        EXPECT_EQ(info.count, row.count) << row.sizeInfo;
        EXPECT_EQ(info.sizeClass, row.sizeClass) << row.sizeInfo;
    }
}

// Writes the block as compiled code does: into the record's bytes.
void recordVariadicTypes(const TypeSizeInfo *types, int32_t count)
{
    unsigned char *block =
        __DBG_GetCurrentThreadEnv()->checkingEnvironment + tollan::rtcheck::kVariadicParameterTypesOffset;
    std::memcpy(block, &count, sizeof count);
    std::memcpy(block + offsetof(tollan::rtcheck::VariadicParameterTypes, types), types,
                sizeof *types * static_cast<size_t>(count));
}

TEST(FormatParameterTypes, VariadicParametersOfTheCurrentCall)
{
    const TypeSizeInfo types[] = {{11, 0, 0}, {1 | kTypeIndirect1, 0, 20}, {14, 0, -4}};
    recordVariadicTypes(types, 3);
    EXPECT_EQ(GetParmType(1).code, 14);
    EXPECT_EQ(GetParmType(1).isPointer, 0);
    EXPECT_EQ(GetParmType(2).code, 13);
    EXPECT_EQ(GetParmType(2).isPointer, 1);
    EXPECT_EQ(GetParmType(2).count, 20u);
    EXPECT_EQ(GetParmType(3).count, UINT64_MAX);
    // Past the recorded count: an empty record.
    EXPECT_EQ(GetParmType(4).code, 0);
    EXPECT_EQ(GetParmType(4).isPointer, 0);
    LogCapture capture(0, "[LEVEL]|[FILE]|[FUNC]|[MSG]");
    EXPECT_EQ(GetParmType(0).code, 0);
    EXPECT_EQ(capture.text(), "FATAL|stdlib/fmtio|GetParmType|Assertion failed: parmNum > 0\n");
    recordVariadicTypes(types, 0);
    EXPECT_EQ(GetParmType(1).code, 0);
}

}  // namespace
