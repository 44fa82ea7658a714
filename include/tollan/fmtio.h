/* Formatting and I/O library: files, line I/O, byte and string utilities.
 *
 * Files
 * -----
 * ZOR_OpenFile hands out small integer handles from 3 upward; 0, 1 and 2
 * never name a file of this library. Each file has its own lock, held for
 * the whole of one read, write, seek, line or close, so that calls on one
 * file from several threads are serialised while different files proceed
 * in parallel. A handle closed by ZOR_CloseFile is given out again by a
 * later open.
 *
 * I/O errors
 * ----------
 * Every file and line function sets the calling thread's I/O error (each
 * thread has its own), which GetFmtIOError returns:
 *
 *    0  "No error"
 *    1  "File not found"
 *    2  "General I/O failure"
 *    3  "Bad file handle"
 *    4  "Insufficient memory"
 *    5  "File exists"
 *    6  "Access denied"
 *    7  "Invalid argument"
 *    8  "Too many open files"
 *    9  "Disk is full"
 *   10  "File name too long"
 *   11  "String too long for representation"
 *
 * Failures of the operating system are mapped to these codes; one it has no
 * closer match for is 2. Functions that fail return -1 and change nothing
 * else: no file is opened, moved or closed by a call that reports an error
 * for its arguments.
 *
 * Byte and string utilities
 * -------------------------
 * Buffers are given as a base pointer and a separate starting index: the
 * operation starts at base + index. These functions trust their arguments
 * (pointers, sizes) and report no errors except where stated. Case-blind
 * comparisons and case changes use the C library's toupper, tolower,
 * isupper and islower.
 */
#ifndef TOLLAN_FMTIO_H
#define TOLLAN_FMTIO_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* ---- files --------------------------------------------------------------- */

/* Opens the file at path.
 *   action: 0 read and write, 1 read only, 2 write only.
 *   mode (only with write access): 0 cuts the file to length 0 first,
 *     1 appends (every write goes to the end of a file on disk), 2 keeps the
 *     contents and starts at position 0.
 *   type: 0 binary (bytes as they stand), 1 text (CR LF in the file, LF in
 *     the program: see ZOR_ReadFile and ZOR_WriteFile).
 * With write access a missing file is created; a read-only open of a missing
 * file fails with 1.
 * Returns the handle (3 or more), or -1 with the I/O error:
 *   7 path NULL, empty or made only of blanks, tabs, CR and LF; action, mode
 *     or type out of range;
 *  10 path longer than 259 characters;
 *   4 no memory for a new table entry (the file is closed again);
 *   or the operating system's failure (1, 5, 6, 8, ...). */
TOLLAN_API int32_t ZOR_OpenFile(const char *path, int32_t action, int32_t mode, int32_t type) TOLLAN_NOEXCEPT;

/* Reads up to count bytes into buffer. In a text file each CR directly
 * followed by LF is dropped, so fewer bytes than read from the file may be
 * returned. A CR that ends one read is held until the following byte is
 * known: when that byte is LF the pair is returned as LF, otherwise the CR is
 * returned and the byte read ahead stays unread for the next call.
 * Returns the byte count (0 at end of file), or -1 with the I/O error:
 *   3 handle 1 or 2, or no open file of this library;
 *   7 count above 2147483647 or below 0, buffer NULL with count above 0;
 *   or the operating system's failure. Success sets the error to 0. */
TOLLAN_API int32_t ZOR_ReadFile(int32_t handle, void *buffer, int64_t count) TOLLAN_NOEXCEPT;

/* Writes count bytes from buffer. A file opened to append is first moved to
 * its end (files on disk only). In a text file each LF is written as CR LF.
 * Returns the number of bytes taken from buffer (count), or -1 with the
 * I/O error:
 *   3 handle 0, or no open file of this library;
 *   7 count above 2147483647 or below 0, buffer NULL with count above 0;
 *   or the operating system's failure (9 when the disk is full, ...); bytes
 *   written before the failure stay in the file. Success sets the error to 0. */
