/*
 * Logger: one process-wide diagnostic log with level bits, a line template
 * with named fields, one selectable output and timing events.
 *
 * Thread safety: every function may be called from any thread. Lines of
 * different threads never interleave. The level test is a single atomic read.
 */
#ifndef TOLLAN_LOGGER_H
#define TOLLAN_LOGGER_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* Level bits; a mask of them selects what callers write. */
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

/* Output locations. 1, 3 and 4 are the built-in streams, 5 a log file. */
enum {
    ZOR_LOG_LOCATION_NONE = 0,
    ZOR_LOG_LOCATION_STDOUT = 1,
    ZOR_LOG_LOCATION_NONE_2 = 2,
    ZOR_LOG_LOCATION_STDERR = 3,
    ZOR_LOG_LOCATION_DEBUG_OUTPUT = 4,
    ZOR_LOG_LOCATION_FILE = 5
};

/* The current level mask. Callers test their level bit against it before writing. */
TOLLAN_API uint32_t GetZORLogReportingLevels(void) TOLLAN_NOEXCEPT;
/* Replaces the level mask; returns the previous one. */
TOLLAN_API uint32_t SetZORLogReportingLevels(uint32_t mask) TOLLAN_NOEXCEPT;
/*
 * Selects the output. Location 5 opens fileName (fileFormat 0: truncate,
 * anything else: append). Returns 1 on success, 0 when refused (location
 * above 5, location 3 while standard error has failed, a file that cannot
 * be opened); a refused switch leaves the previous output in force.
 */
TOLLAN_API int32_t SetZORLogReportingLocation(uint32_t location, int32_t fileFormat,
                                              const char *fileName) TOLLAN_NOEXCEPT;
/* Replaces the line template; NULL is ignored. */
TOLLAN_API void SetZORLogOutputFormat(const char *lineTemplate) TOLLAN_NOEXCEPT;
/* The current template; the text stays valid until the template next changes. */
TOLLAN_API const char *GetZORLogOutputFormat(void) TOLLAN_NOEXCEPT;

/*
 * Writes one line built from the template. The writer does not filter by
 * level: callers test the mask first. noLineEnd writes the line without its
 * end; echo also prints the message alone to standard output.
 */
TOLLAN_API void WriteZORLogMessage(uint32_t level, int32_t noLineEnd, int32_t echo,
                                   const char *file, const char *function, int32_t line,
                                   const char *format, ...) TOLLAN_PRINTF(7, 8) TOLLAN_NOEXCEPT;
/*
 * Writes a TIMING line whose "[ELAPSED]" is the time since the handle was
 * taken or last updated. Unknown handles write nothing. release forgets the
 * handle afterwards; update restarts its clock.
 */
TOLLAN_API void WriteZORLogTimingEvent(uint32_t handle, int32_t release, int32_t update,
                                       int32_t noLineEnd, int32_t echo, const char *file,
                                       const char *function, int32_t line, const char *format,
                                       ...) TOLLAN_PRINTF(9, 10) TOLLAN_NOEXCEPT;
/* A new timing handle whose clock starts now. */
TOLLAN_API uint32_t GetZORLogTimingHandle(void) TOLLAN_NOEXCEPT;
/* Restarts a handle's clock; unknown handles are ignored. */
TOLLAN_API void UpdateZORLogTimingHandle(uint32_t handle) TOLLAN_NOEXCEPT;
/* Forgets a handle; unknown handles are ignored. */
TOLLAN_API void ReleaseZORLogTimingHandle(uint32_t handle) TOLLAN_NOEXCEPT;

/*
 * Reports a failed assertion as a FATAL line "Assertion failed: <expression>
 * (<message>)". message may be NULL. The program goes on.
 */
TOLLAN_API void ZORAssert(const char *expression, const char *file, const char *function,
                          int32_t line, const char *message, ...) TOLLAN_PRINTF(5, 6) TOLLAN_NOEXCEPT;

/* Reads the logger's settings once per process; later calls do nothing. */
TOLLAN_API void ConfigureZORLoggerOnce(void) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
