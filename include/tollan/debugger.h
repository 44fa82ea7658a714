/*
 * Debugger link: the per-thread thread-state records that compiled debug
 * code keeps up to date, the debug channel to the development environment's
 * debugger (or to tollan-monitor on POSIX), and resource tracking.
 *
 * Code generators call the __DBG_ functions around every function and
 * statement of a program compiled for debugging; the record layout below is
 * shared with the debugger, which reads it from the stopped program.
 *
 * Thread safety: a thread-state record belongs to its thread. The debug
 * channel's operations may be called from any thread. Resource tracking keeps
 * one table under one lock.
 */
#ifndef TOLLAN_DEBUGGER_H
#define TOLLAN_DEBUGGER_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* ---- Thread states -------------------------------------------------- */

/*
 * An entered function's frame, 48 bytes, kept by the compiled function on its
 * own stack. The compiled code fills functionName, startPosition and
 * endPosition (positions packed as line << 10 | column) before it calls
 * __DBG_EnterFunctionInCurrentThreadEnv; the library fills the saved fields.
 */
typedef struct ZORFunctionFrame {
    const char *savedFileName;
    int32_t savedLine;
    int32_t savedColumn;
    struct ZORFunctionFrame *savedFrame;
    uint64_t savedFunctionWord;
    const char *functionName;
    uint32_t startPosition;
    uint32_t endPosition;
} ZORFunctionFrame;

/* The thread's source position and frame chain: bytes 6352 to 6439 of the record. */
typedef struct ZORLocationBlock {
    int32_t line;
    int32_t column;
    const char *fileName;
    unsigned char reserved1[40];
    ZORFunctionFrame *frame;
    unsigned char reserved2[16];
    uint64_t functionWord;
} ZORLocationBlock;

/* The size of the checking environment at the start of the record. */
#define ZOR_CHECKING_ENVIRONMENT_SIZE 2112

/*
 * The thread-state record, 7808 bytes, one per thread. The offsets of the
 * named fields are part of the protocol with the debugger.
 */
typedef struct ZORThreadEnv {
    unsigned char checkingEnvironment[ZOR_CHECKING_ENVIRONMENT_SIZE];  /* 0 */
    unsigned char savedEnvironments[2][ZOR_CHECKING_ENVIRONMENT_SIZE]; /* 2112, 4224 */
    void *vaArgInfo[2];                                                /* 6336 */
    ZORLocationBlock location;                                         /* 6352 */
    ZORLocationBlock savedContexts[4];                                 /* 6440 */
    unsigned char reserved1[24];                                       /* 6792 */
    int32_t breakReason;                                               /* 6816: 35 = debugger disconnected */
    int32_t reserved2;
    void *breakDetail;            /* 6824 */
    int32_t trackResources;       /* 6832: resource tracking on for this thread */
    int32_t stopPending;          /* 6836: the debugger wants this thread stopped */
    unsigned char reserved3[968]; /* 6840 */
} ZORThreadEnv;

/* The break reason that a debugger-initiated disconnect leaves in the record. */
#define ZOR_BREAK_REASON_DISCONNECTED 35

/*
 * The calling thread's record, made (and reset) on the thread's first call.
 * When the process-wide run-time record cannot give one (no memory), a spare
 * record kept for this is used; NULL only when even that is taken.
 */
TOLLAN_API ZORThreadEnv *__DBG_GetCurrentThreadEnv(void) TOLLAN_NOEXCEPT;
/* The same without the spare record: NULL when no record can be had. */
TOLLAN_API ZORThreadEnv *__GetThreadEnvironmentForCurrentThread(void) TOLLAN_NOEXCEPT;
/* The run-time record; *index (when not NULL) receives the thread-local index of the records. */
TOLLAN_API void *__GetLocalThreadEnvSlot(uint32_t *index) TOLLAN_NOEXCEPT;
/* Clears the calling thread's record and gives it fresh checking environments. */
TOLLAN_API void __DBG_ResetCurrentThreadEnv(void) TOLLAN_NOEXCEPT;

/*
 * Entering a function: saves the record's line, column, file name, frame and
 * function word in `frame`, clears line, column and function word, makes
 * `frame` the innermost one and sets `fileName`. Returns 0. NULL arguments
 * change nothing (the result is then -1).
 */
TOLLAN_API int32_t __DBG_EnterFunctionInCurrentThreadEnv(ZORThreadEnv *record, ZORFunctionFrame *frame,
                                                         const char *fileName) TOLLAN_NOEXCEPT;
/* Leaving it: restores the five fields from `frame`. */
TOLLAN_API void __DBG_LeaveFunctionInCurrentThreadEnv(ZORThreadEnv *record,
                                                      ZORFunctionFrame *frame) TOLLAN_NOEXCEPT;