TOLLAN_API int32_t ZOR_WriteFile(int32_t handle, const void *buffer, int64_t count) TOLLAN_NOEXCEPT;

/* Closes a file. With commit mode on (ZOR_SetCommitMode) and write access the
 * file's data is first committed to the device; if that fails the file stays
 * open and -1 is returned. Returns 0, or -1 with the I/O error:
 *   3 handle below 3 or no open file of this library;
 *   or the operating system's failure (the handle is free all the same when
 *   only the final close failed). */
TOLLAN_API int32_t ZOR_CloseFile(int32_t handle) TOLLAN_NOEXCEPT;

/* Moves the file position by offset from origin (0 start, 1 current position,
 * 2 end). Returns the new position. A handle below 3 returns 0 and sets the
 * error to 0. Otherwise -1 with the I/O error:
 *   3 no open file of this library;  7 origin not 0, 1 or 2, or a position
 *   before the start of the file;  or the operating system's failure. */
TOLLAN_API int64_t SetFilePtr(int32_t handle, int64_t offset, int32_t origin) TOLLAN_NOEXCEPT;

/* Asks the file system about the file at path.
 * Returns 1 when it exists, with its size in *size (0 for a directory);
 * 0 when nothing is there (*size 0); both set the I/O error to 0. size may
 * be NULL. Returns -1 with the I/O error: 7 path NULL or blank; 10 path longer
 * than 259 characters; or the operating system's failure (6 when a directory
 * on the way may not be searched, ...). */
TOLLAN_API int32_t GetFileInfo(const char *path, int64_t *size) TOLLAN_NOEXCEPT;

/* Commit mode for the whole process, off at start: 1 makes ZOR_CloseFile
 * commit written data to the device before closing, 0 turns that off.
 * Returns 0, or -1 for any other value (nothing changes, the I/O error is
 * not touched). */
TOLLAN_API int32_t ZOR_SetCommitMode(int32_t commit) TOLLAN_NOEXCEPT;

/* The calling thread's I/O error: 0 to 11, see the table above. */
TOLLAN_API int32_t GetFmtIOError(void) TOLLAN_NOEXCEPT;

/* The text of an I/O error code ("Unknown error number" for a code outside
 * 0 to 11), copied into a buffer of 512 bytes that belongs to the calling
 * thread and stays valid until its next call or until the thread ends. */
TOLLAN_API char *GetFmtIOErrorString(int32_t errorNumber) TOLLAN_NOEXCEPT;

/* ---- lines --------------------------------------------------------------- */

/* Reads one line from a file of ZOR_OpenFile, byte by byte as stored in the
 * file (a CR before the LF is kept, in text files too). The LF ends the line
 * and is not stored; other bytes are stored while fewer than maximum are
 * (maximum -1: no limit, then buffer must hold the whole line), and counted
 * in any case. buffer must hold maximum + 1 bytes: it is always terminated
 * after the stored bytes.
 * Returns the number of bytes of the line before its LF, including those
 * that did not fit; at end of file the bytes of an unterminated last line,
 * or -2 when none were stored. -1 with the I/O error on failure:
 *   7 maximum below -1 or above 2147483647, or buffer NULL;
 *   3 no open file of this library (also handles 0, 1 and 2);
 *   or the operating system's failure. Success sets the error to 0.
 * Lines are read under the file's lock: a line read by one thread is never
 * cut by a line read or written by another. */
TOLLAN_API int32_t ReadLine(int32_t handle, char *buffer, int64_t maximum) TOLLAN_NOEXCEPT;

/* Writes count bytes of string (-1: its length), then one LF, the two as one
 * step under the file's lock, so that lines of two threads never interleave.
 * A text file turns each LF into CR LF, as ZOR_WriteFile does.
 * Returns the number of bytes of string written, or -1 with the I/O error:
 *   7 count below -1 or above 2147483647, or string NULL;
 *   3 no open file of this library;  or the operating system's failure.
 * Success sets the error to 0. */
