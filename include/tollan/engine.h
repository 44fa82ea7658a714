/*
 * Engine: module registration with run-state events, queries about the
 * run-time situation, and the thread-variable cells that the libraries use
 * for their per-thread data.
 *
 * Thread safety: InitZORRTDll and CloseZORRTDll are meant for the modules'
 * own load and unload code and take no lock; call them from one thread at a
 * time. The thread-variable value functions touch only the calling thread's
 * cells. InitializeZORThreadVar and UninitializeZORThreadVar belong to
 * library start-up and shutdown, which run on one thread.
 */
#ifndef TOLLAN_ENGINE_H
#define TOLLAN_ENGINE_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* Run-state events sent to module callbacks. */
enum {
    ZOR_RUN_STATE_START = 0,
    ZOR_RUN_STATE_STOP = 4,
    ZOR_RUN_STATE_STARTED = 5,
    ZOR_RUN_STATE_ABOUT_TO_STOP = 6
};

/* The most module callbacks the library keeps at once. */
#define ZOR_MAX_RUN_STATE_CALLBACKS 32

/* A module's run-state callback; event is one of ZOR_RUN_STATE_*. */
typedef void (*ZORRunStateCallback)(int32_t event);

/*
 * Registers a module's run-state callbacks and starts them.
 * First masks every x87 floating-point exception (where the processor has
 * an x87 unit), also when the library did not start. Then each callback of the list is added unless the table
 * is full (the callback is then dropped silently) or the same callback is already registered for this module.
 * Finally every callback of `module` (of every module when `module` is NULL), in registration order, gets
 * ZOR_RUN_STATE_START, then each gets ZOR_RUN_STATE_STARTED. A callback may
 * itself register further callbacks; they are started in the same pass. A
 * callback must not start its own module again (InitZORRTDll for its module,
 * or for NULL): that would call it again without end, so the nested start is
 * reported as a FATAL assertion line and abandoned; its callbacks are still
 * registered, and the pass in progress starts them.
 *   module:    the registering module's handle; NULL stands for all modules.
 *   callbacks: a NULL-terminated array of callbacks; NULL for none.
 * Returns 1; 0 when the library is not initialised (its start-up failed).
 */
TOLLAN_API int32_t InitZORRTDll(void *module, const ZORRunStateCallback *callbacks) TOLLAN_NOEXCEPT;

/*
 * Stops and removes a module's callbacks: every callback of `module`, the
 * last registered first, gets ZOR_RUN_STATE_ABOUT_TO_STOP, then, again from
 * the last, ZOR_RUN_STATE_STOP; then they leave the table (the order of the
 * remaining entries is not kept). Once the library has shut down this does
 * nothing. Returns 1.
 */
TOLLAN_API int32_t CloseZORRTDll(void *module) TOLLAN_NOEXCEPT;

/* Marks the process as ending abnormally and ends it with exitCode. */
TOLLAN_API TOLLAN_NORETURN void ZORRTDllAbnormalExit(int32_t exitCode) TOLLAN_NOEXCEPT;

/* Always 1: a caller that can reach this is talking to a loaded library. */
TOLLAN_API int32_t __IsRTEStillLoaded(void) TOLLAN_NOEXCEPT;
/* Non-zero while the IDE asks the program to behave as if it were shutting down. */
TOLLAN_API int32_t __SimulateRTShuttingDown(void) TOLLAN_NOEXCEPT;
/* 1 unless the IDE has asked the start-up library to stay inactive. */
TOLLAN_API int32_t StartupLibraryInit(void) TOLLAN_NOEXCEPT;
/* Nothing to undo; present for programs that pair it with StartupLibraryInit. */
TOLLAN_API void StartupLibraryCleanup(void) TOLLAN_NOEXCEPT;
/* Always 1: the program runs on its own, outside the IDE's interpreter. */
TOLLAN_API int32_t InStandaloneExecutable(void) TOLLAN_NOEXCEPT;
/* Always 1: the program uses this shared run-time library. */
TOLLAN_API int32_t UsingTollanDll(void) TOLLAN_NOEXCEPT;
/* Always 1: the kind of run-time support library in use. */
TOLLAN_API int32_t WhichRuntimeSupportDll(void) TOLLAN_NOEXCEPT;
/*
 * 1 when the environment's debugger (on POSIX, tollan-monitor) is attached to
 * the program: it made the program's shared information block. Else 0.
 */
TOLLAN_API int32_t BeingDebuggedByZOR(void) TOLLAN_NOEXCEPT;

/*
 * Registers (unregisters) a clean-up that the debug interface runs when the
 * library shuts down, the last registered first: a is the function, a
 * void (*)(intptr_t, intptr_t, intptr_t), and b, c, d its arguments.
 * Unregistering names the same four. Both return 1, or 0 when nothing was
 * registered (a is NULL, no memory) or found.
 */
TOLLAN_API intptr_t __RegisterAtExitCleanup(intptr_t a, intptr_t b, intptr_t c, intptr_t d) TOLLAN_NOEXCEPT;
TOLLAN_API intptr_t __UnregisterAtExitCleanup(intptr_t a, intptr_t b, intptr_t c, intptr_t d) TOLLAN_NOEXCEPT;

/*
 * Obtains a thread-variable slot (a cell of every thread's block of eight).
 *   slot: receives the slot number; numbers count up from 1 in the order of
 *         the calls and are not checked against the 8 cells. NULL is refused.
 * Returns 1, or 0 when the system has no thread-local storage left.
 */
TOLLAN_API int32_t InitializeZORThreadVar(int32_t *slot) TOLLAN_NOEXCEPT;
/*
 * The calling thread's value of `slot` (1..8); NULL until the thread stored
 * one. The thread's block of cells is made on first use. A slot outside
 * 1..8 is logged at ERROR level and gives NULL.
 */
TOLLAN_API void *GetZORThreadVarValue(int32_t slot) TOLLAN_NOEXCEPT;
/* Stores the calling thread's value of `slot`; a slot outside 1..8 is logged and ignored. */
TOLLAN_API void SetZORThreadVarValue(int32_t slot, void *value) TOLLAN_NOEXCEPT;
/*
 * Gives a slot back. When the last slot is given back the calling thread's
 * block is freed and numbering starts again from 1. A release too many is
 * logged at ERROR level.
 */
TOLLAN_API void UninitializeZORThreadVar(int32_t slot) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
