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

TOLLAN_END_DECLS

#endif
