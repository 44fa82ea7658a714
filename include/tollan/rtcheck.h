/*
 * Run-time checking: what compiled debug code and the checked twins of the
 * library functions call to check pointers and arguments, where their errors
 * are reported, and the type nodes that describe what they check: the
 * interface for code generators and for tools that instrument C code.
 *
 * Thread safety: break settings belong to the calling thread. Reports may
 * come from any thread at once; each uses its own thread's settings and
 * source position, and lines written to the error file never interleave.
 */
#ifndef TOLLAN_RTCHECK_H
#define TOLLAN_RTCHECK_H

#include <stddef.h>
#include <stdlib.h>
#include <time.h>

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* ---- Run-time error reporting --------------------------------------- */

/*
 * Severities of a report: nothing is reported at 0; a fatal report ends the
 * program unless the developer chooses otherwise in the interactive report.
 */
#define ZOR_RTE_NONE 0
#define ZOR_RTE_WARNING 1
#define ZOR_RTE_NON_FATAL 2
#define ZOR_RTE_FATAL 3

/*
 * Reports a run-time checking error: message msgnum of the library message
 * table (104 to 204), its placeholders filled from the further arguments
 * (printf rules with "%Iu", "%Id" and "%Ix" for pointer-sized integers; in
 * the messages that name types, "%t" takes a const Tynode * and writes it as
 * outtype does). Nothing happens below
 * debugging level 2 or while the thread's break on protection errors is off.
 * line and col become the thread's error position. A number outside the
 * table reports "Unknown message number". A severity of 0 or below reports
 * nothing; one above 3 is written to an error file as NON-FATAL (the process
 * goes on) and shown as fatal by the interactive report.
 */
TOLLAN_API void ReportUPError(int32_t severity, int32_t msgnum, int32_t line, int32_t col,
                              ...) TOLLAN_NOEXCEPT;

/*
 * Reports a library argument error: code >= 0 reports message 164 + code as
 * fatal, code < 0 message 164 - code as non-fatal. argpos, the position of
 * the failing argument, is not shown. Under the same conditions as
 * ReportUPError.
 */
TOLLAN_API void _UPLibReportError(int32_t code, int32_t argpos, ...) TOLLAN_NOEXCEPT;

/*
 * Reports an error status that a library function returns, as a non-fatal
 * error, when the debugging level is 2 or more, the thread's break on library
 * errors is on and no breakpoint condition is being evaluated. name: what
 * holds the status (NULL: "return value"); value: the status; retaddr: an
 * address inside the function, whose name the debugger is asked for; elab:
 * a text shown below the report (NULL: none).
 */
TOLLAN_API void _UPLibBreakpoint(const char *name, intptr_t value, void *retaddr) TOLLAN_NOEXCEPT;
TOLLAN_API void _UPLibBreakpointWithElab(const char *name, intptr_t value, const char *elab,
                                         void *retaddr) TOLLAN_NOEXCEPT;

/*
 * The calling thread's break settings. on is reduced to 0 or 1; the setters
 * return the previous setting. Below debugging level 2 the library-error and
 * protection-error setters change nothing and return 0, and the getters
 * return 0. SetBreakOnLibraryErrors also records, at every level, that the
 * user switched library-error breaks off (on == 0) or on. Break on protection
 * errors also switches the reporting of pointer-check errors on and off.
 * A thread starts with break on library and protection errors on when the
 * debugging level is 2 or more, and with every setting off below that.
 */
TOLLAN_API int32_t SetBreakOnLibraryErrors(int32_t on) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t GetBreakOnLibraryErrors(void) TOLLAN_NOEXCEPT;
TOLLAN_API void EnableBreakOnLibraryErrors(void) TOLLAN_NOEXCEPT;
TOLLAN_API void DisableBreakOnLibraryErrors(void) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t SetBreakOnProtectionErrors(int32_t on) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t GetBreakOnProtectionErrors(void) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t SetBreakOnFirstChanceExceptions(int32_t on) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t GetBreakOnFirstChanceExceptions(void) TOLLAN_NOEXCEPT;

/*
 * Sends every later report to stream (a stream of tollan/ansi_c.h), one line
 * each, instead of the interactive report, for threads that have a source
 * position. NULL goes back to the interactive report. A fatal report written
 * there flushes the stream and ends the process with status -1.
 */
TOLLAN_API void __SetUPErrorFile(void *stream) TOLLAN_NOEXCEPT;

/*
 * Stops the calling thread in the debugger, when one is present, until it
 * resumes it; without a debugger nothing happens.
 */
TOLLAN_API void Breakpoint(void) TOLLAN_NOEXCEPT;

/* ---- Pointer and block information ---------------------------------- */

/*
 * Checked code keeps a PtrInfo beside every pointer it stores and a BlkInfo
 * beside every object. Where an entry point takes a PtrInfo address, a small
 * integer n from 1 to ZOR_PREDEFINED_PTRINFO_COUNT may stand for entry n - 1
 * of the library's predefined table.
 */
typedef struct PtrInfo {
    uint64_t info;  /* the shadow address of the pointed-at byte, or a predefined entry */
    uint64_t blk;   /* the BlkInfo of the block the pointer was derived from, or 0 */
    uint64_t value; /* the pointer value this information describes */
} PtrInfo;

