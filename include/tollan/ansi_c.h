/*
 * The ANSI C library: Tollan's own C streams over its own numbered
 * low-level files, and its printf and scanf engines.
 *
 * NAMES. The functions are tollan_fopen, tollan_printf, ... on every
 * platform; TOLLAN.dll exports the plain C names (fopen, printf, ...) as
 * well. A program that wants the plain names in its source defines
 * TOLLAN_PLAIN_C_NAMES before including this header: they then stand for the
 * tollan_ functions by macro, FILE for TollanFILE and stdin, stdout, stderr
 * for the library's three standard streams. Nothing is interposed on the
 * host's C library: its FILE and ours never mix, and a stream of one must
 * never be passed to the other.
 *
 * ERRNO. On POSIX the streams set the calling thread's errno of the host C
 * library, so errno, perror and strerror read what they left. TOLLAN.dll
 * keeps a per-thread errno of its own, which tollan_errno() reaches on both
 * platforms (TOLLAN_ERRNO reads it). Values: 5 EIO (a write that wrote
 * nothing), 9 EBADF (bad descriptor), 12 ENOMEM (no memory; also a seventh
 * ungetc), 17 EEXIST (no free temporary name), 22 EINVAL (bad argument, or a
 * pointer that is not an open stream of this library), 24 EMFILE (stream
 * table full), and for failed opens the system's reason (2 ENOENT, 13
 * EACCES, 28 ENOSPC, ...).
 *
 * STREAMS. 255 slots: stdin, stdout and stderr, then 252 for fopen. stdin is
 * line buffered, stdout unbuffered, stderr unbuffered through an 80-byte
 * buffer; other streams get a 512-byte buffer at their first read or write.
 * Text mode (no 'b' in the mode) writes each LF to a file as CR LF and reads
 * CR LF as LF, on both platforms; the standard streams of a POSIX process
 * keep the host's LF line ends. Every call on a stream holds that stream's
 * lock, so several threads may share one. Calls given a null pointer, a
 * closed stream or a pointer that is not a stream fail with errno 22 and
 * their failure value; they never crash.
 *
 * Every write to stdout or stderr (descriptors 1 and 2) also reaches the
 * debugger: its output hook and, while a debugger is attached, the standard
 * I/O pipe that tollan-monitor shows (docs/debugging.md).
 *
 * PRINTF. The C99 conversions (d i o u x X c s p n f F e E g G a A %), flags
 * (- + space # 0), width and precision (also *), and the sizes hh h l ll j z
 * t L, plus Windows' I (pointer-sized), I32 and I64 on d i o u x X n.
 * The functions are marked for -Wformat, which checks C99's rules and knows
 * nothing of the I sizes: a call that uses them needs -Wno-format for its
 * line, or its format in a variable.
 * Floating point is correctly rounded and locale-free, identical in both
 * builds; "inf", "nan" (with sign) for the special values. %p prints 16
 * upper-case hexadecimal digits without prefix; %s of NULL prints "(null)";
 * %lc and %ls write UTF-8. The result is the length of the whole text, or a
 * negative value with errno (EOVERFLOW past INT_MAX, EILSEQ for a wide
 * character that has no UTF-8 form, or the stream's error).
 *
 * SCANF. The C99 conversions (d i o u x X n a e f g E F G A s c [ p %) with
 * suppression *, field width and the sizes above (I, I32, I64 too). Floating
 * point is read correctly rounded and locale-free (decimal, hexadecimal,
 * inf, infinity, nan); %lc, %ls and %l[ read UTF-8. The result is the number
 * of items assigned, or TOLLAN_EOF when the input ended or failed first.
 */
#ifndef TOLLAN_ANSI_C_H
#define TOLLAN_ANSI_C_H

#include <stdarg.h>

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* A stream of this library; distinct from the host's FILE. */
typedef struct TollanFILE TollanFILE;
/* A position saved by tollan_fgetpos: the byte offset in the file. */
typedef int64_t tollan_fpos_t;