TOLLAN_API int32_t WriteLine(int32_t handle, const char *string, int64_t count) TOLLAN_NOEXCEPT;

/* ---- bytes and strings ----------------------------------------------------- */

/* Compares count bytes at buffer1 + index1 with those at buffer2 + index2.
 * caseSensitive 0 lets bytes match that are equal under toupper; the first
 * mismatch then orders by the toupper values. Returns -1, 0 or 1 (0 for a
 * count of 0 or below). */
TOLLAN_API int32_t CompareBytes(const void *buffer1, uint32_t index1, const void *buffer2, uint32_t index2,
                                int64_t count, int32_t caseSensitive) TOLLAN_NOEXCEPT;

/* Compares the string at string1 + index1 with that at string2 + index2.
 * Case-sensitive: as strcmp. Otherwise the walk goes on while the characters
 * match (equal, or equal under toupper) and the first string has not ended;
 * the bytes where it stops are 0 when equal, else ordered by toupper. Returns
 * -1, 0 or 1. */
TOLLAN_API int32_t CompareStrings(const char *string1, uint32_t index1, const char *string2, uint32_t index2,
                                  int32_t caseSensitive) TOLLAN_NOEXCEPT;

/* Copies count bytes from source + sourceIndex to target + targetIndex;
 * overlapping ranges are copied as if through a temporary buffer. A count of
 * 0 or below copies nothing. */
TOLLAN_API void CopyBytes(void *target, uint32_t targetIndex, const void *source, uint32_t sourceIndex,
                          int64_t count) TOLLAN_NOEXCEPT;

/* Copies the string at source + sourceIndex, at most maximum characters
 * (-1, or any negative value: all of it), to target + targetIndex and
 * terminates it there; overlap is handled as by CopyBytes. A maximum of 0
 * writes only the terminating zero. */
TOLLAN_API void CopyString(char *target, uint32_t targetIndex, const char *source, uint32_t sourceIndex,
                           int64_t maximum) TOLLAN_NOEXCEPT;

/* Sets count bytes at buffer + index to the low 8 bits of value; a count of 0
 * or below does nothing. */
TOLLAN_API void FillBytes(void *buffer, uint32_t index, int64_t count, int32_t value) TOLLAN_NOEXCEPT;

/* Looks for pattern (a string) in the numberOfBytes bytes at buffer +
 * startIndex (-1: up to the end of the string there). caseSensitive 0 lets
 * bytes match that are equal under toupper; fromRight non-zero finds the last
 * occurrence instead of the first.
 * Returns startIndex + the match's position, an index into the whole buffer;
 * -1 when there is no match, the pattern is NULL or empty or longer than the
 * range, numberOfBytes is below -1 or above 4294967295, or the index would
 * be above 2147483647. Does not change the I/O error. */
TOLLAN_API int32_t FindPattern(const char *buffer, uint32_t startIndex, int64_t numberOfBytes,
                               const char *pattern, int32_t caseSensitive, int32_t fromRight) TOLLAN_NOEXCEPT;

/* The length of string, or -1 with I/O error 11 when it is 2147483648 or
 * more (7 when string is NULL). Does not touch the error on success. */
TOLLAN_API int32_t StringLength(const char *string) TOLLAN_NOEXCEPT;

/* Turns every upper-case character of string into lower case, in place. */
TOLLAN_API void StringLowerCase(char *string) TOLLAN_NOEXCEPT;

/* Turns every lower-case character of string into upper case, in place. */
TOLLAN_API void StringUpperCase(char *string) TOLLAN_NOEXCEPT;

