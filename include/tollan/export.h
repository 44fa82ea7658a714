/* Export and attribute macros shared by every public Tollan header. */
#ifndef TOLLAN_EXPORT_H
#define TOLLAN_EXPORT_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(TOLLAN_BUILDING_LIBRARY)
#define TOLLAN_API __declspec(dllexport)
#else
#define TOLLAN_API __declspec(dllimport)
#endif
#else
#define TOLLAN_API __attribute__((visibility("default")))
#endif

/*
 * Marks printf-like functions so that -Wformat checks every call. The
 * library formats with the C99 rules (%zu, %lld, %hhd) on every platform,
 * which mingw-w64 calls gnu_printf.
 */
#if defined(__MINGW32__)
#define TOLLAN_PRINTF(fmt, args) __attribute__((format(gnu_printf, fmt, args)))
#define TOLLAN_NORETURN __attribute__((noreturn))
#elif defined(__GNUC__)
#define TOLLAN_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#define TOLLAN_NORETURN __attribute__((noreturn))
#else
#define TOLLAN_PRINTF(fmt, args)
#define TOLLAN_NORETURN
#endif

#ifdef __cplusplus
#define TOLLAN_BEGIN_DECLS extern "C" {
#define TOLLAN_END_DECLS }
#define TOLLAN_NOEXCEPT noexcept
#else
#define TOLLAN_BEGIN_DECLS
#define TOLLAN_END_DECLS
#define TOLLAN_NOEXCEPT
#endif

#endif