#define TOLLAN_EOF (-1)
#define TOLLAN_BUFSIZ 512
/* setvbuf types. */
#define TOLLAN_IONBF 0
#define TOLLAN_IOLBF 1
#define TOLLAN_IOFBF 2
#define TOLLAN_SEEK_SET 0
#define TOLLAN_SEEK_CUR 1
#define TOLLAN_SEEK_END 2
/* Room tollan_tmpnam needs; the number of names it can make. */
#define TOLLAN_L_tmpnam 260
#define TOLLAN_TMP_MAX 999

/* Flags of tollan_open and tollan_sopen; at least one of READ and WRITE. */
#define TOLLAN_O_READ 1
#define TOLLAN_O_WRITE 2
#define TOLLAN_O_BINARY 4
#define TOLLAN_O_APPEND 8
#define TOLLAN_O_TRUNC 16
#define TOLLAN_O_CREAT 32
#define TOLLAN_O_EXCL 64       /* with CREAT: fail when the file exists */
#define TOLLAN_O_TEMPORARY 128 /* the file goes when it is closed */
#define TOLLAN_O_SEQUENTIAL 256
#define TOLLAN_O_RANDOM 512
/* Sharing of tollan_sopen (Windows only; POSIX shares every file). */
#define TOLLAN_SH_DENYNO 0 /* others may read and write */
#define TOLLAN_SH_DENYRD 1 /* others may write */
#define TOLLAN_SH_DENYWR 2 /* others may read */
#define TOLLAN_SH_DENYRW 3 /* others may do neither */

/* The calling thread's errno of the library (see ERRNO above). */
TOLLAN_API int *tollan_errno(void) TOLLAN_NOEXCEPT;
#define TOLLAN_ERRNO (*tollan_errno())

/* The standard streams: 0 stdin, 1 stdout, 2 stderr; NULL otherwise. */
TOLLAN_API TollanFILE *tollan_standard_stream(int which) TOLLAN_NOEXCEPT;
#define tollan_stdin (tollan_standard_stream(0))
#define tollan_stdout (tollan_standard_stream(1))
#define tollan_stderr (tollan_standard_stream(2))

/* ---- Low-level files ------------------------------------------------ */
/*
 * Descriptors count from 3; 0, 1 and 2 are the process's standard input,
 * output and error. tollan_open is tollan_sopen with TOLLAN_SH_DENYNO.
 * permission: without any write bit (0222) a file the call creates is
 * read-only. -1 with errno on failure (22 bad flags or share value, 12 no
 * room for another descriptor). tollan_close, tollan_lseek and tollan_eof
 * refuse 0 to 2 (close: -1 and errno 9; lseek and eof: 0); tollan_read
 * refuses 1 and 2, tollan_write refuses 0 (-1, errno 9).
 */
TOLLAN_API int tollan_open(const char *path, int flags, int permission) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_sopen(const char *path, int flags, int share, int permission) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_read(int descriptor, void *buffer, unsigned int count) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_write(int descriptor, const void *bytes, unsigned int count) TOLLAN_NOEXCEPT;
TOLLAN_API int64_t tollan_lseek(int descriptor, int64_t offset, int whence) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_close(int descriptor) TOLLAN_NOEXCEPT;
/* 1 at the end of the file, 0 before it, -1 with errno. */
TOLLAN_API int tollan_eof(int descriptor) TOLLAN_NOEXCEPT;

/* ---- Streams -------------------------------------------------------- */
/*
 * Modes: r, w or a, then any run of b and + in any order; the first other
 * character ends the mode ("rt" is "r"). Anything else first: errno 22.
 */
