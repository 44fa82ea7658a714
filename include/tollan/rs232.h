/*
 * RS-232 library: numbered serial ports 1 to 1000, their settings, reading
 * with time-outs and terminators, writing through a writing thread per port,
 * transfers between ports and files, and the library's error texts.
 *
 * Every call returns a 32-bit signed status: 0 or a positive count on
 * success, a negative code of the table below on failure. The calling
 * thread's last code is also what ReturnRS232Err returns, and the last code
 * of any thread is in the variable that _GetRs232Err points to (rs232err).
 * A port outside 1..1000 gives -2 before anything else; a port that is not
 * open gives -3 (CloseCom excepted).
 *
 * Time-outs are silence time-outs: a read or write gives up when nothing has
 * moved for the port's time-out (SetComTime; 5 s by default, 0 = no limit)
 * and returns what it moved so far, with -99 as the last error.
 *
 * Thread safety: every call on a port holds that port's lock for the whole
 * call; calls on different ports run in parallel. Each open port (unless
 * opened with a negative output queue size) has a writing thread that
 * drains the queue ComWrt fills; its errors are reported once, by the next
 * call on the port that can report them, or by ReturnRS232Err.
 *
 * On POSIX, a device name beginning with '/' is used as given ("/dev/ttyUSB0",
 * a pseudo-terminal), other names are looked up under /dev, and a port
 * without a name is "COMn", the device /dev/ttyS(n-1). Devices are opened
 * exclusively (another process gets -7).
 */
#ifndef TOLLAN_RS232_H
#define TOLLAN_RS232_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* Error codes (GetRS232ErrorString gives their texts). */
enum {
    ZOR_RS232_NO_ERROR = 0,
    ZOR_RS232_SYSTEM_ERROR = -1,
    ZOR_RS232_INVALID_PORT = -2,
    ZOR_RS232_PORT_NOT_OPEN = -3,
    ZOR_RS232_IO_ERROR = -4,
    ZOR_RS232_INTERNAL_ERROR = -5,
    ZOR_RS232_NO_PORT = -6,
    ZOR_RS232_CANNOT_OPEN = -7,
    ZOR_RS232_NULL_POINTER = -8,
    ZOR_RS232_NO_MEMORY = -11,
    ZOR_RS232_NO_RESOURCES = -12,
    ZOR_RS232_INVALID_PARAMETER = -13,
    ZOR_RS232_INVALID_BAUD = -14,
    ZOR_RS232_INVALID_PARITY = -24,
    ZOR_RS232_INVALID_DATA_BITS = -34,
    ZOR_RS232_INVALID_STOP_BITS = -44,
    ZOR_RS232_BAD_FILE_HANDLE = -90,
    ZOR_RS232_FILE_IO_ERROR = -91,
    ZOR_RS232_INVALID_COUNT = -94,
    ZOR_RS232_TIMEOUT = -99,
    ZOR_RS232_INVALID_BREAK_TIME = -104,
    ZOR_RS232_INVALID_INPUT_QUEUE = -114,
    ZOR_RS232_INVALID_OUTPUT_QUEUE = -124,
    ZOR_RS232_GENERAL_IO_ERROR = -151,
    ZOR_RS232_NULL_BUFFER = -152,
    /* XModem */
    ZOR_XMODEM_NO_ACK = -257,
    ZOR_XMODEM_SEND_RETRIES = -258,
    ZOR_XMODEM_RECEIVE_RETRIES = -259,
    ZOR_XMODEM_UNEXPECTED_EOT = -260,
    ZOR_XMODEM_NO_PACKET_NUMBER = -261,
    ZOR_XMODEM_PACKET_NUMBER = -262,
    ZOR_XMODEM_NO_PACKET_DATA = -263,
    ZOR_XMODEM_NO_CHECK = -264,
    ZOR_XMODEM_CHECK = -265,
    ZOR_XMODEM_PACKET_TOO_LONG = -269,
    ZOR_XMODEM_FILE_OPEN = -300,
    ZOR_RS232_FILE_READ_ERROR = -301,
    ZOR_XMODEM_NO_INITIAL_NAK = -302,
    ZOR_XMODEM_NO_EOT_ACK = -303,
    ZOR_RS232_FILE_WRITE_ERROR = -304,
    ZOR_XMODEM_NO_HEADER = -305,
    ZOR_XMODEM_CANCELLED = -402,
    ZOR_XMODEM_CANCELLED_BY_CALLER = -403, /* extension: see XModemSetProgressCallback */
    ZOR_XMODEM_INVALID_START_DELAY = -503,
    ZOR_XMODEM_INVALID_TRIES = -504,
    ZOR_XMODEM_INVALID_WAIT_PERIOD = -505,
    ZOR_XMODEM_INVALID_PACKET_SIZE = -506
};

/* The line-status bits of GetComStat. */
#define ZOR_COM_RECEIVE_OVERFLOW 0x0001
#define ZOR_COM_PARITY_ERROR 0x0010
#define ZOR_COM_OVERRUN 0x0020
#define ZOR_COM_FRAMING_ERROR 0x0040
#define ZOR_COM_BREAK 0x0080
#define ZOR_COM_HELD_BY_XOFF 0x1000
#define ZOR_COM_XOFF_SENT 0x4000