typedef struct BlkInfo {
    uint64_t base; /* first address of the block */
    uint64_t size; /* bytes; ZOR_BLK_UNCHECKED set: bounds not enforced; 0: freed */
} BlkInfo;

#define ZOR_BLK_UNCHECKED (UINT64_C(1) << 63)
#define ZOR_PREDEFINED_PTRINFO_COUNT 73

/*
 * The pointer checks. Compiled code calls them around every pointer
 * operation. `type` arguments are type nodes (declared below); `line` and
 * `col` are the source position that a report names. Every check reports
 * through ReportUPError, so nothing is reported below debugging level 2 or
 * with the thread's break on protection errors off, and returns information
 * the program can go on with: after a report mostly entry 46 (invalid), so
 * that one fault is reported once and later uses report "invalid".
 *
 * The predefined entries (n - 1 for the small integer n): 0-42 and 55-72 a
 * byte offset into a scalar object without a block of its own; 43 a
 * function; 44 a pointer into an unchecked block whose bounds are checked
 * anyway; 45 uninitialised; 46 invalid; 47 null; 48 unchecked (also: no
 * information at all); 49 and 50 stored as 48 by an assignment; 51 the
 * result of a call whose callee handed nothing back (received as 48); 52 the
 * result of a checked function that ended without a return value (received
 * with a warning, as 45); 53 and 54 reserved, checked like 48.
 *
 * Bad input: a PtrInfo that is null or from 74 to 4095 stands for entry 48
 * and is never read or written; a BlkInfo that is null, a table entry or
 * below 4096 is no block. Sizes with bit 63 set count as unknown; a type of
 * size 0 steps by single bytes. Writing to a table entry is refused (with
 * an assertion from _InitPtrInfo).
 *
 * `env` is the calling thread's checking environment: the bytes
 * checkingEnvironment of its ZORThreadEnv (tollan/debugger.h). NULL stands
 * for the calling thread's own.
 */
struct Tynode;
struct TyField;

/* Sets up the shadow at info of a new object of `type`: every pointer
 * uninitialised (45); each struct and array header becomes the block
 * information of that part of the object, within blk (NULL: unchecked). */
TOLLAN_API void _InitPtrInfo(void *env, const struct Tynode *type, PtrInfo *info,
                             const BlkInfo *blk) TOLLAN_NOEXCEPT;
/* Fills blk for an object of `type` at addr; a type without a known size
 * makes the block unchecked. */
TOLLAN_API void _InitBlkInfo(void *env, const struct Tynode *type, const void *addr,
                             BlkInfo *blk) TOLLAN_NOEXCEPT;

/* A dereference of value as an object of `type` (fatal reports 124-134).
 * Returns info, or entry 46 after a report. */
TOLLAN_API PtrInfo *_PtrChkDeref(const struct Tynode *type, const void *value, PtrInfo *info,
                                 const BlkInfo *blk, int32_t line, int32_t col) TOLLAN_NOEXCEPT;
/* value + delta bytes, `type` being the pointer type, or the array type when
 * a declared array is indexed (non-fatal reports 109-118, 134). Returns the
 * result's information: the shadow moved by delta's elements. */
TOLLAN_API PtrInfo *_PtrChkArith(const struct Tynode *type, const void *value, int64_t delta, PtrInfo *info,
                                 const BlkInfo *blk, int32_t line, int32_t col) TOLLAN_NOEXCEPT;
/* Two pointers ordered by <, <=, > or >= (reports 137-142), or subtracted
 * (143-148; two pointers into one unchecked block are reported as pointers
 * to different objects, 147). */
TOLLAN_API void _PtrChkCompare(PtrInfo *info1, const BlkInfo *blk1, PtrInfo *info2, const BlkInfo *blk2,
                               int32_t line, int32_t col) TOLLAN_NOEXCEPT;
TOLLAN_API void _PtrChkSubtract(PtrInfo *info1, const BlkInfo *blk1, PtrInfo *info2, const BlkInfo *blk2,
                                int32_t line, int32_t col) TOLLAN_NOEXCEPT;

/* Stores {info, blk, value} at dest (unless dest is a table entry), then
 * checks the pointer stored (warnings 119-123; one past the end may be
 * stored). Entries 49 and 50 are stored as 48. Returns the information
 * stored. */
TOLLAN_API PtrInfo *_PtrChkAssign(const void *value, PtrInfo *dest, PtrInfo *info, const BlkInfo *blk,
                                  int32_t line, int32_t col) TOLLAN_NOEXCEPT;
/* Copies a pointer's record from src to dest without a check (a table entry
 * as src stores that entry without block or value). */
TOLLAN_API void _PtrAssignPtr(PtrInfo *dest, const PtrInfo *src) TOLLAN_NOEXCEPT;
/* Struct assignment: the pointer records of the shadow at src go to dest
 * (entries 49 and 50 as 48); the headers, which describe dest's own
 * storage, stay. A table entry as src stands for every pointer. */
TOLLAN_API void _PtrAssignStruct(void *env, const struct Tynode *type, PtrInfo *dest,
                                 const PtrInfo *src) TOLLAN_NOEXCEPT;
/* The same when only the first `bytes` bytes of the struct are assigned: the
 * pointers past them keep their records, one cut by the end becomes 46. */
