/* Starts the simulated instrument for the demo and stops it again. */
#ifndef INSTRUMENT_LAUNCH_H
#define INSTRUMENT_LAUNCH_H

#include <stddef.h>

/*
 * Starts instrument_sim from the directory of the running program and stores
 * the path of the terminal it serves in `device`. Returns 1, or 0 after
 * saying why on standard error (on systems without pseudo-terminals, always).
 */
int StartSimulatedInstrument(char *device, size_t size);

/* Ends the instrument that StartSimulatedInstrument started, if any. */
void StopSimulatedInstrument(void);

#endif
