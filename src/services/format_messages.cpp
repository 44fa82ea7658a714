#include "services/format_messages.h"

#include <iterator>

namespace tollan::services {
namespace {

constexpr const char *kFormatLanguageTexts[] = {
    "Illegal separator character or illegal position of separator character.",                          // 206
    "Missing format string integer.",                                                                   // 207
    "Number of arguments exceed the maximum supported.",                                                // 208
    "Format string integer is too big.",                                                                // 209
    "Repeat value not valid with s/l format specifiers.",                                               // 210
    "l format specifier not valid in Fmt/FmtOut/FmtFile.",                                              // 211
    "Missing right bracket (]).",                                                                       // 212
    "b modifier must precede o modifier.",                                                              // 213
    "Invalid size for an integer.",                                                                     // 214
    "d modifier not valid in Fmt/FmtOut/FmtFile.",                                                      // 215
    "Byte ordering is invalid.",                                                                        // 216
    "z modifier only valid if rep is present.",                                                         // 217
    "Unknown modifier.",                                                                                // 218
    "Unexpected end of format string.",                                                                 // 219
    "c modifier valid only with l format specifier.",                                                   // 220
    "w modifier not valid with l format specifier.",                                                    // 221
    "Invalid size for a real.",                                                                         // 222
    "Unknown specifier.",                                                                               // 223
    "h modifier is only valid with d, i, n, o, u, and x specifiers.",                                   // 224
    "l modifier is only valid with e, f, g, d, i, n, o, u, and x specifiers.",                          // 225
    "L modifier is only valid with e, f, and g specifiers.",                                            // 226
    "l modifier is only valid with d, i, n, o, u, and x specifiers.",                                   // 227
    "I64 modifier is only valid with d, i, n, o, u, and x specifiers.",                                 // 228
    "# flag is valid only with o, x, e, f, and g specifiers.",                                          // 229
    "0 flag is not valid with c, s, p, and n modifiers.",                                               // 230
    "Reference parameter expected.",                                                                    // 231
    "Value parameter expected.",                                                                        // 232
    "Uninitialized string.",                                                                            // 233
    "Parameter type incompatible with format specifier.",                                               // 234
    "Too many parameters.",                                                                             // 235
    "Not enough parameters or invalid parameter type.",                                                 // 236
    "Simple/Array conflict with format specifier.",                                                     // 237
    "Attempt to write beyond end of array.",                                                            // 238
    "Attempt to write beyond end of string.",                                                           // 239
    "Parameter matched to '*' must be an integer.",                                                     // 240
    "Attempt to read beyond end of array.",                                                             // 241
    "Attempt to read beyond end of string.",                                                            // 242
    "'z' modifier required to match string parameter.",                                                 // 243
    "Specified width is too small to read the number.",                                                 // 244
    "Valid integer not found.",                                                                         // 245
    "Overflow occurred during the conversion of the int. The absolute value is too big for the size.",  // 246
    "Overflow occurred during the conversion of the int. The signed value is too big for the size.",    // 247
    "Overflow occurred during the conversion of the float. The number is too big for type float.",      // 248
    "Maximum field width has been exceeded.",                                                           // 249
    "Negative field width specified.",                                                                  // 250
    "Valid floating point number not found.",                                                           // 251
    "Uninitialized pointer.",                                                                           // 252
    "Pointer is invalid.",                                                                              // 253
    "Pointer points to freed memory.",                                                                  // 254
    "Null pointer.",                                                                                    // 255
    "Illegal value matched to asterisk.",                                                               // 256
    "Error at or near character %d in the format string.",                                              // 257
    "Error at or near character %d in the format string: %s",                                           // 258
    "Parameter type mismatch; expecting %s %s but found %s %s.",                                        // 259
};
static_assert(std::size(kFormatLanguageTexts) == 259 - 206 + 1);

}  // namespace

constinit const MessageRange kFormatLanguageMessages{206, kFormatLanguageTexts};

}  // namespace tollan::services