TOLLAN_API void _StructIncompleteAssign(void *env, const struct Tynode *type, PtrInfo *dest,
                                        const PtrInfo *src, uint64_t bytes) TOLLAN_NOEXCEPT;

/* The information after a cast of value to the pointer type `type`: a
 * pointer in bounds whose block or scalar has no room left for one object of
 * the new type is reported (149, "pointer to" the new pointee) and gets 46.
 * _PtrCastStructBlk needs room for a struct's fixed part only (not its
 * flexible array member). _PtrCast and _PtrCastStructBlk give 48 for a
 * scalar entry cast to objects that hold pointers (there are no records of
 * them); _PtrCastToScalar, for pointers to scalars, keeps it. */
TOLLAN_API PtrInfo *_PtrCast(const struct Tynode *type, const void *value, PtrInfo *info, const BlkInfo *blk,
                             int32_t line, int32_t col) TOLLAN_NOEXCEPT;
TOLLAN_API PtrInfo *_PtrCastStructBlk(const struct Tynode *type, const void *value, PtrInfo *info,
                                      const BlkInfo *blk, int32_t line, int32_t col) TOLLAN_NOEXCEPT;
TOLLAN_API PtrInfo *_PtrCastToScalar(const struct Tynode *type, const void *value, PtrInfo *info,
                                     const BlkInfo *blk, int32_t line, int32_t col) TOLLAN_NOEXCEPT;

/* A stored pointer read as a value: the information word and the block of
 * its record at loc. When the record describes another value (code without
 * checks changed the pointer) the result is 48 and no block; an
 * uninitialised record holds for any value. */
TOLLAN_API PtrInfo *_PtrRValue(const PtrInfo *loc, const void *value) TOLLAN_NOEXCEPT;
TOLLAN_API BlkInfo *_PtrBlkRValue(const PtrInfo *loc, const void *value) TOLLAN_NOEXCEPT;

/*
 * Calls. The caller: _PtrPreCall(env, callee) (the function called; its
 * result is entry 51 until the callee hands one back), then for each
 * argument _PassParamInfo and _PassArgCoord with index 0 for the first;
 * after the call _PtrPostCall, then _ReceivePtrInfo or _PtrGetRetValLoc for
 * a pointer result. The callee: _GetParamInfo and _ReceiveBlkInfo for each
 * pointer parameter with its own address as self, which is matched against
 * the recorded callee after jump stubs (0xE9, 0xFF 0x25) on both sides; at a
 * return _ReturnPtrInfo, or _PtrSetRetValLoc with the record of the
 * returned variable; at the end of a function that returns no value
 * _ReturnPtrInfo with 53 (entry 52). Indexes outside 0-47 are ignored.
 */
TOLLAN_API void _PtrPreCall(void *env, const void *callee) TOLLAN_NOEXCEPT;
/* The call is over: its slots are forgotten and the callee becomes the
 * previous callee. The result's information stays until the next call. */
TOLLAN_API void _PtrPostCall(void *env) TOLLAN_NOEXCEPT;
/* Argument index: its information (a table entry, or for a struct its
 * shadow), its block (kept for pointer types only) and type. Slots skipped
 * since the last one are cleared. */
TOLLAN_API void _PassParamInfo(void *env, int32_t index, const struct Tynode *type, PtrInfo *info,
                               const BlkInfo *blk) TOLLAN_NOEXCEPT;
TOLLAN_API void _PassArgCoord(void *env, int32_t index, int32_t line, int32_t col) TOLLAN_NOEXCEPT;
/* Parameter index of the function at self, of `type`: the caller's
 * information when the recorded call goes to self and the slot is filled,
 * else entry 48. An argument whose type is not compatible with `type` is
 * reported (135, at the argument's coordinate when the caller gave one)
 * and gives 48. _ReceiveBlkInfo gives the argument's block, or NULL. */
TOLLAN_API PtrInfo *_GetParamInfo(void *env, int32_t index, const void *self, const struct Tynode *type,
                                  int32_t line, int32_t col) TOLLAN_NOEXCEPT;
TOLLAN_API BlkInfo *_ReceiveBlkInfo(void *env, int32_t index, const void *self,
                                    const struct Tynode *type) TOLLAN_NOEXCEPT;
/* The callee hands back {info, blk, value}, or the record at loc, as its
 * result's information. */
TOLLAN_API void _ReturnPtrInfo(void *env, PtrInfo *info, const BlkInfo *blk,
                               const void *value) TOLLAN_NOEXCEPT;
TOLLAN_API void _PtrSetRetValLoc(void *env, const PtrInfo *loc) TOLLAN_NOEXCEPT;
/* The caller's side, for the result value: the result's record (in the
 * hand-over area; _ReceivePtrInfo also copies it to dest) and its
 * information word. A result of a callee that handed nothing back, or whose
 * record describes another value, is 48; a missing return value is
 * reported (warning 105) and is 45. */
TOLLAN_API PtrInfo *_PtrGetRetValLoc(void *env, const void *value, int32_t line, int32_t col) TOLLAN_NOEXCEPT;
TOLLAN_API PtrInfo *_ReceivePtrInfo(void *env, PtrInfo *dest, const void *value, int32_t line,
                                    int32_t col) TOLLAN_NOEXCEPT;

