/* The simulated instrument's XModem sender. */
#ifndef XMODEM_SENDER_H
#define XMODEM_SENDER_H

#include <stddef.h>

/*
 * Sends `length` bytes of text on the terminal with XModem in CRC mode, in
 * 128-byte packets, the last one padded with SUB (0x1A) as text files are.
 * Waits for the receiver's C first. Returns NULL when the receiver has
 * acknowledged the end, else why it failed.
 */
const char *XModemSendText(int terminal, const char *text, size_t length);

#endif
