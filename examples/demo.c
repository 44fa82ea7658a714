/*
 * An instrument client: it identifies a multimeter on a serial port, has it
 * stream voltage readings, and reports each reading, their minimum, mean and
 * maximum, and how long they took. Then it fetches the instrument's reading
 * log with XModem and shows its size and first lines.
 *
 *   demo [--device PATH] [--count N]
 *
 * Without --device it starts the simulated instrument (instrument_sim) on a
 * pseudo-terminal and talks to that. With it, it talks to the device named
 * ("/dev/ttyUSB0", "COM3"), which has to understand the same three commands:
 * "*IDN?", "MEAS:STREAM n" (n lines such as "12.3456 V" CR LF) and
 * "LOG:SEND?" (a text file sent with XModem).
 *
 * The client is a module of the library: its run-state callback closes the
 * port when the module is stopped, however the session ended.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <tollan/engine.h>
#include <tollan/fmtio.h>
#include <tollan/logger.h>
#include <tollan/rs232.h>
#include <tollan/utility.h>

#ifdef _WIN32
#include <process.h>
#define getpid _getpid
#else
#include <unistd.h>
#endif

#include "instrument_launch.h"

#define PORT 1
#define TIMEOUT_SECONDS 2.0
#define PREVIEW_LINES 5
#define XMODEM_PADDING 0x1A /* SUB, which fills the last packet of a text file */

/* Writes a log line when the logger's level mask asks for `level`. */
#define LOG(level, ...)                                                                   \
    do {                                                                                  \
        if (GetZORLogReportingLevels() & (level))                                         \
            WriteZORLogMessage((level), 0, 0, __FILE__, __func__, __LINE__, __VA_ARGS__); \
    } while (0)

static void onRunState(int32_t event)
{
    if (event == ZOR_RUN_STATE_STARTED) LOG(ZOR_LOG_INFO, "module started");
    if (event == ZOR_RUN_STATE_STOP) {
        CloseCom(PORT);
        LOG(ZOR_LOG_INFO, "module stopped, port %d closed", PORT);
    }
}

/* The text of the calling thread's last serial error. */
static const char *lastError(void)
{
    return GetRS232ErrorString(ReturnRS232Err());
}

static int sendCommand(const char *command)
{
    const size_t length = strlen(command);
    if (ComWrt(PORT, command, length) == (int32_t)length) return 1;
    LOG(ZOR_LOG_ERROR, "cannot send %.*s: %s", (int)strcspn(command, "\n"), command, lastError());
    return 0;
}

/* Reads one line ended by `terminator` into `line`, without the terminator. */
static int receiveLine(char *line, size_t size, int terminator)
{
    const int32_t got = ComRdTerm(PORT, line, size - 1, terminator);
    if (got >= 0 && ReturnRS232Err() == 0) {
        line[got] = '\0';
        return 1;
    }
    LOG(ZOR_LOG_ERROR, "no answer: %s", lastError());
    return 0;
}

static int openPort(const char *device)
{
    if (OpenComConfig(PORT, device, 9600, 0, 8, 1, 512, 512) != 0) {
        LOG(ZOR_LOG_ERROR, "cannot open %s: %s", device, lastError());
        return 0;
    }
    SetComTime(PORT, TIMEOUT_SECONDS);
    LOG(ZOR_LOG_INFO, "port %d open on %s: 9600 baud, 8N1, time-out %.1f s", PORT, device, TIMEOUT_SECONDS);
    /* Some instruments restart when DTR comes up and chatter while they do:
     * give them a moment, then drop what they said. */
    Delay(0.1);
    FlushInQ(PORT);
    return 1;
}

static int identify(void)
{
    char line[256];
    if (!sendCommand("*IDN?\n") || !receiveLine(line, sizeof line, '\n')) return 0;
    printf("Instrument: %s\n", line);
    return 1;
}

struct Summary {
    double least, sum, most;
    char unit[16];
};

/* Reads and prints `count` readings; each line ends with CR, whose LF partner the port swallows. */
static int readReadings(int count, struct Summary *summary)
{
    char line[64];
    int i;
    for (i = 0; i < count; ++i) {
        char *end;
        double value;
        if (!receiveLine(line, sizeof line, '\r')) return 0;
        value = strtod(line, &end);
        if (end == line) {
            LOG(ZOR_LOG_ERROR, "reading %d is no number: \"%s\"", i + 1, line);
            return 0;
        }
        printf("  %3d  %s\n", i + 1, line);
        if (i == 0) {
            snprintf(summary->unit, sizeof summary->unit, "%s", end + strspn(end, " "));
            summary->least = summary->most = value;
        }
        summary->sum += value;
        if (value < summary->least) summary->least = value;
        if (value > summary->most) summary->most = value;
    }
    return 1;
}

static int measure(int count)
{
    char command[32];
    struct Summary summary = {0.0, 0.0, 0.0, ""};
    const uint32_t timing = GetZORLogTimingHandle();
    const double started = Timer();
    double elapsed;

    snprintf(command, sizeof command, "MEAS:STREAM %d\n", count);
    if (!sendCommand(command) || !readReadings(count, &summary)) {
        ReleaseZORLogTimingHandle(timing);
        return 0;
    }
    elapsed = Timer() - started;
    WriteZORLogTimingEvent(timing, 1, 0, 0, 0, __FILE__, __func__, __LINE__, "%d readings took [ELAPSED]",
                           count);
    printf("Readings: %d   min %.4f %s   mean %.4f %s   max %.4f %s\n", count, summary.least, summary.unit,
           summary.sum / count, summary.unit, summary.most, summary.unit);
    printf("Elapsed:  %.3f s (%.1f readings/s)\n", elapsed, elapsed > 0.0 ? count / elapsed : 0.0);
    return 1;
}