/* Every pointer of the shadow at info becomes unchecked (48) or invalid
 * (46), without a block; the values they describe stay. */
TOLLAN_API void _PtrIgnoreStruct(void *env, const struct Tynode *type, PtrInfo *info) TOLLAN_NOEXCEPT;
TOLLAN_API void _PtrInvalidStruct(void *env, const struct Tynode *type, PtrInfo *info) TOLLAN_NOEXCEPT;
/* The one block that stands for freed static storage: pointers into it pass
 * the bounds and freed-memory checks. NULL (or no block) forgets it. */
TOLLAN_API void _PtrSetStaticFreeBlkInfo(const BlkInfo *blk) TOLLAN_NOEXCEPT;
/* Copies the pointer records of an object's shadow (a table entry as src
 * stands for every pointer); compares two shadows record by record, word by
 * word, stopping at the first difference: 1 the same, 0 not (a table entry
 * equals only itself). */
TOLLAN_API void _CopyPtrInfo(void *env, const struct Tynode *type, PtrInfo *dest,
                             const PtrInfo *src) TOLLAN_NOEXCEPT;
TOLLAN_API int _ComparePtrInfo(void *env, const struct Tynode *type, const PtrInfo *a,
                               const PtrInfo *b) TOLLAN_NOEXCEPT;
/* Member `member` of the struct `type` whose shadow is at info: the
 * member's information (a table entry stands for every member; a scalar
 * entry gives 48; a member not of the struct 46); and the block information
 * of a struct or array member (its header; NULL for other members and table
 * entries). When value points into a checked block that ends before the
 * member does, reports 136 and gives NULL. */
TOLLAN_API PtrInfo *_PtrStructMemInfoPtr(const struct Tynode *type, PtrInfo *info,
                                         const struct TyField *member) TOLLAN_NOEXCEPT;
TOLLAN_API BlkInfo *_PtrStructMemSizePtr(const struct Tynode *type, const void *value, PtrInfo *info,
                                         const BlkInfo *blk, const struct TyField *member, int32_t line,
                                         int32_t col) TOLLAN_NOEXCEPT;
/* The scalar entry for a pointer `offset` bytes into an object of the basic
 * type `type` (char, short, int, long, long long, enums, float, double, and
 * the unsigned types; offset 0 to its size); 48 for anything else. */
TOLLAN_API PtrInfo *_UPLookupBasicPtrInfo(const struct Tynode *type, uint64_t offset) TOLLAN_NOEXCEPT;
/* Locals read before being set: marks (one byte per local, index below the
 * count given to Init; NULL: nothing) are cleared, set on assignment and
 * checked on a read (198, or 199 with the name when name is not NULL;
 * reported once per local). */
TOLLAN_API void _LocalsRuntimeInit(unsigned char *marks, uint32_t count) TOLLAN_NOEXCEPT;
TOLLAN_API void _LocalsRuntimeSet(unsigned char *marks, uint32_t index) TOLLAN_NOEXCEPT;
TOLLAN_API void _LocalsRuntimeCheck(unsigned char *marks, uint32_t index, const char *name, int32_t line,
                                    int32_t col) TOLLAN_NOEXCEPT;

/* ---- Library argument checks ---------------------------------------- */

/*
 * The checks that the checked twins of the library functions are built
 * from, exported for code generators that build checked calls of their own.
 * Each finds the pointer information of argument argpos (counted from 1) in
 * the parameter slots the caller filled, but only when the function the
 * caller's call went to (after jump stubs) is `frame`, the entry of the
 * function that checks; an argument without information passes every
 * check. Argument errors are reported fatal with messages 165 to 173 and
 * 189, under the conditions of _UPLibReportError, and nothing more is
 * looked at when they would not be reported.
 */

/* str must be a string terminated inside its block; NULL passes when nullok
 * is not 0. Returns 1. */
TOLLAN_API int32_t _UPLibChkString(const char *str, int32_t nullok, int32_t argpos,
                                   const void *frame) TOLLAN_NOEXCEPT;
/* ptr must have room for count elements of eltsize bytes from ptr on
 * ("Array argument too small" otherwise). eltsize 0 passes; count 0 only
 * asks for a valid pointer, into a scalar or a block. A product that
 * overflows counts as 4,294,967,295 bytes. NULL passes when nullok is not 0.
 * Returns 1. */
TOLLAN_API int32_t _UPLibChkSize(const void *ptr, uint64_t eltsize, uint64_t count, int32_t nullok,
                                 int32_t argpos, const void *frame) TOLLAN_NOEXCEPT;
/* A by-reference argument: ptr must have room for one object of `type`
 * (a type of size 0, or NULL, only asks for a valid pointer). Returns 1. */
TOLLAN_API int32_t _UPLibChkRefArg(const void *ptr, const struct Tynode *type, int32_t nullok, int32_t argpos,
                                   const void *frame) TOLLAN_NOEXCEPT;
/* The bytes reachable from ptr: 0x7FFFFFFFFFFFFFFF when the argument carries
 * no information (or its bounds are not enforced), the bytes to the end of
 * a scalar or a block, 0 for a pointer that reaches nothing. */