/* The modem-line bits of GetComLineStatus. */
#define ZOR_COM_CTS 0x10
#define ZOR_COM_DSR 0x20
#define ZOR_COM_RING 0x40
#define ZOR_COM_CARRIER 0x80

/*
 * Opens `port` on `deviceName` (NULL or "" for COM<port>) with the device's
 * system defaults (the "ports" settings entry "COMn:", else 9600 baud, no
 * parity, 7 data bits, 1 stop bit). An open port is closed and opened again.
 * Returns 0, or -2, -6 (no such device), -7 (in use or cannot be opened),
 * -5 (defaults that cannot be read), -11, -12.
 */
TOLLAN_API int32_t OpenCom(int32_t port, const char *deviceName) TOLLAN_NOEXCEPT;
/*
 * Opens `port` with the given settings: baud rate (any positive rate),
 * parity (0 none, 1 odd, 2 even, 3 mark, 4 space), data bits (5 to 8), stop
 * bits (1 or 2), and the driver's queue sizes (0 means 512, 1 to 29 mean 30;
 * a negative output queue size selects synchronous writes without a writing
 * thread). Returns 0 or -14, -24, -34, -44, -114, -124 for the settings and
 * the codes of OpenCom.
 */
TOLLAN_API int32_t OpenComConfig(int32_t port, const char *deviceName, int32_t baudRate, int32_t parity,
                                 int32_t dataBits, int32_t stopBits, int32_t inputQueueSize,
                                 int32_t outputQueueSize) TOLLAN_NOEXCEPT;
/* Closes the port; a port that is not open is no error. */
TOLLAN_API int32_t CloseCom(int32_t port) TOLLAN_NOEXCEPT;
/* The port's time-out in seconds (0: no limit; negative: -13). */
TOLLAN_API int32_t SetComTime(int32_t port, double seconds) TOLLAN_NOEXCEPT;
/* XON/XOFF flow control in both directions on (non-zero) or off. */
TOLLAN_API int32_t SetXMode(int32_t port, int32_t mode) TOLLAN_NOEXCEPT;
/* 0: no CTS flow control, DTR on; 1: CTS flow control, DTR handshaking; 2: CTS flow control, DTR on; else
 * -13. */
TOLLAN_API int32_t SetCTSMode(int32_t port, uint32_t mode) TOLLAN_NOEXCEPT;
/*
 * Escape functions: 1 set XOFF, 2 set XON (both need XON/XOFF mode), 3 set
 * RTS, 4 clear RTS (not in CTS mode), 5 set DTR, 6 clear DTR (not with DTR
 * handshaking), 9 clear break; 128 to 131 are handed to the serial driver.
 * Refused codes and the others give -13; a failing device gives -1.
 */
TOLLAN_API int32_t ComSetEscape(int32_t port, uint32_t code) TOLLAN_NOEXCEPT;
/* Stores the system's handle of the open device (a HANDLE on Windows, the descriptor elsewhere). */
TOLLAN_API int32_t GetSystemComHandle(int32_t port, intptr_t *handle) TOLLAN_NOEXCEPT;
/* The settings the device holds now; NULL pointers are skipped. */
TOLLAN_API int32_t __GetComConfig(int32_t port, int32_t *baudRate, int32_t *parity, int32_t *dataBits,
                                  int32_t *stopBits, int32_t *inputQueueSize,
                                  int32_t *outputQueueSize) TOLLAN_NOEXCEPT;
/* The system defaults of a device; *found is always set to 1. */
TOLLAN_API int32_t __GetPortDefaults(const char *deviceName, int32_t *baudRate, int32_t *parity,
                                     int32_t *dataBits, int32_t *stopBits, int32_t *xonXoffMode,
                                     int32_t *ctsMode, unsigned char *found) TOLLAN_NOEXCEPT;

/*
 * Reads `count` bytes (count of 2^31 or more: -94; NULL buffer: -152).
 * Returns the bytes read; on a time-out those read so far (-99 as the last error).
 */
TOLLAN_API int32_t ComRd(int32_t port, void *buffer, uint64_t count) TOLLAN_NOEXCEPT;
/* One byte (0..255), or the last error (-99 on a time-out). */
TOLLAN_API int32_t ComRdByte(int32_t port) TOLLAN_NOEXCEPT;
/*
 * Reads until `terminator` (compared under the data-bit mask; not stored) or
 * `count` bytes. A CR terminator swallows an LF that follows at once, an LF
 * one a CR; any other byte that follows is kept for the next read. A
 * terminator whose masked value is 0 returns at once when nothing waits.
 */