TOLLAN_API TollanFILE *tollan_fopen(const char *path, const char *mode) TOLLAN_NOEXCEPT;
TOLLAN_API TollanFILE *tollan_freopen(const char *path, const char *mode, TollanFILE *stream) TOLLAN_NOEXCEPT;
/* A stream on an open descriptor (negative: errno 22; not open: errno 9). */
TOLLAN_API TollanFILE *tollan_fdopen(int descriptor, const char *mode) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fclose(TollanFILE *stream) TOLLAN_NOEXCEPT;
/* NULL flushes every stream open for writing; on stdin, drops the input typed ahead. */
TOLLAN_API int tollan_fflush(TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API size_t tollan_fread(void *buffer, size_t size, size_t count, TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API size_t tollan_fwrite(const void *bytes, size_t size, size_t count, TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fgetc(TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_getc(TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_getchar(void) TOLLAN_NOEXCEPT;
/* n < 2 or a null buffer: errno 22 and NULL. */
TOLLAN_API char *tollan_fgets(char *buffer, int n, TollanFILE *stream) TOLLAN_NOEXCEPT;
/* Reads a line of stdin; the newline is dropped. No bound: kept for old programs only. */
TOLLAN_API char *tollan_gets(char *buffer) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fputc(int byte, TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_putc(int byte, TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_putchar(int byte) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fputs(const char *text, TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_puts(const char *text) TOLLAN_NOEXCEPT;
/* At most 6 bytes pushed back (the 7th: errno 12); TOLLAN_EOF is refused. */
TOLLAN_API int tollan_ungetc(int byte, TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fseek(TollanFILE *stream, long offset, int whence) TOLLAN_NOEXCEPT;
TOLLAN_API long tollan_ftell(TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fgetpos(TollanFILE *stream, tollan_fpos_t *position) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fsetpos(TollanFILE *stream, const tollan_fpos_t *position) TOLLAN_NOEXCEPT;
/* Flushes, seeks to 0 and clears end of file; the error flag stays. */
TOLLAN_API void tollan_rewind(TollanFILE *stream) TOLLAN_NOEXCEPT;
/* Refused (errno 22) while the buffer holds data. size 0: one-byte buffer. */
TOLLAN_API int tollan_setvbuf(TollanFILE *stream, char *buffer, int type, size_t size) TOLLAN_NOEXCEPT;
TOLLAN_API void tollan_setbuf(TollanFILE *stream, char *buffer) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_feof(TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_ferror(TollanFILE *stream) TOLLAN_NOEXCEPT;
TOLLAN_API void tollan_clearerr(TollanFILE *stream) TOLLAN_NOEXCEPT;

/*
 * A name for a temporary file: the system's temporary folder, a stem made
 * of the process id and a value fixed for the process, and a number 000 to
 * 999 that skips names of existing files (none left: errno 17). The 999th
 * call fails (errno 22). NULL buffer: a buffer of the calling thread.
 */
TOLLAN_API char *tollan_tmpnam(char *buffer) TOLLAN_NOEXCEPT;
/* A "wb+" stream on a fresh temporary file that goes when it is closed. */
TOLLAN_API TollanFILE *tollan_tmpfile(void) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_remove(const char *path) TOLLAN_NOEXCEPT;
/* An existing target is not replaced (errno 17). */
TOLLAN_API int tollan_rename(const char *from, const char *to) TOLLAN_NOEXCEPT;
/* Writes text, ": " and the text of errno to stderr (text NULL or empty: the errno text alone). */
TOLLAN_API void tollan_perror(const char *text) TOLLAN_NOEXCEPT;

/* ---- printf and scanf ----------------------------------------------- */
TOLLAN_API int tollan_printf(const char *format, ...) TOLLAN_NOEXCEPT TOLLAN_PRINTF(1, 2);
TOLLAN_API int tollan_fprintf(TollanFILE *stream, const char *format, ...) TOLLAN_NOEXCEPT TOLLAN_PRINTF(2, 3);
TOLLAN_API int tollan_sprintf(char *buffer, const char *format, ...) TOLLAN_NOEXCEPT TOLLAN_PRINTF(2, 3);
TOLLAN_API int tollan_snprintf(char *buffer, size_t size, const char *format, ...) TOLLAN_NOEXCEPT
    TOLLAN_PRINTF(3, 4);
TOLLAN_API int tollan_vprintf(const char *format, va_list arguments) TOLLAN_NOEXCEPT TOLLAN_PRINTF(1, 0);
TOLLAN_API int tollan_vfprintf(TollanFILE *stream, const char *format, va_list arguments) TOLLAN_NOEXCEPT
    TOLLAN_PRINTF(2, 0);
TOLLAN_API int tollan_vsprintf(char *buffer, const char *format, va_list arguments) TOLLAN_NOEXCEPT
    TOLLAN_PRINTF(2, 0);
TOLLAN_API int tollan_vsnprintf(char *buffer, size_t size, const char *format, va_list arguments) TOLLAN_NOEXCEPT
    TOLLAN_PRINTF(3, 0);
TOLLAN_API int tollan_scanf(const char *format, ...) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_fscanf(TollanFILE *stream, const char *format, ...) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_sscanf(const char *text, const char *format, ...) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_vscanf(const char *format, va_list arguments) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_vfscanf(TollanFILE *stream, const char *format, va_list arguments) TOLLAN_NOEXCEPT;
TOLLAN_API int tollan_vsscanf(const char *text, const char *format, va_list arguments) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

/*
 * The plain names. This list is also the list of plain names TOLLAN.dll
 * exports (the build reads it from here).
 */
#ifdef TOLLAN_PLAIN_C_NAMES
#undef EOF
#undef BUFSIZ
#undef _IONBF
#undef _IOLBF
#undef _IOFBF
#undef SEEK_SET
#undef SEEK_CUR
#undef SEEK_END
#undef L_tmpnam
#undef TMP_MAX
#undef stdin
#undef stdout
#undef stderr
#define EOF TOLLAN_EOF
#define BUFSIZ TOLLAN_BUFSIZ
#define _IONBF TOLLAN_IONBF
#define _IOLBF TOLLAN_IOLBF
#define _IOFBF TOLLAN_IOFBF
#define SEEK_SET TOLLAN_SEEK_SET
#define SEEK_CUR TOLLAN_SEEK_CUR
#define SEEK_END TOLLAN_SEEK_END
#define L_tmpnam TOLLAN_L_tmpnam
#define TMP_MAX TOLLAN_TMP_MAX
#define FILE TollanFILE
#define fpos_t tollan_fpos_t /* a type: not exported */
#define stdin (tollan_standard_stream(0))
#define stdout (tollan_standard_stream(1))
#define stderr (tollan_standard_stream(2))
#define open tollan_open
#define sopen tollan_sopen
#define read tollan_read
#define write tollan_write
#define lseek tollan_lseek
#define close tollan_close
#define eof tollan_eof
#define fopen tollan_fopen
#define freopen tollan_freopen
#define fdopen tollan_fdopen
#define fclose tollan_fclose
#define fflush tollan_fflush
#define fread tollan_fread
#define fwrite tollan_fwrite
#define fgetc tollan_fgetc
#define getc tollan_getc
#define getchar tollan_getchar
#define fgets tollan_fgets
#define gets tollan_gets
#define fputc tollan_fputc
#define putc tollan_putc
#define putchar tollan_putchar
#define fputs tollan_fputs
#define puts tollan_puts
#define ungetc tollan_ungetc
#define fseek tollan_fseek
#define ftell tollan_ftell
#define fgetpos tollan_fgetpos
#define fsetpos tollan_fsetpos
#define rewind tollan_rewind
#define setvbuf tollan_setvbuf
#define setbuf tollan_setbuf
#define feof tollan_feof
#define ferror tollan_ferror
#define clearerr tollan_clearerr
#define tmpnam tollan_tmpnam
#define tmpfile tollan_tmpfile
#define remove tollan_remove
#define rename tollan_rename
#define perror tollan_perror
#define printf tollan_printf
#define fprintf tollan_fprintf
#define sprintf tollan_sprintf
#define snprintf tollan_snprintf
#define vprintf tollan_vprintf
#define vfprintf tollan_vfprintf
#define vsprintf tollan_vsprintf
#define vsnprintf tollan_vsnprintf
#define scanf tollan_scanf
#define fscanf tollan_fscanf
#define sscanf tollan_sscanf
#define vscanf tollan_vscanf
#define vfscanf tollan_vfscanf
#define vsscanf tollan_vsscanf
#endif

#endif