TOLLAN_API uint64_t _UPLibGetNumBytes(const void *ptr, int32_t argpos, const void *frame) TOLLAN_NOEXCEPT;
/* The same in elements of the argument's pointer type (bytes when the type
 * or its element size is unknown). */
TOLLAN_API uint64_t _UPLibGetNumElems(const void *ptr, int32_t argpos, const void *frame) TOLLAN_NOEXCEPT;
/* The argument's type as the caller described it; NULL without information. */
TOLLAN_API const struct Tynode *_UPLibGetPtrArgType(int32_t argpos, const void *frame) TOLLAN_NOEXCEPT;
/* The function returns argument argpos: its information (info word and
 * block) becomes the return value's, for whatever value the call returns
 * (_ReceivePtrInfo takes it); without information the return value carries
 * none. */
TOLLAN_API void _UPLibReturnArg(int32_t argpos, const void *frame) TOLLAN_NOEXCEPT;
/* Forgets the calling thread's parameter slots before the plain function
 * runs: both counts 0, the callee cleared and kept as the previous one. */
TOLLAN_API void _UPLibClearArgs(void) TOLLAN_NOEXCEPT;
/* 1 when the debugging level is 2 or more, else 0. */
TOLLAN_API int32_t _UPLibIsProtectionAvailable(void) TOLLAN_NOEXCEPT;

/*
 * The checked twins: _UP_<name> checks the arguments of the library
 * function <name> as its contract asks (strings as strings, buffers by
 * their stated sizes), hands a returned argument's information on to the
 * result (a pointer result that is no argument carries none), forgets the
 * call's information, calls the function, and offers a
 * break on library errors when it fails; an argument error that is ignored
 * still calls the function. The streams are the library's (TollanFILE;
 * positions are the int64_t of tollan_fpos_t);
 * the rows of tollan/rtcheck_twins.def say what each twin checks and which
 * plain function it calls.
 */
struct TollanFILE; /* the streams of tollan/ansi_c.h */
typedef void (*ZOR_SignalHandler)(int);
#define TOLLAN_TWIN(result, name, parameters, ...) TOLLAN_API result _UP_##name parameters TOLLAN_NOEXCEPT;
#include <tollan/rtcheck_twins.def>
#undef TOLLAN_TWIN

/* ======================================================================
 * Type nodes
 *
 * Checked code describes the C type of every pointer it hands to the
 * library with a Tynode: one record per type, whose `op` is a token code of
 * the instrumenting compiler's C grammar, chained through `type` to the
 * type it is built on. The library builds the basic types at start-up (the
 * globals below); compiled code builds its own nodes in its own storage
 * with _InitTynode. Nodes are never freed while the library is loaded.
 *
 * Thread safety: the queries only read nodes, so any thread may call them;
 * nodes must not change while a query reads them.
 *
 * Bad input: a null node where one is required, a node with an unknown
 * `op`, or a chain of `type` pointers that loops (or nests deeper than
 * TY_MAX_DEPTH layers) is reported through ZORAssert (module c/types;
 * c/output for outtype and tokenrep, c/up_comp for PtrSizeOf) and the query
 * returns its failure value (0, or "not equal/compatible").
 * ====================================================================== */

/* Type constructor codes: the `op` of a Tynode. tokenrep prints each one as
 * its keyword. */
enum {
    LCC_FLOAT = 1,
    LCC_DOUBLE = 2,   /* also long double */
    LCC_CHAR = 3,     /* char, signed char, unsigned char */
    LCC_SHORT = 4,    /* short and unsigned short */
    LCC_INT = 5,      /* also long */
    LCC_UNSIGNED = 6, /* unsigned int, unsigned long */
    LCC_POINTER = 7,
    LCC_VOID = 8,
    LCC_STRUCT = 9,
    LCC_UNION = 10,
    LCC_FUNCTION = 11,
    LCC_ARRAY = 12,
    LCC_ENUM = 13,
    LCC_CONST = 15,      /* qualifier layer */
    LCC_VOLATILE = 16,   /* qualifier layer */
    LCC_ANYTYPE = 17,    /* wildcard: compatible with every type */
    LCC_RESTRICT = 19,   /* qualifier layer */
    LCC_PASCAL = 100,    /* calling-convention layer */
    LCC_STDCALL = 101,   /* calling-convention layer */
    LCC_CDECL = 102,     /* calling-convention layer */
    LCC_LONGLONG = 112,  /* __int64 */
    LCC_ULONGLONG = 113, /* unsigned __int64 */
    LCC_FASTCALL = 115   /* calling-convention layer */
};

/* Layers of `type` pointers a query follows before it gives up on a chain
 * as cyclic. */
#define TY_MAX_DEPTH 200

/* Symbol flags: the low four bits are the symbol kind; TY_SYMBOL_MARK is the
 * per-type mark (set for double, float, long double and "char[]"). */
#define TY_SYMBOL_KIND_MASK 0xFu
#define TY_SYMBOL_KIND_TYPE 14u
#define TY_SYMBOL_MARK 0x2000u
/* The storage class of typedef and tag symbols (the ones findtype finds). */
#define TY_CLASS_TYPE 'S'

typedef struct Tynode Tynode;
typedef struct TySymbol TySymbol;

