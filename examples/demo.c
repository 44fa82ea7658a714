/*
 * A tour of the library from a user program's side: a module registers its
 * run-state callback, writes log lines and a timing event, and closes again.
 */
#include <stdio.h>

#include <tollan/engine.h>
#include <tollan/logger.h>

static const char *eventName(int32_t event)
{
    switch (event) {
        case ZOR_RUN_STATE_START:
            return "start";
        case ZOR_RUN_STATE_STARTED:
            return "started";
        case ZOR_RUN_STATE_ABOUT_TO_STOP:
            return "about to stop";
        case ZOR_RUN_STATE_STOP:
            return "stop";
        default:
            return "unknown";
    }
}

static void onRunState(int32_t event)
{
    printf("  module callback: event %d (%s)\n", (int)event, eventName(event));
    fflush(stdout);
}

int main(void)
{
    static int thisModule; /* any address identifies the module */
    const ZORRunStateCallback callbacks[] = {onRunState, NULL};
    uint32_t timing;
    volatile double sum = 0.0;
    int i;

    printf("Library loaded: %s, standalone: %s\n", __IsRTEStillLoaded() ? "yes" : "no",
           InStandaloneExecutable() ? "yes" : "no");

    printf("Registering the module:\n");
    fflush(stdout);
    if (InitZORRTDll(&thisModule, callbacks) != 1) {
        printf("The library did not start; see its log.\n");
        return 1;
    }

    printf("Log lines (INFO and TIMING, to standard output):\n");
    fflush(stdout);
    SetZORLogOutputFormat("  [LEVEL] [FUNC]: [MSG]");
    SetZORLogReportingLocation(ZOR_LOG_LOCATION_STDOUT, 0, NULL);
    SetZORLogReportingLevels(ZOR_LOG_INFO | ZOR_LOG_TIMING);
    /* Callers test the level themselves: the writer does not filter. */
    if (GetZORLogReportingLevels() & ZOR_LOG_INFO)
        WriteZORLogMessage(ZOR_LOG_INFO, 0, 0, __FILE__, "main", __LINE__, "demo running in module %p",
                           (void *)&thisModule);
    timing = GetZORLogTimingHandle();
    for (i = 1; i <= 1000000; ++i) sum += 1.0 / i;
    WriteZORLogTimingEvent(timing, 1, 0, 0, 0, __FILE__, "main", __LINE__,
                           "a million divisions took [ELAPSED]");
    SetZORLogReportingLevels(ZOR_LOG_FATAL);
    SetZORLogReportingLocation(ZOR_LOG_LOCATION_STDERR, 0, NULL);

    printf("Closing the module:\n");
    fflush(stdout);
    CloseZORRTDll(&thisModule);
    printf("Done (harmonic sum %.3f).\n", sum);
    return 0;
}