/* ---- the format language: parser interface for checking tools -------------
 *
 * Fmt and Scan describe their conversions in a format language of their own
 * (docs/format-language.md). Its parser is published here for tools that
 * check calls against their format strings: generate_arg_types says how many
 * arguments of which kinds a format string asks for, and ParseFormatItem
 * walks it one item at a time, as the engines do. */

/* The most arguments one format string may ask for after the format itself. */
#define TOLLAN_FMT_MAX_ARGS 30

/* Item kinds. */
enum { FMT_ITEM_INTEGER = 1, FMT_ITEM_REAL = 2, FMT_ITEM_STRING = 3, FMT_ITEM_LITERAL = 4 };

/* How a number of an item was given (its marker): not given (the default
 * applies), as decimal digits, or a positive k: by '*', taken from the k-th
 * argument (1-based index into the argument-type table). */
enum { FMT_MARKER_DEFAULT = 0, FMT_MARKER_LITERAL = -1, FMT_MARKER_ERROR = -2 };

/* One parsed item. The common part comes first; the part named after the
 * kind follows. Numbers that are "unlimited" hold INT64_MAX. */
typedef struct FormatItem {
    uint8_t kind;             /* FMT_ITEM_... */
    int8_t sizeMarker;        /* markers: FMT_MARKER_... or a '*' index */
    int8_t iMarker;
    int8_t jMarker;
    int8_t widthMarker;
    int8_t repetitionMarker;  /* non-zero: the item is an array */
    uint8_t parameterIndex;   /* 1-based entry of the item's own parameter; 0 none */
    uint32_t jValue;          /* default 0, at most 256 */
    const char *position;     /* where the modifier being parsed starts; a literal's start */
    int64_t size;             /* element size in bytes: integer 4 (c 1; a Fmt source c 4),
                                 real 8, string unlimited; a literal's length */
    uint32_t iValue;          /* default 0 */
    int64_t width;            /* default unlimited */
    uint32_t repetitionCount; /* default 1 */
    int64_t reservedCount;    /* 0 */
    int64_t reservedLimit;    /* unlimited */
    uint8_t xFlag;
    uint8_t zFlag;
    union {
        struct {
            uint32_t radix;       /* 10 d i, 8 o, 16 x, 256 c */
            int8_t radixMarker;
            uint8_t isSigned;     /* 1 d i; 0 o x c */
            uint8_t padCharacter; /* blank */
            uint8_t byteOrder[8]; /* byte number 0..3 per position, 255 unset */
        } integer;
        struct {
            uint32_t precision;   /* 65535: not given */
            int8_t precisionMarker;
            uint8_t rtFlag;
            uint8_t exponential;  /* 0 fixed notation */
            int8_t exponentDigitsMarker;
            uint32_t exponentDigits; /* default 3 */
        } real;
        struct {
            uint8_t qByte;        /* blank; q makes it 0 */
            uint8_t lineFlag;     /* 1 for l, 0 for s, 2 with the c modifier */
            uint8_t aFlag;
            uint8_t terminatorSet;
            uint8_t yFlag;
            uint8_t characterSet[32]; /* bit (c & 7) of byte c >> 3: set = c may
                                         be part of the string */
        } string;
    } as;
} FormatItem;

/* One argument that a format string asks for. */
typedef struct ArgTypeEntry {
    uint16_t kind;        /* FMT_ITEM_INTEGER, _REAL or _STRING */
    uint8_t isArray;      /* the item has a repetition count */
    uint64_t elementSize; /* bytes; 1 for strings; 4 for '*' integers */
    uint8_t fromAsterisk; /* an integer consumed by a '*' */
} ArgTypeEntry;

/* Results of ParseFormatItem. */
enum {
    FMT_PARSED_FIRST_ITEM = 0,    /* the first item, and the separator after it */
    FMT_PARSED_SEPARATOR = 1,     /* the string began with the separator */
    FMT_PARSED_ITEM = 2,
    FMT_PARSE_ERROR = 3,
    FMT_PARSE_END = 4
};

