/*
 * The simulated instrument runs as a program of its own, instrument_sim,
 * which makes the pseudo-terminal pair and prints the terminal's path as its
 * first line; the demo reads that line through a pipe.
 */
#ifndef _WIN32
#define _XOPEN_SOURCE 700
#endif

#include "instrument_launch.h"

#ifdef _WIN32

#include <stdio.h>

int StartSimulatedInstrument(char *device, size_t size)
{
    (void)device;
    (void)size;
    fprintf(stderr, "demo: the simulated instrument needs a pseudo-terminal; give --device COMn\n");
    return 0;
}

void StopSimulatedInstrument(void) {}

#else

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <string.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

static pid_t instrument = -1;

/* instrument_sim beside the running program. */
static int programPath(char *path, size_t size)
{
    static const char kName[] = "instrument_sim";
    const ssize_t length = readlink("/proc/self/exe", path, size);
    char *slash;
    if (length <= 0 || (size_t)length >= size) return 0;
    path[length] = '\0';
    slash = strrchr(path, '/');
    if (slash == NULL || (size_t)(slash + 1 - path) + sizeof kName > size) return 0;
    memcpy(slash + 1, kName, sizeof kName);
    return 1;
}

int StartSimulatedInstrument(char *device, size_t size)
{
    char program[4096];
    char *arguments[2];
    posix_spawn_file_actions_t actions;
    int out[2];
    int error;
    FILE *firstLine;
    if (!programPath(program, sizeof program)) {
        fprintf(stderr, "demo: cannot tell where instrument_sim is\n");
        return 0;
    }
    if (pipe(out) != 0) {
        fprintf(stderr, "demo: %s\n", strerror(errno));
        return 0;
    }
    /* Only the instrument's standard output is the pipe's writing end. */
    fcntl(out[0], F_SETFD, FD_CLOEXEC);
    fcntl(out[1], F_SETFD, FD_CLOEXEC);
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    arguments[0] = program;
    arguments[1] = NULL;
    error = posix_spawn(&instrument, program, &actions, NULL, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    if (error != 0) {
        instrument = -1;
        close(out[0]);
        fprintf(stderr, "demo: cannot start %s: %s\n", program, strerror(error));
        return 0;
    }
    firstLine = fdopen(out[0], "r");
    if (firstLine == NULL || fgets(device, (int)size, firstLine) == NULL || device[0] != '/') {
        if (firstLine != NULL)
            fclose(firstLine);
        else
            close(out[0]);
        StopSimulatedInstrument();
        fprintf(stderr, "demo: the simulated instrument did not start\n");
        return 0;
    }
    fclose(firstLine);
    device[strcspn(device, "\n")] = '\0';
    return 1;
}

void StopSimulatedInstrument(void)
{
    int status;
    if (instrument <= 0) return;
    /* It ends by itself when the client closes the terminal; this covers a
     * client that never opened it. */
    kill(instrument, SIGTERM);
    while (waitpid(instrument, &status, 0) < 0 && errno == EINTR) {
    }
    instrument = -1;
}

#endif