/*
 * The statement now running: file name, line and column of the record, and
 * line and column also in location[2] and location[3] (the caller's own
 * location record; NULL for none).
 */
TOLLAN_API void __DBG_SetCurrentThreadEnvLocation(ZORThreadEnv *record, int32_t *location,
                                                  const char *fileName, int32_t line,
                                                  int32_t column) TOLLAN_NOEXCEPT;
/* The same without the file name. */
TOLLAN_API void __DBG_SetCurrentThreadEnvPosition(ZORThreadEnv *record, int32_t *location, int32_t line,
                                                  int32_t column) TOLLAN_NOEXCEPT;
TOLLAN_API void __DBG_SetCurrentThreadEnvFileName(ZORThreadEnv *record, const char *fileName) TOLLAN_NOEXCEPT;

/* A copy of the calling thread's 88-byte location block; NULL when memory is short. */
TOLLAN_API void *__DBG_SaveExecutionContext(void) TOLLAN_NOEXCEPT;
/* Puts a copy back and frees it; NULL is ignored. */
TOLLAN_API void __DBG_RestoreExecutionContext(void *block) TOLLAN_NOEXCEPT;
/*
 * Switches the process's running execution context to `index` (0 to 3; -1
 * for none): the checking environment and the location block of the thread
 * go to the old context's slots and come from the new one's. Returns the
 * previous index (-1 before the first switch).
 */
TOLLAN_API int32_t __SwitchExecutionContext(int32_t index) TOLLAN_NOEXCEPT;
/* Reports that the run-time stack is inconsistent (a calling-convention mismatch). */
TOLLAN_API void __DBG_ReportStackCorruption(void) TOLLAN_NOEXCEPT;

/*
 * Calls function(argument), guarded: a fault inside it (a bad address, an
 * illegal instruction) ends the call instead of the program. Returns 0, or
 * -1 when the call faulted. NULL function: -1.
 */
TOLLAN_API int32_t __DBG_SafeCall(void (*function)(void *argument), void *argument) TOLLAN_NOEXCEPT;

/* ---- The debug channel ---------------------------------------------- */

/* Results of the debug channel. */
#define ZOR_DEBUG_NOT_CONNECTED (-10)
#define ZOR_DEBUG_NO_OPERATION (-3)
#define ZOR_DEBUG_NO_MEMORY (-12)
#define ZOR_DEBUG_OBJECT_FAILED (-70)
#define ZOR_DEBUG_CHANNEL_OPEN (-71)

/* A module's debug table entry; the table ends with an entry whose start is NULL. */
typedef struct ZORDebugTableEntry {
    const void *start;
    const void *end;
    const char *name;
} ZORDebugTableEntry;

/* A shared block opened or made through the debug channel. */
typedef struct ZORSharedMemoryHandles {
    void *view;
    void *mapping;
    uint32_t size;
} ZORSharedMemoryHandles;

/*
 * Connects to the debugger: adopts the connection another module of the
 * process made, else tries the local back-end, then the remote one. Returns
 * 0, or ZOR_DEBUG_NOT_CONNECTED when none connects (no debugger, no
 * run-time record). module: the connecting module (NULL: the program).
 */
TOLLAN_API int32_t __ZOR_Debug_Connect(void *module, intptr_t argument, int32_t port) TOLLAN_NOEXCEPT;
/* __ZOR_Debug_DisconnectEx(0). */
TOLLAN_API int32_t __ZOR_Debug_Disconnect(void) TOLLAN_NOEXCEPT;
/*
 * Disconnects. With a debugger of protocol level 10 or more the calling
 * thread first stops with break reason 35 and waits until the debugger has
 * let go. ZOR_DEBUG_NOT_CONNECTED when not connected.
 */
TOLLAN_API int32_t __ZOR_Debug_DisconnectEx(int32_t flag) TOLLAN_NOEXCEPT;
/* 1 while connected, else 0. */
TOLLAN_API int32_t __ZOR_Debug_IsConnected(void) TOLLAN_NOEXCEPT;
/* The channel's lock, held around exchanges of several steps. */
TOLLAN_API int32_t __ZOR_Debug_Lock(void) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t __ZOR_Debug_Unlock(void) TOLLAN_NOEXCEPT;
/* Stops the calling thread in the debugger until it resumes it. */
TOLLAN_API int32_t __ZOR_Debug_Break(void) TOLLAN_NOEXCEPT;
/* Whether breaks of `kind` reach the debugger; 0 when not connected. */
TOLLAN_API int32_t __ZOR_Debug_BreakIsEnabled(int32_t kind) TOLLAN_NOEXCEPT;
/* Opens the debugger's shared block `name` (the process id is added); *size receives its size. */
TOLLAN_API int32_t __ZOR_Debug_OpenSharedMemory(const char *name, uint32_t *size,
                                                ZORSharedMemoryHandles *handles) TOLLAN_NOEXCEPT;