/* The format language's message numbers: the parser's, the engines' and
 * those of argument checking, with their texts in the library's message
 * table. */
typedef enum FmtErrorCode {
    FMT_ERR_ILLEGAL_SEPARATOR = 206,
    FMT_ERR_MISSING_INTEGER = 207,
    FMT_ERR_TOO_MANY_ARGUMENTS = 208,
    FMT_ERR_INTEGER_TOO_BIG = 209,
    FMT_ERR_REPEAT_WITH_STRING = 210,
    FMT_ERR_LINE_IN_FMT = 211,
    FMT_ERR_MISSING_BRACKET = 212,
    FMT_ERR_B_AFTER_O = 213,
    FMT_ERR_INTEGER_SIZE = 214,
    FMT_ERR_DISCARD_IN_FMT = 215,
    FMT_ERR_BYTE_ORDER = 216,
    FMT_ERR_Z_WITHOUT_REP = 217,
    FMT_ERR_UNKNOWN_MODIFIER = 218,
    FMT_ERR_UNEXPECTED_END = 219,
    FMT_ERR_C_WITHOUT_LINE = 220,
    FMT_ERR_WIDTH_WITH_LINE = 221,
    FMT_ERR_REAL_SIZE = 222,
    FMT_ERR_UNKNOWN_SPECIFIER = 223,
    FMT_ERR_PRINTF_H_MODIFIER = 224,
    FMT_ERR_PRINTF_L_MODIFIER = 225,
    FMT_ERR_PRINTF_LONG_DOUBLE_MODIFIER = 226,
    FMT_ERR_SCANF_L_MODIFIER = 227,
    FMT_ERR_PRINTF_I64_MODIFIER = 228,
    FMT_ERR_PRINTF_HASH_FLAG = 229,
    FMT_ERR_PRINTF_ZERO_FLAG = 230,
    FMT_ERR_REFERENCE_EXPECTED = 231,
    FMT_ERR_VALUE_EXPECTED = 232,
    FMT_ERR_UNINITIALIZED_STRING = 233,
    FMT_ERR_INCOMPATIBLE_PARAMETER = 234,
    FMT_ERR_TOO_MANY_PARAMETERS = 235,
    FMT_ERR_NOT_ENOUGH_PARAMETERS = 236,
    FMT_ERR_SIMPLE_ARRAY_CONFLICT = 237,
    FMT_ERR_WRITE_PAST_ARRAY = 238,
    FMT_ERR_WRITE_PAST_STRING = 239,
    FMT_ERR_ASTERISK_NOT_INTEGER = 240,
    FMT_ERR_READ_PAST_ARRAY = 241,
    FMT_ERR_READ_PAST_STRING = 242,
    FMT_ERR_Z_REQUIRED = 243,
    FMT_ERR_WIDTH_TOO_SMALL = 244,
    FMT_ERR_NO_INTEGER = 245,
    FMT_ERR_INTEGER_ABSOLUTE_OVERFLOW = 246,
    FMT_ERR_INTEGER_SIGNED_OVERFLOW = 247,
    FMT_ERR_FLOAT_OVERFLOW = 248,
    FMT_ERR_WIDTH_EXCEEDED = 249,
    FMT_ERR_NEGATIVE_WIDTH = 250,
    FMT_ERR_NO_REAL = 251,
    FMT_ERR_UNINITIALIZED_POINTER = 252,
    FMT_ERR_INVALID_POINTER = 253,
    FMT_ERR_FREED_POINTER = 254,
    FMT_ERR_NULL_POINTER = 255,
    FMT_ERR_ILLEGAL_ASTERISK_VALUE = 256,
    FMT_ERR_AT_CHARACTER = 257,
    FMT_ERR_AT_CHARACTER_WITH_TEXT = 258,
    FMT_ERR_PARAMETER_TYPE_MISMATCH = 259
} FmtErrorCode;

