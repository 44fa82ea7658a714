/*
 * An instrument client: it identifies a multimeter on a serial port, has it
 * stream voltage readings, and reports each reading, their minimum, mean and
 * maximum, and how long they took.
 *
 *   demo [--device PATH] [--count N]
 *
 * Without --device it starts the simulated instrument (instrument_sim) on a
 * pseudo-terminal and talks to that. With it, it talks to the device named
 * ("/dev/ttyUSB0", "COM3"), which has to understand the same two commands:
 * "*IDN?" and "MEAS:STREAM n" (n lines such as "12.3456 V" CR LF).
 *
 * The client is a module of the library: its run-state callback closes the
 * port when the module is stopped, however the session ended.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <tollan/engine.h>
#include <tollan/logger.h>
#include <tollan/rs232.h>
#include <tollan/utility.h>

#include "instrument_launch.h"

#define PORT 1
#define TIMEOUT_SECONDS 2.0

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
    ok = openPort(device) && identify() && measure(count);
    CloseZORRTDll(&thisModule);
    StopSimulatedInstrument();
    return ok ? 0 : 1;
}
