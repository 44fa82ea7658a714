/*
 * Logger: one process-wide diagnostic log with level bits, a line template
 * with named fields, one selectable output and timing events.
 *
 * Thread safety: every function may be called from any thread. Lines of
 * different threads never interleave. The level test is a single atomic read.
 *
 * Line template fields, each replaced at its first occurrence only (a field
 * written twice is expanded once, the second copy stays as it is):
 *   [TIME]    local time "HH:MM:SS.mmm" (empty when the time cannot be had)
 *   [FILE]    the caller's source file text      [LINE]   the caller's line
 *   [FUNC]    the caller's function name         [LEVEL]  the level's name
 *   [THREAD]  the calling thread's id            [MSG]    the formatted message
 * In the message of a timing event, the first "[ELAPSED]" becomes the time
 * since the handle's start: "%.3f ms" below 100 ms, "%.2f ms" from 100 ms on.
 * The default template is "[[TIME]] [[LEVEL]] [[FUNC]] [[FILE]:[LINE]] [MSG]".
 *
 * Settings read once per process (ConfigureZORLoggerOnce), from the current
 * user's key Software\Vantrel\ZOR\17.0\Logger: "Log Level" (number, default
 * 64), "Log Output Location" (number, default 3), "Log File Name" (string)
 * and "Log File Format" (number) for location 5, "Log Format" (string).
 *
 * Text arguments that are NULL are taken as empty texts.
 */
#ifndef TOLLAN_LOGGER_H
#define TOLLAN_LOGGER_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* Level bits; a mask of them selects what callers write. Any other value is
 * named "UNKNOWN" in a line. */
enum {
    ZOR_LOG_TRACE = 1,
    ZOR_LOG_TIMING = 2,
    ZOR_LOG_INFO = 4,
    ZOR_LOG_TEMP = 8,
    ZOR_LOG_WARNING = 16,
    ZOR_LOG_ERROR = 32,
    ZOR_LOG_FATAL = 64,
    ZOR_LOG_BUILD = 128,
    ZOR_LOG_DLLMAIN = 256
};

/* Output locations: 1 standard output, 3 standard error (the default), 4 the
 * platform's debug output (OutputDebugStringA), 5 a log file; 0 and 2 write
 * nothing. */
enum {
    ZOR_LOG_LOCATION_NONE = 0,
    ZOR_LOG_LOCATION_STDOUT = 1,
    ZOR_LOG_LOCATION_NONE_2 = 2,
    ZOR_LOG_LOCATION_STDERR = 3,
    ZOR_LOG_LOCATION_DEBUG_OUTPUT = 4,
    ZOR_LOG_LOCATION_FILE = 5
};

/* The current level mask (64, FATAL only, until configured). Callers test
 * their level bit against it before writing. */
TOLLAN_API uint32_t GetZORLogReportingLevels(void) TOLLAN_NOEXCEPT;
/* Replaces the level mask; returns the previous one. */
TOLLAN_API uint32_t SetZORLogReportingLevels(uint32_t mask) TOLLAN_NOEXCEPT;
/*
 * Selects the output. Location 5 opens fileName as the log file: fileFormat 0
 * truncates the file, any other value appends to it. Leaving location 5
 * closes the log file. fileFormat and fileName are ignored for the other
 * locations. Returns 1 on success, 0 when refused: a location above 5,
 * location 3 while standard error is in a failed state, location 5 with a
 * NULL name or a file that cannot be opened. A refused switch leaves the
 * previous output (and its file) in force.
 */
TOLLAN_API int32_t SetZORLogReportingLocation(uint32_t location, int32_t fileFormat,
                                              const char *fileName) TOLLAN_NOEXCEPT;
/* Replaces the line template; NULL is ignored. */
TOLLAN_API void SetZORLogOutputFormat(const char *lineTemplate) TOLLAN_NOEXCEPT;
/*
 * The current template. The text stays valid for the life of the process,
 * whatever other threads do to the template meanwhile; reading the same
 * template again gives the same pointer.
 */
TOLLAN_API const char *GetZORLogOutputFormat(void) TOLLAN_NOEXCEPT;

/*
 * Writes one line built from the template, whatever the mask: callers test
 * the mask first. level names the line's level; file, function and line fill
 * [FILE], [FUNC] and [LINE]; format and the arguments follow printf's rules
 * and give [MSG]. noLineEnd non-zero writes the line without its end (and
 * without flushing); echo non-zero also prints the message alone to standard
 * output as "%s\n" (at most 4095 characters of it). Write errors are ignored.
 */
TOLLAN_API void WriteZORLogMessage(uint32_t level, int32_t noLineEnd, int32_t echo, const char *file,
                                   const char *function, int32_t line, const char *format,
                                   ...) TOLLAN_NOEXCEPT TOLLAN_PRINTF(7, 8);
/*
 * Writes a TIMING (2) line for a timing handle: the message is formatted as in
 * WriteZORLogMessage and its first "[ELAPSED]" becomes the time since the
 * handle was taken or last restarted. An unknown or released handle writes
 * nothing. Afterwards release non-zero forgets the handle; otherwise update
 * non-zero restarts its clock from the time of this event.
 */
TOLLAN_API void WriteZORLogTimingEvent(uint32_t handle, int32_t release, int32_t update, int32_t noLineEnd,
                                       int32_t echo, const char *file, const char *function, int32_t line,
                                       const char *format, ...) TOLLAN_NOEXCEPT TOLLAN_PRINTF(9, 10);
/* A new timing handle (1 to 2147483647, never one still in use) whose clock
 * starts now; 0 when no memory is left for it. */
TOLLAN_API uint32_t GetZORLogTimingHandle(void) TOLLAN_NOEXCEPT;
/* Restarts a handle's clock; unknown handles are ignored. */
TOLLAN_API void UpdateZORLogTimingHandle(uint32_t handle) TOLLAN_NOEXCEPT;
/* Forgets a handle; unknown handles are ignored. */
TOLLAN_API void ReleaseZORLogTimingHandle(uint32_t handle) TOLLAN_NOEXCEPT;

/*
 * Reports a failed assertion as a FATAL (64) line, whatever the mask, with the
 * message "Assertion failed: <expression> (<message>)", or "Assertion failed:
 * <expression>" when message is NULL; message and the arguments follow
 * printf's rules. The whole text is cut at 1023 characters. The program goes on.
 */
TOLLAN_API void ZORAssert(const char *expression, const char *file, const char *function, int32_t line,
                          const char *message, ...) TOLLAN_NOEXCEPT TOLLAN_PRINTF(5, 6);

/* Reads the logger's settings on the first call; later calls do nothing. A
 * setting that cannot be read keeps its default. */
TOLLAN_API void ConfigureZORLoggerOnce(void) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