/* Parses the whole format string (length bytes at format) of the Scan family
 * (isScan non-zero) or the Fmt family, and fills table (room for
 * TOLLAN_FMT_MAX_ARGS entries; NULL only counts). A format of NULL is the
 * empty one. After an item with a j value given as digits, that many
 * characters of the format are skipped before the next item.
 * Returns the number of arguments the format asks for after itself, or on a
 * parse error the negated byte offset of the offending character (0 or
 * below), with its message number in *errorCode (0 after a success; errorCode
 * may be NULL). A range that wraps around the address space is reported as
 * an assertion and cut at the highest address. */
TOLLAN_API int32_t generate_arg_types(const char *format, size_t length, ArgTypeEntry *table, int32_t isScan,
                                      int32_t *errorCode) TOLLAN_NOEXCEPT;

/* Parses the item at *cursor (before end), advances *cursor past it, fills
 * *item and appends the item's arguments to table (may be NULL: they are
 * only counted) at index *entryCount, which it raises. The item's own entry
 * comes after the '*' integers it consumes, except for the first item, whose
 * own entry is moved to the front (its '*' indices rise by one to match).
 * isFirst: the cursor is at the start of the string; the call then settles
 * the first half too, and returns
 *   FMT_PARSED_FIRST_ITEM  the first item, and the separator after it;
 *   FMT_PARSED_SEPARATOR   the string began with the separator: *item is the
 *                          implied string parameter (entry 1);
 *   FMT_PARSED_ITEM        no separator follows the first item: the whole
 *                          string lists the second half, entry 1 is an
 *                          implied string parameter and *item is the second
 *                          half's first item (parsed from the start again);
 *   FMT_PARSE_END          an empty string: entry 1 is the implied string
 *                          and *item describes it.
 * Later calls return FMT_PARSED_ITEM or FMT_PARSE_END (nothing left). Any
 * call may return FMT_PARSE_ERROR, with the message number in *errorCode
 * (when not NULL; 0 after a success) and *cursor at the offending character
 * (at end when the string ended too early). A null cursor, entryCount or
 * item, a cursor past end or a count outside 0..TOLLAN_FMT_MAX_ARGS give
 * FMT_PARSE_ERROR with *errorCode 0. The j value is recorded, not skipped:
 * skipping is the caller's. */
TOLLAN_API int32_t ParseFormatItem(const char **cursor, const char *end, ArgTypeEntry *table,
                                   int32_t *entryCount, int32_t isScan, int32_t isFirst, FormatItem *item,
                                   int32_t *errorCode) TOLLAN_NOEXCEPT;

/* The name of a parameter type code, as the checking messages use it
 * ("int", "pointer to void", ...); "" for a code without one. */
TOLLAN_API const char *GetTypeString(int32_t code) TOLLAN_NOEXCEPT;

/* ---- the format language: Fmt and Scan -------------------------------------
 *
 * Fmt formats its sources (the arguments after the format) into a target;
 * Scan reads its targets (pointers after the format) from a source. The
 * format's first item, before '<' (Fmt) or '>' (Scan), describes the target
 * or source; a format without one has a plain string there. The language is
 * described with an example for every modifier in docs/format-language.md;
 * in short:
 *
 *   Fmt(buffer, "%s<%d[w6p0] V=%f[p3]", count, volts)  ->  "000042 V=1.250"
 *   Scan("12.5, 7", "%s>%f[x]%d", &volts, &n)           ->  2, volts 12.5, n 7
 *
 * Arguments: Fmt takes integers and reals by value (int for sizes up to 4,
 * long long for b5 to b8 and b0, double for reals), arrays, z items and
 * strings by address; Scan takes the address of every target. A '*' in an
 * item takes an int argument just before the item's own.
 *
 * Round trip: Scan reads back what Fmt writes with the same item, for every
 * integer size, radix, signedness, width and pad character that is not a
 * digit or sign other than '0', and for reals written without precision (the
 * shortest digits that read back to the same value).
 *
 * Errors: a result below 0 is a negated message number of the format
 * language (FmtErrorCode, 206 to 259; a bad format string also goes to the
 * run-time error report as message 258 in checked runs), or -1 when memory
 * ran short or the file or stream failed (GetFmtIOError says why). No target
 * is written past its width; a target without width must have room for what
 * the call puts there. Each thread has its own counts below. */

