/*
 * Run-time checking: what compiled debug code and the checked twins of the
 * library functions call to check pointers and arguments, and where their
 * errors are reported.
 *
 * Thread safety: break settings belong to the calling thread. Reports may
 * come from any thread at once; each uses its own thread's settings and
 * source position, and lines written to the error file never interleave.
 */
#ifndef TOLLAN_RTCHECK_H
#define TOLLAN_RTCHECK_H

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
 * (printf rules with "%Iu", "%Id" and "%Ix" for pointer-sized integers; "%t"
 * is not formatted yet and stays as it stands). Nothing happens below
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

TOLLAN_END_DECLS

#endif
