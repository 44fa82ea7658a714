/*
 * A simulated digital multimeter on a pseudo-terminal. It prints the path of
 * the terminal end on standard output, then answers on its own end until the
 * client closes the terminal:
 *
 *   *IDN?            its identification line, ended by LF
 *   MEAS:STREAM n    n readings of about 12.3456 V with a little noise, one
 *                    line each ("12.3461 V" CR LF), 50 ms apart
 *   LOG:SEND?        its reading log, a text file of a few KB ("12, 0.550,
 *                    12.3449" LF per reading), sent with XModem: it waits
 *                    for the receiver's C and sends 128-byte CRC packets
 *
 * Commands end with LF; a CR is ignored. Anything else gets no answer and a
 * note on standard error. The demo starts it by itself; it can also be run
 * alone and a client pointed at the path it prints (demo --device /dev/pts/N).
 */
#define _XOPEN_SOURCE 700

#include <errno.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include "xmodem_sender.h"

static const char kIdentification[] = "Simulated Instruments,DMM-6,0001,1.0\n";
static const double kNominalVolts = 12.3456;
static const double kNoiseVolts = 0.0008;
static const long kPauseNs = 50 * 1000 * 1000;
static const long kMostReadings = 100000;
static const int kLogReadings = 200;

static uint32_t noiseState;

/* Uniform in [0, 1) from a xorshift generator. */
static double uniform(void)
{
    noiseState ^= noiseState << 13;
    noiseState ^= noiseState >> 17;
    noiseState ^= noiseState << 5;
    return noiseState / 4294967296.0;
}

/* Roughly normal noise of the given spread: the sum of four uniforms. */
static double noise(double sigma)
{
    return (uniform() + uniform() + uniform() + uniform() - 2.0) * sigma * 1.732;
}

/* Writes all of `text`; 0 once the client has gone. */
static int sendText(int terminal, const char *text, size_t length)
{
    while (length > 0) {
        const ssize_t n = write(terminal, text, length);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return 0;
        text += n;
        length -= (size_t)n;
    }
    return 1;
}

static int stream(int terminal, long count)
{
    const struct timespec pause = {0, kPauseNs};
    char line[32];
    long i;
    for (i = 0; i < count; ++i) {
        const int length = snprintf(line, sizeof line, "%.4f V\r\n", kNominalVolts + noise(kNoiseVolts));
        if (!sendText(terminal, line, (size_t)length)) return 0;
        if (i + 1 < count) nanosleep(&pause, NULL);
    }
    return 1;
}

/* The reading log: a heading and one line per reading, taken 50 ms apart. */
static char *makeLog(size_t *length)
{
    const size_t size = 128 + (size_t)kLogReadings * 32;
    char *log = malloc(size);
    size_t used;
    int i;
    if (log == NULL) return NULL;
    used = (size_t)snprintf(log, size, "# %s# reading, seconds, volts\n", kIdentification);
    for (i = 1; i <= kLogReadings && used < size; ++i)
        used += (size_t)snprintf(log + used, size - used, "%d, %.3f, %.4f\n", i, (i - 1) * 0.05,
                                 kNominalVolts + noise(kNoiseVolts));
    *length = used < size ? used : size - 1;
    return log;
}

/* Sends the reading log. A client that went meanwhile is noticed by the next read. */
static int sendLog(int terminal)
{
    size_t length = 0;
    char *log = makeLog(&length);
    const char *failed = log != NULL ? XModemSendText(terminal, log, length) : "no memory for the log";
    free(log);
    if (failed != NULL) fprintf(stderr, "instrument_sim: the log was not sent: %s\n", failed);
    return 1;
}

/* Answers one command; 0 once the client has gone. */
static int answer(int terminal, const char *command)
{
    long count = 0;
    char extra = 0;
    if (strcmp(command, "*IDN?") == 0) return sendText(terminal, kIdentification, strlen(kIdentification));
    if (strcmp(command, "LOG:SEND?") == 0) return sendLog(terminal);
    if (sscanf(command, "MEAS:STREAM %ld%c", &count, &extra) == 1 && count > 0 && count <= kMostReadings)
        return stream(terminal, count);
    if (command[0] != '\0') fprintf(stderr, "instrument_sim: no answer to \"%s\"\n", command);
    return 1;
}

/* Reads commands until the client closes its end (the read then fails with EIO). */
static void serve(int terminal)
{
    char command[128];
    size_t used = 0;
    for (;;) {
        char byte;
        const ssize_t n = read(terminal, &byte, 1);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        if (byte == '\r') continue;
        if (byte != '\n') {
            if (used < sizeof command - 1) command[used++] = byte;
            continue;
        }
        command[used] = '\0';
        used = 0;
        if (!answer(terminal, command)) return;
    }
}

/* Raw from the start: nothing the client sends is echoed or translated,
 * whatever the client does to the terminal's settings. */
static void makeRaw(int terminal)
{
    struct termios mode;
    if (tcgetattr(terminal, &mode) != 0) return;
    mode.c_iflag &= ~(tcflag_t)(IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON);
    mode.c_oflag &= ~(tcflag_t)OPOST;
    mode.c_lflag &= ~(tcflag_t)(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
    mode.c_cflag = (mode.c_cflag & ~(tcflag_t)(CSIZE | PARENB)) | CS8;
    tcsetattr(terminal, TCSANOW, &mode);
}

int main(void)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    const char *path = NULL;
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0 ||
        (path = ptsname(terminal)) == NULL) {
        fprintf(stderr, "instrument_sim: no pseudo-terminal: %s\n", strerror(errno));
        return 1;
    }
    makeRaw(terminal);
    noiseState = (uint32_t)time(NULL) ^ ((uint32_t)getpid() << 16) ^ 0x9e3779b9u;
    if (noiseState == 0) noiseState = 1;
    printf("%s\n", path);
    fflush(stdout);
    serve(terminal);
    close(terminal);
    return 0;
}