/* Formats into target, which the first item describes (a string by
 * default: the bytes and a NUL; an integer, real or array: the formatted
 * bytes read back into it as Scan would).
 * Returns the number of source items formatted, or an error:
 *   -239 the result did not fit the target's width (the part that fits is
 *        written and terminated);  -249 a number wider than its width, or a
 *        width above 511;  -250 a negative width by '*';  -256 a radix other
 *        than 8, 10, 16, 256, or a negative count, offset or precision by '*';
 *   -234 an a flag on a source, or literal text as the first item;
 *   -255 target, format or a source NULL;
 *   -245/-251 a number target that the bytes do not fill;  parse errors
 *   206 to 223 negated. */
TOLLAN_API int32_t Fmt(void *target, const char *format, ...) TOLLAN_NOEXCEPT;

/* As Fmt, to a file of ZOR_OpenFile at its position (the first item, a
 * string, may move it first by its i value, in bytes from the current
 * position; its width limits the bytes written). Returns as Fmt; -1 when the
 * file fails (I/O error), -234 for a first item that is not a string. */
TOLLAN_API int32_t FmtFile(int32_t handle, const char *format, ...) TOLLAN_NOEXCEPT;

/* As FmtFile, to the library's standard output (tollan_stdout). */
TOLLAN_API int32_t FmtOut(const char *format, ...) TOLLAN_NOEXCEPT;

/* Scans source, which the first item describes (a string by default, read
 * up to its NUL; an integer, real or array is formatted first and its bytes
 * read), into the targets.
 * Returns the number of targets filled: the Scan stops without error where
 * the source ends before a target or a literal does not match. Errors:
 *   -244 a width that holds no digits;  -245 no integer where one must be;
 *   -246/-247 an integer too big for its size (unsigned/signed);  -248 a
 *   real too big for its type;  -251 no real where one must be;  -249, -250,
 *   -256, -234, -255 and parse errors as for Fmt. Targets filled before an
 *   error keep their values (NumScanItems counts them). */
TOLLAN_API int32_t Scan(const void *source, const char *format, ...) TOLLAN_NOEXCEPT;

/* As Scan, from a file of ZOR_OpenFile at its position, moved first by the
 * first item's i value. A first item %l reads one line (its LF is read and
 * dropped); %s reads the rest of the file, or as many bytes as its width.
 * The file position stays after what was read. -1 when the file fails,
 * -234 for a first item that is not a string. */
TOLLAN_API int32_t ScanFile(int32_t handle, const char *format, ...) TOLLAN_NOEXCEPT;

/* As Scan, from one line of the library's standard input (tollan_stdin; the
 * LF is read and dropped). */
TOLLAN_API int32_t ScanIn(const char *format, ...) TOLLAN_NOEXCEPT;

/* The number of bytes the calling thread's last Fmt, FmtFile or FmtOut wrote
 * to its target, the terminating NUL not counted (0 after an error before
 * the target was written). */
TOLLAN_API int32_t NumFmtdBytes(void) TOLLAN_NOEXCEPT;

/* The number of targets the calling thread's last Scan, ScanFile or ScanIn
 * filled, also when it failed on a later one. */
TOLLAN_API int32_t NumScanItems(void) TOLLAN_NOEXCEPT;

/* Where the calling thread's last Scan, ScanFile or ScanIn stopped: the
 * number of bytes of its source it had read, counted from where the source
 * begins (after the first item's i offset). */
TOLLAN_API int32_t NumScanBytes(void) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