/* A file name in the temporary folder, of this process alone. */
static void temporaryPath(char *path, size_t size)
{
    const char *folder = getenv("TMPDIR");
#ifdef _WIN32
    if (folder == NULL || *folder == '\0') folder = getenv("TEMP");
    if (folder == NULL || *folder == '\0') folder = ".";
    snprintf(path, size, "%s\\demo-log-%d.txt", folder, (int)getpid());
#else
    if (folder == NULL || *folder == '\0') folder = "/tmp";
    snprintf(path, size, "%s/demo-log-%d.txt", folder, (int)getpid());
#endif
}

/* A transfer begins by dropping both queues, so a command has to be on the
 * line first: waits until the writing thread has written it, then for the
 * time its bytes take at 9600 baud. */
static int waitUntilSent(size_t length)
{
    const double started = Timer();
    int32_t waiting;
    while ((waiting = GetOutQLen(PORT)) > 0 && Timer() - started < TIMEOUT_SECONDS) Delay(0.001);
    if (waiting != 0) {
        LOG(ZOR_LOG_ERROR, "the command did not leave: %s",
            waiting < 0 ? GetRS232ErrorString(waiting) : "time-out");
        return 0;
    }
    Delay((double)length * 10.0 / 9600.0);
    return 1;
}

/* Prints the size of the log without its padding, its lines and the first of them. */
static int printLog(const char *path, double elapsed)
{
    int64_t size = 0;
    int32_t handle;
    int32_t got;
    int32_t length;
    int32_t i;
    int lines = 0;
    char *text;
    const char *line;
    if (GetFileInfo(path, &size) != 1 || size <= 0 || size > 1000000) {
        LOG(ZOR_LOG_ERROR, "the log file is missing, empty or too large");
        return 0;
    }
    text = malloc((size_t)size + 1);
    handle = ZOR_OpenFile(path, 1, 0, 0); /* read only, binary */
    got = text != NULL && handle >= 0 ? ZOR_ReadFile(handle, text, size) : -1;
    if (handle >= 0) ZOR_CloseFile(handle);
    if (got < 0) {
        LOG(ZOR_LOG_ERROR, "cannot read the log: %s", GetFmtIOErrorString(GetFmtIOError()));
        free(text);
        return 0;
    }
    for (length = got; length > 0 && text[length - 1] == XMODEM_PADDING; --length) {
    }
    text[length] = '\0';
    for (i = 0; i < length; ++i) lines += text[i] == '\n';
    printf("Log:      %ld bytes in %d lines (%ld with the last packet's padding), %.3f s\n", (long)length,
           lines, (long)got, elapsed);
    line = text;
    for (i = 0; i < PREVIEW_LINES && *line != '\0'; ++i) {
        const size_t n = strcspn(line, "\n");
        printf("  %.*s\n", (int)n, line);
        line += n + (line[n] == '\n');
    }
    if (*line != '\0') printf("  ...\n");
    free(text);
    return 1;
}

/* Has the instrument send its reading log with XModem into a temporary file. */
static int fetchLog(void)
{
    static const char kCommand[] = "LOG:SEND?\n";
    char path[512];
    double started;
    int32_t result;
    int ok;
    /* CRC requests a second apart, four tries, 128-byte packets. */
    result = XModemConfig(PORT, 1.0, 4, 1.0, 128);
    if (result != 0) {
        LOG(ZOR_LOG_ERROR, "cannot set up XModem: %s", GetRS232ErrorString(result));
        return 0;
    }
    temporaryPath(path, sizeof path);
    if (!sendCommand(kCommand) || !waitUntilSent(sizeof kCommand - 1)) return 0;
    started = Timer();
    result = XModemReceive(PORT, path);
    if (result != 0) {
        LOG(ZOR_LOG_ERROR, "the log did not arrive: %s (%d)", GetRS232ErrorString(result), (int)result);
        remove(path);
        return 0;
    }
    LOG(ZOR_LOG_INFO, "log received into %s", path);
    ok = printLog(path, Timer() - started);
    remove(path);
    return ok;
}

static int usage(const char *program)
{
    fprintf(stderr, "usage: %s [--device PATH] [--count N]\n", program);
    return 2;
}

int main(int argc, char **argv)
{
    static int thisModule; /* any address identifies the module */
    const ZORRunStateCallback callbacks[] = {onRunState, NULL};
    const char *device = NULL;
    char simulated[256];
    int count = 20;
    int ok;
    int i;

    for (i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--device") == 0 && i + 1 < argc)
            device = argv[++i];
        else if (strcmp(argv[i], "--count") == 0 && i + 1 < argc)
            count = atoi(argv[++i]);
        else
            return usage(argv[0]);
    }
    if (count < 1) return usage(argv[0]);

    setvbuf(stdout, NULL, _IOLBF, 0); /* results and log lines in the order they happen */
    SetZORLogOutputFormat("  [TIME] [LEVEL] [FUNC]: [MSG]");
    SetZORLogReportingLocation(ZOR_LOG_LOCATION_STDOUT, 0, NULL);
    SetZORLogReportingLevels(ZOR_LOG_INFO | ZOR_LOG_TIMING | ZOR_LOG_WARNING | ZOR_LOG_ERROR);

    if (device == NULL) {
        if (!StartSimulatedInstrument(simulated, sizeof simulated)) return 1;
        device = simulated;
        printf("Simulated instrument on %s\n", device);
    }
    if (InitZORRTDll(&thisModule, callbacks) != 1) {
        printf("The library did not start; see its log.\n");
        StopSimulatedInstrument();
        return 1;
    }
    ok = openPort(device) && identify() && measure(count) && fetchLog();
    CloseZORRTDll(&thisModule);
    StopSimulatedInstrument();
    return ok ? 0 : 1;
}
