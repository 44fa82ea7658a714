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
struct Tynode;

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
/* The function returns argument argpos: its information (info, block and
 * value) becomes the return value's; without information the return value
 * carries none. */
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

TOLLAN_END_DECLS

#endif
