// The run-time checking texts of the library message table, each as the
// reports show it: numbers 104 to 204, 163 being the one without a text.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <tollan/rtcheck.h>

#include "services/messages.h"
#include "rtcheck/report_message.h"

namespace {

using tollan::rtcheck::formatMessage;
using tollan::services::libraryMessage;

struct Row {
    int32_t number;
    const char *text;
};

// clang-format off
constexpr Row kTexts[] = {
    {104, "In conditional breakpoint expression"},
    {105, "Missing return value."},
    {106, "Invalid argument type: found '%t', expected '%t'."},
    {107, "Missing argument to variable argument function."},
    {108, "Too many arguments to variable argument function."},
    {109, "Pointer arithmetic involving invalid pointer."},
    {110, "Pointer arithmetic involving null pointer."},
    {111, "Pointer arithmetic involving uninitialized pointer."},
    {112, "Pointer arithmetic involving address of nonarray object."},
    {113, "Pointer arithmetic involving pointer to freed memory."},
    {114, "Out-of-bounds pointer arithmetic: %Iu bytes (%Iu elements) past end of array."},
    {115, "Out-of-bounds pointer arithmetic: %Iu bytes (%Iu elements) before start of array."},
    {116, "Pointer arithmetic involving pointer to a function."},
    {117, "Array index (%Iu) too large (maximum: %Iu)."},
    {118, "Negative array index (%Id)."},
    {119, "Assignment of invalid pointer value."},
    {120, "Assignment of uninitialized pointer value."},
    {121, "Assignment of out-of-bounds pointer: %Iu bytes past end of array."},
    {122, "Assignment of out-of-bounds pointer: %Iu bytes before start of array."},
    {123, "Assignment of pointer to freed memory."},
    {124, "Dereference of invalid pointer expression."},
    {125, "Dereference of null pointer."},
    {126, "Dereference of uninitialized pointer."},
    {127, "(Dereference of ignored pointer [%p].)"},
    {128, "Dereference of pointer to freed memory."},
    {129, "Dereference of out-of-bounds pointer: %Iu bytes (%Iu elements) past end of array."},
    {130, "Dereference of out-of-bounds pointer: %Iu bytes (%Iu elements) before start of array."},
    {131, "Dereference of unaligned pointer."},
    {132, "Dereference of function pointer used as data."},
    {133, "Dereference of data pointer used as a function."},
    {134, "Dereference of a %Iu byte object where only %Iu bytes exist."},
    {135, "Parameter type does not match argument type."},
    {136, "No room in structure for member '%s'."},
    {137, "Comparison involving uninitialized pointer."},
    {138, "Comparison involving invalid pointer."},
    {139, "Comparison involving null pointer."},
    {140, "Pointer comparison involving address of nonarray object."},
    {141, "Comparison of pointers to different objects."},
    {142, "Comparison of pointers to freed memory."},
    {143, "Subtraction involving uninitialized pointer."},
    {144, "Subtraction involving invalid pointer."},
    {145, "Subtraction involving null pointer."},
    {146, "Pointer subtraction involving address of nonarray object."},
    {147, "Subtraction of pointers to different objects."},
    {148, "Subtraction of pointers to freed memory."},
    {149, "Not enough space for casting expression to 'pointer to %t'."},
    {150, "Attempt to free invalid pointer expression."},
    {151, "Attempt to free uninitialized pointer."},
    {152, "Attempt to free pointer to freed memory."},
    {153, "Attempt to free pointer to memory not allocated by malloc() or calloc()."},
    {154, "Attempt to realloc invalid pointer expression."},
    {155, "Attempt to realloc uninitialized pointer."},
    {156, "Attempt to realloc pointer to freed memory."},
    {157, "Attempt to realloc pointer to memory not allocated by malloc() or calloc()."},
    {158, "Dynamic memory is corrupt."},
    {159, "Library function error (%s == %Id [0x%Ix])."},
    {160, "Function %s: (%s == %Id [0x%Ix])."},
    {161, "Library function error (%s == %Id [0x%Ix]).\n%s"},
    {162, "Function %s: (%s == %Id [0x%Ix]).\n%s"},
    {163, ""},
    {164, "Illegal argument(s) to library function."},
    {165, "Null pointer argument to library function."},
    {166, "Invalid pointer argument to library function."},
    {167, "Uninitialized pointer argument to library function."},
    {168, "Pointer to free memory passed to library function."},
    {169, "Out-of-bounds pointer argument (before start of array)."},
    {170, "Out-of-bounds pointer argument (past end of array)."},
    {171, "Scalar argument to library function, expected array."},
    {172, "Array argument to library function, expected scalar."},
    {173, "Missing terminating null in string argument."},
    {174, "Array argument too small."},
    {175, "Argument must be character."},
    {176, "Number of points is too large for current waveform buffer."},
    {177, "Non-terminated address list."},
    {178, "VXI address must be a multiple of 2 for word transfer."},
    {179, "VXI address must be a multiple of 4 for longword transfer."},
    {180, "InitVXIlibrary must be called before other VXI functions."},
    {181, "Argument 2 must be 0, 1 or 2."},
    {182, "Argument 3 must be 0, 1 or 2."},
    {183, "Argument 4 must be 0 or 1."},
    {184, "Assertion error: %s."},
    {185, "Type of argument does not match type specified."},
    {186, "Argument must be a power of 2."},
    {187, "Argument must be an open stream."},
    {188, "Argument must be a function pointer to the correct type of callback function."},
    {189, "Array argument too small (%Iu bytes).  Argument must contain at least %Iu bytes (%Iu elements)."},
    {190, "%s"},
    {191, "Out of memory for user protection information."},
    {192, "return value"},
    {193, "Run-time Warning"},
    {194, "Non-Fatal Run-time Error"},
    {195, "Fatal Run-time Error"},
    {196, "File \"%s\", line %d, column %d:\n\n%s"},
    {197, "Unrecoverable Internal Error.\nProgram will be aborted."},
    {198, "A local variable was referenced before being initialized."},
    {199, "Local '%s' was referenced before being initialized."},
    {200, "ZOR has detected an inconsistency of the run-time stack.\nThis might have been caused by a calling convention\nmismatch in the last function call."},
    {201, "Break"},
    {202, "Ignore"},
    {203, "Terminate"},
    {204, "Unable to launch ZOR environment."},
};
// clang-format on

TEST(RunTimeCheckingMessages, EveryTextFrom104To204)
{
    ASSERT_EQ(std::size(kTexts), 101u);
    for (size_t i = 0; i < std::size(kTexts); ++i) {
        EXPECT_EQ(kTexts[i].number, static_cast<int32_t>(104 + i));
        EXPECT_STREQ(libraryMessage(kTexts[i].number), kTexts[i].text) << "message " << kTexts[i].number;
    }
}

TEST(RunTimeCheckingMessages, NeighboursOfTheRangeAreNotItsTexts)
{
    EXPECT_STREQ(libraryMessage(103), "Unknown message number");
    EXPECT_STREQ(libraryMessage(205), "Unknown message number");
}

// The pointer-sized conversions of the texts take 64-bit values.
TEST(RunTimeCheckingMessages, PointerSizedPlaceholdersFormatSixtyFourBits)
{
    char text[256];
    formatMessage(text, sizeof text, 189, size_t{5000000000}, size_t{6000000000}, size_t{1500000000});
    EXPECT_STREQ(text,
                 "Array argument too small (5000000000 bytes).  Argument must contain at least 6000000000 "
                 "bytes (1500000000 elements).");
    formatMessage(text, sizeof text, 159, "status", intptr_t{-3}, intptr_t{-3});
    EXPECT_STREQ(text, "Library function error (status == -3 [0xfffffffffffffffd]).");
    formatMessage(text, sizeof text, 118, intptr_t{-4294967296});
    EXPECT_STREQ(text, "Negative array index (-4294967296).");
}

// The messages that name types write each type as outtype does, and a short
// buffer cuts the text wherever it ends, inside a type name too.
TEST(RunTimeCheckingMessages, TypeDirectivesWriteTheTypes)
{
    ASSERT_NE(intptype, nullptr);
    const std::string whole =
        "Invalid argument type: found 'pointer to int', expected 'array 2 of pointer to char'.";
    char text[256];
    const int length = formatMessage(text, sizeof text, 106, intptype, charptrarray2type);
    EXPECT_EQ(text, whole);
    EXPECT_EQ(length, static_cast<int>(whole.size()));
    formatMessage(text, sizeof text, 149, doubletype);
    EXPECT_STREQ(text, "Not enough space for casting expression to 'pointer to double'.");
    for (size_t size : {size_t{1}, size_t{20}, size_t{33}, size_t{40}}) {
        char cut[64];
        std::memset(cut, 'x', sizeof cut);
        EXPECT_EQ(formatMessage(cut, size, 106, intptype, charptrarray2type), length);
        EXPECT_EQ(std::string(cut), whole.substr(0, size - 1)) << size;
    }
}

}  // namespace