/* A source position: file name (may be null), line and column. */
typedef struct TyCoordinate {
    const char *file;
    uint32_t line;
    uint32_t column;
} TyCoordinate;

/* A member of a struct or union, in declaration order through `link`. */
typedef struct TyField {
    const char *name; /* compared by address: names are interned */
    Tynode *type;
    uint64_t offset;    /* bytes from the start of the record */
    uint16_t bitSize;   /* bit-field width; 0 for an ordinary member */
    uint16_t bitOffset; /* bit-field position within its unit */
    struct TyField *link;
} TyField;

/* The parameter list of a function type: `count` types, and whether "..."
 * follows them. */
typedef struct TyParams {
    Tynode *const *types;
    uint32_t count;
    uint32_t variadic;
} TyParams;

/* A symbol: the name of a type (basic type, typedef, struct/union/enum tag)
 * or, for a function type, the carrier of its parameter list. */
struct TySymbol {
    uint32_t flags;         /* kind in the low four bits; TY_SYMBOL_MARK */
    char sclass;            /* TY_CLASS_TYPE for typedefs and tags */
    int32_t level;          /* scope level; 0 is file scope */
    const char *name;       /* interned; a tag name beginning with 1-9 is anonymous */
    Tynode *type;           /* the type the symbol names */
    TyCoordinate defined;   /* where the type was defined */
    TyField *fields;        /* struct/union tags: the members, null until defined */
    const TyParams *params; /* function types: null when there is no prototype */
    TySymbol *link;         /* next symbol of the same scope chain */
};

/* The type node. `size` 0 means incomplete; `align` is 0 only for void. */
struct Tynode {
    int32_t op;
    Tynode *type; /* pointee, element, result or qualified type; null for basic types */
    TySymbol *sym;
    uint64_t size;
    /* Per-kind data: for an array, extra[0] != 0 marks an incomplete array
     * (declared without a size). */
    uintptr_t extra[2];
    uint8_t align;
};

/* What every pointer type shares: size, alignment, the mark of the pointer
 * name symbol, and that symbol ("T*"). */
typedef struct TyPointerMetrics {
    uint64_t size;
    uint8_t align;
    uint32_t mark;
    TySymbol *sym;
} TyPointerMetrics;

/* The types built at start-up. Null until the library has started. */
TOLLAN_API extern Tynode *chartype;
TOLLAN_API extern Tynode *doubletype;
TOLLAN_API extern Tynode *floattype;
TOLLAN_API extern Tynode *inttype;
TOLLAN_API extern Tynode *int64type;
TOLLAN_API extern Tynode *longdouble;
TOLLAN_API extern Tynode *longtype;
TOLLAN_API extern Tynode *shorttype;
TOLLAN_API extern Tynode *signedchar;
TOLLAN_API extern Tynode *unsignedchar;
TOLLAN_API extern Tynode *unsignedlong;
TOLLAN_API extern Tynode *unsignedint64;
TOLLAN_API extern Tynode *unsignedshort;
TOLLAN_API extern Tynode *unsignedtype;
TOLLAN_API extern Tynode *voidtype;
/* Pointers to void, char, double, float, int, __int64, short, unsigned
 * char, unsigned short, unsigned int and unsigned __int64. */
TOLLAN_API extern Tynode *voidptype;
TOLLAN_API extern Tynode *charptype;
TOLLAN_API extern Tynode *doubleptype;
TOLLAN_API extern Tynode *floatptype;
TOLLAN_API extern Tynode *intptype;
TOLLAN_API extern Tynode *int64ptype;
TOLLAN_API extern Tynode *shortptype;
TOLLAN_API extern Tynode *unsignedcharptype;
TOLLAN_API extern Tynode *unsignedshortptype;
TOLLAN_API extern Tynode *unsignedptype;
TOLLAN_API extern Tynode *unsignedint64ptype;
/* char *[2] and void *[3]: their sizes are the sizes of a block header (16)
 * and of a pointer-information record (24). */
TOLLAN_API extern Tynode *charptrarray2type;
TOLLAN_API extern Tynode *voidptrarray3type;
/* void **, char *(*)[2] and char **. */
TOLLAN_API extern Tynode *voidpptype;
TOLLAN_API extern Tynode *charptrarray2ptype;
TOLLAN_API extern Tynode *charpptype;
/* Alias slots: the unsigned __int64 node (size_t, uintptr_t) and the __int64
 * node (ptrdiff_t, intptr_t). */
TOLLAN_API extern Tynode *sizetype;
TOLLAN_API extern Tynode *uintptrtype;
TOLLAN_API extern Tynode *ptrdifftype;
TOLLAN_API extern Tynode *intptrtype;
/* The pointer metrics and the "char[]" name symbol. */
TOLLAN_API extern TyPointerMetrics ptrmetric;
TOLLAN_API extern TySymbol *chararraysym;

/* Builds a node in the caller's storage: copies the whole template into
 * `node`, then stores `size`, and `type` when it is not null. A null node or
 * template is reported and nothing is written. */
TOLLAN_API void _InitTynode(Tynode *node, const Tynode *templ, uint64_t size, Tynode *type) TOLLAN_NOEXCEPT;

/* The size of an array type (qualifier layers are looked through); 0 when
 * it is not an array. */