/* Makes a shared block; ZOR_DEBUG_NO_OPERATION when the back-end cannot. */
TOLLAN_API int32_t __ZOR_Debug_NewSharedMemory(const char *name, uint32_t size,
                                               ZORSharedMemoryHandles *handles) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t __ZOR_Debug_DiscardSharedMemory(ZORSharedMemoryHandles *handles) TOLLAN_NOEXCEPT;
/* Makes `count` bytes at `address` of a shared block visible to the debugger; 0 when nothing is needed. */
TOLLAN_API int32_t __ZOR_Debug_SynchronizeMemory(ZORSharedMemoryHandles *handles, void *address,
                                                 uint32_t count) TOLLAN_NOEXCEPT;
/* Waits until the debugger signals the event `name` (the process id is added). */
TOLLAN_API int32_t __ZOR_Debug_WaitForSignal(const char *name) TOLLAN_NOEXCEPT;
/* Tells the debugger about the calling thread. */
TOLLAN_API int32_t __ZOR_Debug_RegisterThread(void) TOLLAN_NOEXCEPT;
/* The module file name the connection names; at most 259 characters (a longer one clears it). */
TOLLAN_API void __SetDebugModuleFileName(const char *fileName) TOLLAN_NOEXCEPT;

/*
 * Announces a module to the debugger (a "module_attach" text with its debug
 * table), or its leaving ("module_detach"). Nothing is sent while no debugger
 * is present. The library announces itself at start-up.
 */
TOLLAN_API void __DBG_RegisterRTEWithDebugger(void *module, const ZORDebugTableEntry *table) TOLLAN_NOEXCEPT;
TOLLAN_API void __DBG_UnregisterRTEWithDebugger(void *module) TOLLAN_NOEXCEPT;

/* ---- Debugging level ------------------------------------------------ */

/*
 * The process's debugging level, 0 to 3: run-time checking and resource
 * tracking work at level 2 and above. At start-up it is taken from the
 * environment variable TOLLAN_DEBUG_LEVEL (0 when absent or not a number
 * from 0 to 3). __SetDebuggingLevel returns the previous level; values
 * outside 0 to 3 are refused (-1, nothing changes).
 */
TOLLAN_API int32_t __SetDebuggingLevel(int32_t level) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t __GetDebuggingLevel(void) TOLLAN_NOEXCEPT;

/* ---- Resource tracking ---------------------------------------------- */

/*
 * Records a resource that a library hands out, with the stack of entered
 * functions that acquired it, when tracking is on: debugging level 2 or
 * more, the calling thread's tracking switch on, and a compiled function
 * entered. typeName names the category ("Files"); the description is
 * formatted from format and the arguments (printf rules). Returns handle in
 * every case, also when tracking is off or memory runs out.
 */
TOLLAN_API void *__ZOR_Resource_Acquire(void *handle, const char *typeName, const char *format,
                                        ...) TOLLAN_NOEXCEPT TOLLAN_PRINTF(3, 4);
/* Forgets a resource; a handle that was never recorded changes nothing. Returns handle. */
TOLLAN_API void *__ZOR_Resource_Release(void *handle) TOLLAN_NOEXCEPT;
/* Whether resources of the calling thread are being tracked now. */
TOLLAN_API int32_t __ZOR_Resource_IsEnabled(void) TOLLAN_NOEXCEPT;
/* The calling thread's tracking switch (on by default); returns the previous setting. */
TOLLAN_API int32_t SetEnableResourceTracking(int32_t on) TOLLAN_NOEXCEPT;
TOLLAN_API int32_t GetEnableResourceTracking(void) TOLLAN_NOEXCEPT;
/* The table's lock, for a debugger that reads the table. */
TOLLAN_API void __ZOR_Resource_LockTable(void) TOLLAN_NOEXCEPT;
TOLLAN_API void __ZOR_Resource_UnlockTable(void) TOLLAN_NOEXCEPT;
/*
 * Writes every tracked resource, oldest first, to the file `path` (made anew):
 * a line "<file>:<line>.<column> <id> (<type>) <description>" for where it
 * was acquired, and one line "    <n>: <file>:<line>.<column>-<line>.<column>
 * (<function>)" per function of the acquiring stack, innermost first.
 * Returns 0; -102 when the file cannot be written, -260 when memory runs
 * out (both logged at WARNING).
 */
TOLLAN_API int32_t __ZOR_Resource_DumpToFile(const char *path) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
