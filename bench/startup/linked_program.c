/* A program linked against the shared library: starting it runs the whole attach chain. */
#include <tollan/engine.h>

int main(void)
{
    return __IsRTEStillLoaded() == 1 ? 0 : 1;
}