TOLLAN_API uint64_t ArraySizeEx(const Tynode *ty) TOLLAN_NOEXCEPT;
/* The element size of a pointer or array type. When the element is an
 * array of unknown size, that array's size (0 stays 0). */
TOLLAN_API uint64_t ArrayEltSizeEx(const Tynode *ty) TOLLAN_NOEXCEPT;
/* The number of elements of an array type; 0 when the element size is 0. */
TOLLAN_API uint64_t NumArrayEltsEx(const Tynode *ty) TOLLAN_NOEXCEPT;

/* The bytes of pointer information an object of this type needs: 24 for a
 * pointer, a 16-byte header for a struct or array plus its parts' needs,
 * 0 for types that hold no pointer. */
TOLLAN_API uint64_t PtrSizeOf(const Tynode *ty) TOLLAN_NOEXCEPT;

/* Strict type equality (1 equal, 0 not). Qualifier and calling-convention
 * layers are looked through. Two nodes of one code on the same `type` with
 * the same size and alignment are equal: int and long, short and unsigned
 * short, two struct tags of one layout (their symbols tell them apart).
 * `ret` is the answer when two types agree except that one side is
 * incomplete: an array of unknown size against a sized one, a function
 * without a parameter list against one whose parameters all survive the
 * default promotions. Pass 1 to treat those as equal. */
TOLLAN_API int eqtype(const Tynode *ty1, const Tynode *ty2, int ret) TOLLAN_NOEXCEPT;

/* Assignment compatibility (1 compatible, 0 not). A null type or
 * LCC_ANYTYPE on either side is compatible with everything. One qualifier
 * layer on one side only is looked through. As for eqtype, nodes of one code
 * on the same `type` with the same size and alignment are compatible; the
 * members of two struct or union types are compared only when their sizes
 * or alignments differ (and not when either is incomplete or both share a
 * tag symbol). With `loose`, nodes that differ in size but name the same
 * family (double and long double; int and long; unsigned int and unsigned
 * long) are compatible. */
TOLLAN_API int AreCompatibleTypes(const Tynode *ty1, const Tynode *ty2, int loose) TOLLAN_NOEXCEPT;

/* Writes the English text of a type ("pointer to array 10 of int") into
 * buffer, cut to bufferSize - 1 characters and always terminated (nothing is
 * written when bufferSize is 0). Returns the length of the whole text, so a
 * result >= bufferSize means that the text was cut. */
TOLLAN_API size_t outtype(const Tynode *ty, char *buffer, size_t bufferSize) TOLLAN_NOEXCEPT;

/* The text of a token code of the grammar (codes are taken modulo 128):
 * "int", "const", "->", ... An unused code is reported and gives "". */
TOLLAN_API const char *tokenrep(int32_t token) TOLLAN_NOEXCEPT;

/* ======================================================================
 * Variadic and size-information checks
 *
 * The rest of what the checked twins of the library functions are built
 * from: the checking of a variadic call's variable arguments against what
 * its format asks for, the block information of memory that a library
 * function hands out, and the saving of the thread's checking environment
 * around a callback into user code. docs/debugging.md describes how a twin
 * uses them.
 *
 * Thread safety: every function works on the calling thread's checking
 * environment and open checks, except the size information, which any
 * thread may create, resize and free at once.
 * ====================================================================== */

/* The format languages of the variadic families: the C library's printf
 * and scanf, and the Formatting library's Fmt and Scan. */
#define ZOR_VA_PRINTF 1
#define ZOR_VA_SCANF 2
#define ZOR_VA_FMT 3
#define ZOR_VA_SCAN 4

/*
 * Variable arguments. Compiled code records, for each checked call, the
 * number of variable arguments it passes and the types of the first 32
 * (later ones are counted but not typed). A check compares them in order
 * with the types expected of them:
 *   106 "Invalid argument type: found '%t', expected '%t'." (fatal) when an
 *       argument cannot be fetched as the type expected: values are
 *       compared after the default promotions, integers of one size and
 *       reals of one size agree, a pointer to void agrees with every pointer,
 *       and otherwise a pointer needs as many levels as expected over a
 *       like type;
 *   107 "Missing argument to variable argument function." (fatal) when one
 *       more argument is expected than were passed;
 *   108 "Too many arguments to variable argument function." (non-fatal)
 *       when the check ends with arguments no expectation took.
 * A report names the source position of the argument concerned (107: the
 * last one passed; 108: the first left over) when the caller handed its
 * coordinate over, else the thread's statement. One report at most per
 * call: after it, the rest of the call is not checked.
 *
 * Nothing is checked below debugging level 2, while the thread's break on
 * protection errors is off, or when the types were recorded for a call to
 * another function than `frame` (the twin's own entry address; jump stubs
 * are followed) or with a negative count.
 *
 * _UPLibBeginChkVaArgs opens a check of the current call, whose first
 * variable argument is argument `argpos` of the call (counted from 1; used
 * for the coordinates only). Returns 1 when the arguments will be checked,
 * else 0. Checks nest (an open inside an open, from code that interrupts a
 * twin); each open needs its _UPLibEndChkVaArgs.
 * _UPLibChkVaArg checks the next argument against `expected` (NULL or
 * LCC_ANYTYPE: any type). _UPLibChkVaArgEx checks the next `count`
 * arguments against `expected`, or all that remain when count is negative.
 * _UPLibEndChkVaArgs closes the innermost check (108 when arguments remain;
 * a close without an open does nothing).
 * Each returns 0 when it reported, else 1.
 */