TOLLAN_API int32_t ComRdTerm(int32_t port, void *buffer, uint64_t count, int32_t terminator) TOLLAN_NOEXCEPT;
/* Queues (or, in synchronous mode, writes) `count` bytes; on a time-out those taken so far. */
TOLLAN_API int32_t ComWrt(int32_t port, const void *buffer, uint64_t count) TOLLAN_NOEXCEPT;
/* 1 when the byte was taken, 0 on a time-out, else a negative code. */
TOLLAN_API int32_t ComWrtByte(int32_t port, int32_t byte) TOLLAN_NOEXCEPT;
/*
 * Copies bytes from the port to a file of the formatting library (tollan/fmtio.h):
 * at most `count` bytes (0: no limit), up to `terminator` (-1: none).
 */
TOLLAN_API int32_t ComToFile(int32_t port, int32_t fileHandle, int32_t count,
                             int32_t terminator) TOLLAN_NOEXCEPT;
/* Sends bytes of a file to the port: `count` bytes (0: to the end), up to `terminator` (-1: none). */
TOLLAN_API int32_t ComFromFile(int32_t port, int32_t fileHandle, int32_t count,
                               int32_t terminator) TOLLAN_NOEXCEPT;
/* Drops what was received and not read; 0 or -1. */
TOLLAN_API int32_t FlushInQ(int32_t port) TOLLAN_NOEXCEPT;
/* Drops what is queued and not yet sent; 0 or -1. */
TOLLAN_API int32_t FlushOutQ(int32_t port) TOLLAN_NOEXCEPT;
/* Bytes waiting to be read. */
TOLLAN_API int32_t GetInQLen(int32_t port) TOLLAN_NOEXCEPT;
/* Bytes waiting in the writing thread's queue, or its error. */
TOLLAN_API int32_t GetOutQLen(int32_t port) TOLLAN_NOEXCEPT;
/* The line-status bits gathered since the last call (ZOR_COM_*), or the writing thread's error. */
TOLLAN_API int32_t GetComStat(int32_t port) TOLLAN_NOEXCEPT;
/* The modem lines (ZOR_COM_CTS ...); 0 on any failure, never negative. */
TOLLAN_API int32_t GetComLineStatus(int32_t port) TOLLAN_NOEXCEPT;
/* The serial driver's connection state word. */
TOLLAN_API int32_t GetComConnectionState(int32_t port) TOLLAN_NOEXCEPT;
/* Holds a break for `milliseconds` (0: 250); negative: -104. */
TOLLAN_API int32_t ComBreak(int32_t port, int32_t milliseconds) TOLLAN_NOEXCEPT;

/* ---- XModem ---------------------------------------------------------------
 * Transfers of whole files over an open port; the line is 8-N-1 without
 * XON/XOFF for the transfer and gets its own settings back afterwards. */

/* The port's XModem values: start delay (s), tries, wait period (s) for each
 * answer, packet size (1024 sends STX packets); 0 restores a default (10.0,
 * 10, 10.0, 128). -503 to -506 for negative values, -269 for a packet size
 * above the input queue size. */
TOLLAN_API int32_t XModemConfig(int32_t port, double startDelay, int32_t maximumTries, double waitPeriod,
                                int32_t packetSize) TOLLAN_NOEXCEPT;
/* Sends a file; the receiver chooses CRC (C) or checksum (NAK) mode. */
TOLLAN_API int32_t XModemSend(int32_t port, const char *fileName) TOLLAN_NOEXCEPT;
/* Receives into a file, which keeps the padding of the last packet. */
TOLLAN_API int32_t XModemReceive(int32_t port, const char *fileName) TOLLAN_NOEXCEPT;
/* Whether transfers flush both queues before each packet and answer (on at
 * start); returns the previous setting. */
TOLLAN_API int32_t __SetXModemFlushesQs(int32_t flag) TOLLAN_NOEXCEPT;

/* Extension. Progress of a transfer on the port: called on the transferring
 * thread after every data packet that went through (sending: the receiver
 * acknowledged it; receiving: it is written and about to be acknowledged),
 * with the packets and data bytes (padding included) so far and the packets
 * repeated so far. A non-zero return cancels the transfer at that packet
 * boundary: two CANs go to the peer (in place of a receiver's ACK) and the
 * transfer returns -403. NULL removes the callback; a close removes it too.
 * 0 or the port's error. */
typedef int32_t (*XModemProgressCallback)(int32_t port, int32_t packets, int64_t bytes, int32_t retries,
                                          void *callbackData);
TOLLAN_API int32_t XModemSetProgressCallback(int32_t port, XModemProgressCallback callback,
                                             void *callbackData) TOLLAN_NOEXCEPT;

/* The calling thread's last error, or an error a writing thread met for it. */
TOLLAN_API int32_t ReturnRS232Err(void) TOLLAN_NOEXCEPT;
/* The text of an error code ("Unknown error number" for others; -1: the system's text), in a buffer of the
 * calling thread. */
TOLLAN_API char *GetRS232ErrorString(int32_t errorCode) TOLLAN_NOEXCEPT;
/* The address of the library's last-error variable: rs232err. */
TOLLAN_API int32_t *_GetRs232Err(void) TOLLAN_NOEXCEPT;
#define rs232err (*_GetRs232Err())

TOLLAN_END_DECLS

#endif
