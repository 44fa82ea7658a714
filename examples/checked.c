/*
 * A program with four real faults, and the calls that a compiler with
 * run-time checking inserts around them, written out by hand:
 *
 *   off-by-one      a loop that reads one element past an array (fatal)
 *   port            ComRd on a port that was never opened (a library error,
 *                   non-fatal)
 *   strcpy          strcpy into a buffer too short for the text (fatal)
 *   use-after-free  a read through a pointer to freed memory (fatal)
 *
 *   checked [--error-file PATH] FAULT...
 *
 * Each fault is reported with its message and its place in this file. With
 * --error-file (PATH "-" for standard output) every report is one line there,
 * and a fatal one ends the program with status -1. Without it, under
 * tollan-monitor, each report stops the program at its line until the
 * monitor resumes it.
 */
#include <stdlib.h>
#include <string.h>

#include <tollan/ansi_c.h>
#include <tollan/debugger.h>
#include <tollan/rs232.h>
#include <tollan/rtcheck.h>

/* The compiler keeps the thread's checking state at hand in every function
 * and tells it the function's file and each statement's position. */
static ZORThreadEnv *env;
static int32_t line;
#define STATEMENT(column) (line = __LINE__, __DBG_SetCurrentThreadEnvPosition(env, NULL, line, (column)))

static Tynode intArray4; /* int[4] */

static void offByOne(void)
{
    int samples[4] = {3, 1, 4, 1};
    BlkInfo samplesBlock;
    PtrInfo samplesShadow; /* an int array holds no pointers: only its address matters */
    int sum = 0;
    _InitBlkInfo(env, &intArray4, samples, &samplesBlock);
    for (int i = 0; i <= 4; ++i) { /* the fault: <= instead of < */
        STATEMENT(16);             /* sum += samples[i]; */
        const int64_t offset = (int64_t)i * (int64_t)sizeof(int);
        PtrInfo *element = _PtrChkArith(&intArray4, samples, offset, &samplesShadow, &samplesBlock, line, 16);
        _PtrChkDeref(inttype, (const char *)samples + offset, element, &samplesBlock, line, 16);
        if (i < 4) sum += samples[i]; /* the demonstration itself stays inside */
    }
    tollan_printf("off-by-one: the sum of the samples is %d\n", sum);
}

static void neverOpenedPort(void)
{
    char reply[16];
    BlkInfo replyBlock = {(uintptr_t)reply, sizeof reply};
    PtrInfo replyShadow = {0, 0, 0};
    STATEMENT(5); /* got = ComRd(7, reply, sizeof reply); */
    _PtrPreCall(env, (const void *)_UP_ComRd);
    _PassParamInfo(env, 1, charptype, &replyShadow, &replyBlock);
    const int32_t got = _UP_ComRd(7, reply, sizeof reply);
    _PtrPostCall(env);
    tollan_printf("port: ComRd on port 7 gave %d\n", (int)got);
}

static void strcpyIntoAShortBuffer(void)
{
    char name[8];
    const char *text = "a name longer than eight bytes";
    BlkInfo nameBlock = {(uintptr_t)name, sizeof name};
    BlkInfo textBlock = {(uintptr_t)text, strlen(text) + 1};
    PtrInfo nameShadow = {0, 0, 0};
    PtrInfo textShadow = {0, 0, 0};
    STATEMENT(5); /* strcpy(name, text); */
    _PtrPreCall(env, (const void *)_UP_strcpy);
    _PassParamInfo(env, 0, charptype, &nameShadow, &nameBlock);
    _PassParamInfo(env, 1, charptype, &textShadow, &textBlock);
    _UP_strcpy(name, text);
    _PtrPostCall(env);
    tollan_printf("strcpy: not reached with an error file\n");
}

static void useAfterFree(void)
{
    int *reading = malloc(sizeof *reading);
    if (reading == NULL) return;
    *reading = 42;
    BlkInfo readingBlock;
    PtrInfo readingShadow; /* an int holds no pointers: only its address matters */
    _InitBlkInfo(env, inttype, reading, &readingBlock);
    volatile uintptr_t address = (uintptr_t)reading; /* the stale pointer the program keeps */
    free(reading);
    readingBlock.size = 0; /* what the checked free does: the block is gone */
    STATEMENT(12);         /* copy = *reading; */
    _PtrChkDeref(inttype, (const void *)address, &readingShadow, &readingBlock, line, 12);
    tollan_printf("use-after-free: not reached with an error file\n");
}

int main(int argc, char **argv)
{
    static const struct {
        const char *name;
        void (*run)(void);
        const char *function;
    } faults[] = {
        {"off-by-one", offByOne, "offByOne"},
        {"port", neverOpenedPort, "neverOpenedPort"},
        {"strcpy", strcpyIntoAShortBuffer, "strcpyIntoAShortBuffer"},
        {"use-after-free", useAfterFree, "useAfterFree"},
    };
    int first = 1;
    if (argc > 2 && strcmp(argv[1], "--error-file") == 0) {
        TollanFILE *file = strcmp(argv[2], "-") == 0 ? tollan_stdout : tollan_fopen(argv[2], "w");
        if (file == NULL) {
            tollan_fprintf(tollan_stderr, "checked: cannot write %s\n", argv[2]);
            return 2;
        }
        __SetUPErrorFile(file);
        first = 3;
    }
    if (first >= argc) {
        tollan_fprintf(tollan_stderr,
                       "usage: checked [--error-file PATH] off-by-one|port|strcpy|use-after-free...\n");
        return 2;
    }

    /* A checked build's start-up: level 2 with its breaks on. */
    __SetDebuggingLevel(2);
    SetBreakOnProtectionErrors(1);
    SetBreakOnLibraryErrors(1);
    env = __DBG_GetCurrentThreadEnv();
    /* Each checked function tells the thread that it has begun and ended. */
    ZORFunctionFrame frame = {.functionName = "main"};
    __DBG_EnterFunctionInCurrentThreadEnv(env, &frame, __FILE__);
    const Tynode arrayTemplate = {.op = LCC_ARRAY, .align = sizeof(int)};
    _InitTynode(&intArray4, &arrayTemplate, 4 * sizeof(int), inttype);

    for (int i = first; i < argc; ++i) {
        size_t f = 0;
        while (f < sizeof faults / sizeof faults[0] && strcmp(faults[f].name, argv[i]) != 0) ++f;
        if (f == sizeof faults / sizeof faults[0]) {
            tollan_fprintf(tollan_stderr, "checked: no fault called %s\n", argv[i]);
            return 2;
        }
        STATEMENT(9); /* faults[f].run(); */
        ZORFunctionFrame faultFrame = {.functionName = faults[f].function};
        __DBG_EnterFunctionInCurrentThreadEnv(env, &faultFrame, __FILE__);
        faults[f].run();
        __DBG_LeaveFunctionInCurrentThreadEnv(env, &faultFrame);
    }
    __DBG_LeaveFunctionInCurrentThreadEnv(env, &frame);
    return 0;
}