TOLLAN_API int32_t _UPLibBeginChkVaArgs(int32_t argpos, const void *frame) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t _UPLibChkVaArg(const Tynode *expected) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t _UPLibChkVaArgEx(const Tynode *expected, int32_t count) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t _UPLibEndChkVaArgs(void) TOLLAN_NOEXCEPT;

/*
 * The whole check of a call whose variable arguments follow `format` of
 * `family` (ZOR_VA_...), from open to close. printf and scanf formats are
 * read by the library's own engines' parsers: printf's '*' widths and
 * precisions take an int, a conversion the engine does not know takes
 * nothing; a scanf conversion the engine refuses ends the check without
 * 108 (the engine reads no further). A Fmt or Scan format's first item is
 * the target or source parameter (or the file) and no variable argument;
 * a format that does not parse is left to the engine's own report and
 * nothing is checked. A NULL format or an unknown family checks nothing.
 * Returns 0 when it reported, else 1.
 */
TOLLAN_API int32_t _UPLibChkVaArgs(const char *format, int32_t family, int32_t argpos,
                                   const void *frame) TOLLAN_NOEXCEPT;

/*
 * Size information of memory that a library function hands out. Each
 * block gets one BlkInfo, kept by the library for the life of the process
 * and found by the block's address: freeing marks it freed (size 0), so the
 * caller's stale pointers report freed memory, and memory handed out again
 * at the same address uses it again. An array of strings also gets a
 * PtrInfo and a BlkInfo (the string's bytes and terminator) per element, so
 * that the strings read from it are checked too.
 * Nothing is recorded below debugging level 2. When the library has no
 * memory for the records, 191 "Out of memory for user protection
 * information." is reported as fatal and the pointer goes unchecked.
 *
 * _UPReturnPointerSizeInfo: the wrapped function returns ptr, a block of
 * `size` bytes; its information becomes the return value's (what
 * _ReceivePtrInfo hands the caller). NULL is a null pointer.
 * _UPSetOutputPointerSizeInfo and _UPSetOutputStringArrayInfo: the function
 * stored ptr (or strings) through argument argpos of the call to `frame`, a
 * pointer to a pointer; the stored pointer's information becomes that of
 * the block. They may be called before or after _UPLibClearArgs. They
 * return 1 when the information was stored, 0 when the caller handed none
 * over for the argument (or it names a predefined entry).
 * count: the strings of the array; negative: the array ends with a NULL
 * element, which belongs to it.
 * _UPResizePointerSizeInfo and _UPResizeStringArrayInfo: oldPtr was resized
 * to newPtr of `size` bytes (or `count` strings): a moved block's old place
 * is freed (a moved array's strings are not), and newPtr's information
 * becomes the return value's. A NULL newPtr (a failed resize) leaves the old
 * block and returns a null pointer's information.
 * _UPLibFreeDynPtrInfo: the block at ptr was freed (the strings it
 * described stay); _UPLibFreeStringArrayInfo: the array and its strings
 * were. Addresses no library function handed out, and NULL, do nothing.
 */
TOLLAN_API void _UPReturnPointerSizeInfo(const void *ptr, uint64_t size) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t _UPSetOutputPointerSizeInfo(int32_t argpos, const void *frame, const void *ptr,
                                               uint64_t size) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t _UPSetOutputStringArrayInfo(int32_t argpos, const void *frame, char *const *strings,
                                               int64_t count) TOLLAN_NOEXCEPT;
TOLLAN_API void _UPResizePointerSizeInfo(const void *oldPtr, const void *newPtr,
                                         uint64_t size) TOLLAN_NOEXCEPT;
TOLLAN_API void _UPResizeStringArrayInfo(char *const *oldStrings, char *const *newStrings,
                                         int64_t count) TOLLAN_NOEXCEPT;
TOLLAN_API void _UPLibFreeDynPtrInfo(const void *ptr) TOLLAN_NOEXCEPT;
TOLLAN_API void _UPLibFreeStringArrayInfo(char *const *strings) TOLLAN_NOEXCEPT;

/*
 * The thread's checking environment (the first 2112 bytes of its
 * thread-state record), saved in the caller's storage, usually on its stack.
 */
typedef struct ZORSavedCheckingEnv {
    uint64_t seal; /* set by a save, cleared by the restore */
    unsigned char environment[2112];
} ZORSavedCheckingEnv;

/*
 * A twin that calls back into user code (qsort's comparator) saves the
 * environment before the callback and restores it after, since the user
 * code's checked calls overwrite it. Saves nest: each has its own storage.
 * A restore copies back only what a save of the same storage stored, once:
 * a second restore, a restore of storage never saved, and NULL do nothing
 * and return 0. Both return 1 when they copied, 0 otherwise (also when the
 * thread has no record).
 */
TOLLAN_API int32_t _UPSaveCurrentEnv(ZORSavedCheckingEnv *saved) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t _UPRestoreCurrentEnv(ZORSavedCheckingEnv *saved) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
