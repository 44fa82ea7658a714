/*
 * A minimal XModem sender in plain C, for the simulated instrument, which
 * does not use the library: CRC mode (the receiver asks with C) and 128-byte
 * packets only. A packet is SOH, its number and the number's complement, 128
 * data bytes and the CRC-16 of the data, high byte first; the receiver
 * answers ACK, or NAK for "again". EOT ends the file and CAN gives up.
 */
#define _XOPEN_SOURCE 700

#include "xmodem_sender.h"

#include <errno.h>
#include <poll.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#define SOH 0x01
#define EOT 0x04
#define ACK 0x06
#define NAK 0x15
#define CAN 0x18
#define SUB 0x1A
#define CRC_REQUEST 'C'

#define PACKET_SIZE 128
#define START_WAIT_MS 5000
#define ANSWER_WAIT_MS 2000
#define TRIES 5

#define NO_BYTE (-1)
#define GONE (-2)

/* CRC-16 with the polynomial 0x1021, starting from 0, most significant bit first. */
static uint16_t crc16(const unsigned char *data, size_t length)
{
    uint16_t crc = 0;
    size_t i;
    int bit;
    for (i = 0; i < length; ++i) {
        crc ^= (uint16_t)(data[i] << 8);
        for (bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000) ? (uint16_t)((crc << 1) ^ 0x1021) : (uint16_t)(crc << 1);
    }
    return crc;
}

/* One byte within `ms`; NO_BYTE when none came, GONE once the client has closed its end. */
static int readByte(int terminal, int ms)
{
    struct pollfd wait;
    unsigned char byte;
    ssize_t n;
    wait.fd = terminal;
    wait.events = POLLIN;
    wait.revents = 0;
    n = poll(&wait, 1, ms);
    if (n < 0 && errno == EINTR) return NO_BYTE;
    if (n == 0) return NO_BYTE;
    if (n < 0) return GONE;
    do {
        n = read(terminal, &byte, 1);
    } while (n < 0 && errno == EINTR);
    return n == 1 ? byte : GONE;
}

/* The first of the `wanted` bytes, others ignored; NO_BYTE when nothing came for `ms`. */
static int awaitByte(int terminal, int ms, const char *wanted)
{
    for (;;) {
        const int byte = readByte(terminal, ms);
        if (byte < 0) return byte;
        if (byte != 0 && strchr(wanted, byte) != NULL) return byte;
    }
}

static int writeAll(int terminal, const unsigned char *bytes, size_t length)
{
    while (length > 0) {
        const ssize_t n = write(terminal, bytes, length);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return 0;
        bytes += n;
        length -= (size_t)n;
    }
    return 1;
}

/* Sends one packet (or, with `length` 0, the EOT) until the receiver acknowledges it. */
static const char *sendAcknowledged(int terminal, const unsigned char *bytes, size_t length)
{
    static const char kAnswers[] = {ACK, NAK, CAN, '\0'};
    int tries;
    for (tries = 0; tries < TRIES; ++tries) {
        int answer;
        if (!writeAll(terminal, bytes, length)) return "the client has gone";
        answer = awaitByte(terminal, ANSWER_WAIT_MS, kAnswers);
        if (answer == ACK) return NULL;
        if (answer == CAN) return "the receiver cancelled";
        if (answer == GONE) return "the client has gone";
    }
    return "no acknowledgement";
}

const char *XModemSendText(int terminal, const char *text, size_t length)
{
    static const char kRequests[] = {CRC_REQUEST, CAN, '\0'};
    static const unsigned char kEnd[] = {EOT};
    unsigned char packet[3 + PACKET_SIZE + 2];
    unsigned char number = 1;
    size_t sent;
    int request = awaitByte(terminal, START_WAIT_MS, kRequests);
    if (request == NO_BYTE) return "the receiver never asked for CRC mode";
    if (request != CRC_REQUEST) return request == CAN ? "the receiver cancelled" : "the client has gone";

    for (sent = 0; sent < length; sent += PACKET_SIZE, ++number) {
        const size_t part = length - sent < PACKET_SIZE ? length - sent : PACKET_SIZE;
        const char *failed;
        uint16_t crc;
        packet[0] = SOH;
        packet[1] = number;
        packet[2] = (unsigned char)~number;
        memcpy(packet + 3, text + sent, part);
        memset(packet + 3 + part, SUB, PACKET_SIZE - part);
        crc = crc16(packet + 3, PACKET_SIZE);
        packet[3 + PACKET_SIZE] = (unsigned char)(crc >> 8);
        packet[4 + PACKET_SIZE] = (unsigned char)crc;
        failed = sendAcknowledged(terminal, packet, sizeof packet);
        if (failed != NULL) return failed;
    }
    return sendAcknowledged(terminal, kEnd, sizeof kEnd);
}
