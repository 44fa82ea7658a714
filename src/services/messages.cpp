#include "services/messages.h"

#include "services/format_messages.h"

#include <iterator>

namespace tollan::services {

namespace {

constexpr const char *kGeneralTexts[] = {
    "No error has occurred",  // 0
};

constexpr const char *kRegistryTexts[] = {
    "The registry key could not be opened, or the value is missing or of the wrong type",  // 77
    "No registry key handle after opening the key",                                        // 78
};

// Run-time checking's texts: the reports of pointer and argument checks, the
// library-status reports, and the titles and buttons of the run-time error
// report. Number 163 has no text; the empty row keeps the numbers in step.
constexpr const char *kRunTimeCheckingTexts[] = {
    "In conditional breakpoint expression",                                                             // 104
    "Missing return value.",                                                                            // 105
    "Invalid argument type: found '%t', expected '%t'.",                                                // 106
    "Missing argument to variable argument function.",                                                  // 107
    "Too many arguments to variable argument function.",                                                // 108
    "Pointer arithmetic involving invalid pointer.",                                                    // 109
    "Pointer arithmetic involving null pointer.",                                                       // 110
    "Pointer arithmetic involving uninitialized pointer.",                                              // 111
    "Pointer arithmetic involving address of nonarray object.",                                         // 112
    "Pointer arithmetic involving pointer to freed memory.",                                            // 113
    "Out-of-bounds pointer arithmetic: %Iu bytes (%Iu elements) past end of array.",                    // 114
    "Out-of-bounds pointer arithmetic: %Iu bytes (%Iu elements) before start of array.",                // 115
    "Pointer arithmetic involving pointer to a function.",                                              // 116
    "Array index (%Iu) too large (maximum: %Iu).",                                                      // 117
    "Negative array index (%Id).",                                                                      // 118
    "Assignment of invalid pointer value.",                                                             // 119
    "Assignment of uninitialized pointer value.",                                                       // 120
    "Assignment of out-of-bounds pointer: %Iu bytes past end of array.",                                // 121
    "Assignment of out-of-bounds pointer: %Iu bytes before start of array.",                            // 122
    "Assignment of pointer to freed memory.",                                                           // 123
    "Dereference of invalid pointer expression.",                                                       // 124
    "Dereference of null pointer.",                                                                     // 125
    "Dereference of uninitialized pointer.",                                                            // 126
    "(Dereference of ignored pointer [%p].)",                                                           // 127
    "Dereference of pointer to freed memory.",                                                          // 128
    "Dereference of out-of-bounds pointer: %Iu bytes (%Iu elements) past end of array.",                // 129
    "Dereference of out-of-bounds pointer: %Iu bytes (%Iu elements) before start of array.",            // 130
    "Dereference of unaligned pointer.",                                                                // 131
    "Dereference of function pointer used as data.",                                                    // 132
    "Dereference of data pointer used as a function.",                                                  // 133
    "Dereference of a %Iu byte object where only %Iu bytes exist.",                                     // 134
    "Parameter type does not match argument type.",                                                     // 135
    "No room in structure for member '%s'.",                                                            // 136
    "Comparison involving uninitialized pointer.",                                                      // 137
    "Comparison involving invalid pointer.",                                                            // 138
    "Comparison involving null pointer.",                                                               // 139
    "Pointer comparison involving address of nonarray object.",                                         // 140
    "Comparison of pointers to different objects.",                                                     // 141
    "Comparison of pointers to freed memory.",                                                          // 142
    "Subtraction involving uninitialized pointer.",                                                     // 143
    "Subtraction involving invalid pointer.",                                                           // 144
    "Subtraction involving null pointer.",                                                              // 145
    "Pointer subtraction involving address of nonarray object.",                                        // 146
    "Subtraction of pointers to different objects.",                                                    // 147
    "Subtraction of pointers to freed memory.",                                                         // 148
    "Not enough space for casting expression to 'pointer to %t'.",                                      // 149
    "Attempt to free invalid pointer expression.",                                                      // 150
    "Attempt to free uninitialized pointer.",                                                           // 151
    "Attempt to free pointer to freed memory.",                                                         // 152
    "Attempt to free pointer to memory not allocated by malloc() or calloc().",                         // 153
    "Attempt to realloc invalid pointer expression.",                                                   // 154
    "Attempt to realloc uninitialized pointer.",                                                        // 155
    "Attempt to realloc pointer to freed memory.",                                                      // 156
    "Attempt to realloc pointer to memory not allocated by malloc() or calloc().",                      // 157
    "Dynamic memory is corrupt.",                                                                       // 158
    "Library function error (%s == %Id [0x%Ix]).",                                                      // 159
    "Function %s: (%s == %Id [0x%Ix]).",                                                                // 160
    "Library function error (%s == %Id [0x%Ix]).\n%s",                                                  // 161
    "Function %s: (%s == %Id [0x%Ix]).\n%s",                                                            // 162
    "",                                                                                                 // 163
    "Illegal argument(s) to library function.",                                                         // 164
    "Null pointer argument to library function.",                                                       // 165
    "Invalid pointer argument to library function.",                                                    // 166
    "Uninitialized pointer argument to library function.",                                              // 167
    "Pointer to free memory passed to library function.",                                               // 168
    "Out-of-bounds pointer argument (before start of array).",                                          // 169
    "Out-of-bounds pointer argument (past end of array).",                                              // 170
    "Scalar argument to library function, expected array.",                                             // 171
    "Array argument to library function, expected scalar.",                                             // 172
    "Missing terminating null in string argument.",                                                     // 173
    "Array argument too small.",                                                                        // 174
    "Argument must be character.",                                                                      // 175
    "Number of points is too large for current waveform buffer.",                                       // 176
    "Non-terminated address list.",                                                                     // 177
    "VXI address must be a multiple of 2 for word transfer.",                                           // 178
    "VXI address must be a multiple of 4 for longword transfer.",                                       // 179
    "InitVXIlibrary must be called before other VXI functions.",                                        // 180
    "Argument 2 must be 0, 1 or 2.",                                                                    // 181
    "Argument 3 must be 0, 1 or 2.",                                                                    // 182
    "Argument 4 must be 0 or 1.",                                                                       // 183
    "Assertion error: %s.",                                                                             // 184
    "Type of argument does not match type specified.",                                                  // 185
    "Argument must be a power of 2.",                                                                   // 186
    "Argument must be an open stream.",                                                                 // 187
    "Argument must be a function pointer to the correct type of callback function.",                    // 188
    "Array argument too small (%Iu bytes).  Argument must contain at least %Iu bytes (%Iu elements).",  // 189
    "%s",                                                                                               // 190
    "Out of memory for user protection information.",                                                   // 191
    "return value",                                                                                     // 192
    "Run-time Warning",                                                                                 // 193
    "Non-Fatal Run-time Error",                                                                         // 194
    "Fatal Run-time Error",                                                                             // 195
    "File \"%s\", line %d, column %d:\n\n%s",                                                           // 196
    "Unrecoverable Internal Error.\nProgram will be aborted.",                                          // 197
    "A local variable was referenced before being initialized.",                                        // 198
    "Local '%s' was referenced before being initialized.",                                              // 199
    // One literal per text, so that a missing comma between two would show.
    // clang-format off
    "ZOR has detected an inconsistency of the run-time stack.\nThis might have been caused by a calling convention\nmismatch in the last function call.",  // 200
    // clang-format on
    "Break",                              // 201
    "Ignore",                             // 202
    "Terminate",                          // 203
    "Unable to launch ZOR environment.",  // 204
};
static_assert(std::size(kRunTimeCheckingTexts) == 204 - 104 + 1);

constexpr MessageRange kGeneralMessages{0, kGeneralTexts};
constexpr MessageRange kRegistryMessages{77, kRegistryTexts};
constexpr MessageRange kRunTimeCheckingMessages{104, kRunTimeCheckingTexts};

// A subsystem adds its range here: its texts in a file of its own, exposed
// as an `extern const MessageRange`, and one row below.
constexpr const MessageRange *kRanges[] = {
    &kGeneralMessages,
    &kRegistryMessages,
    &kRunTimeCheckingMessages,
    &kFormatLanguageMessages,
};

}  // namespace

const char *libraryMessage(int32_t number) noexcept
{
    for (const MessageRange *range : kRanges) {
        int64_t index = static_cast<int64_t>(number) - range->first;
        if (index >= 0 && index < static_cast<int64_t>(range->texts.size()))
            return range->texts[static_cast<size_t>(index)];
    }
    return "Unknown message number";
}

std::span<const MessageRange *const> messageRanges() noexcept
{
    return kRanges;
}

}  // namespace tollan::services
