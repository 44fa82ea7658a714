/* A tiny library for the run-time loading tests. */
#ifdef _WIN32
#define PROBE_EXPORT __declspec(dllexport)
#else
#define PROBE_EXPORT __attribute__((visibility("default")))
#endif

PROBE_EXPORT int tollan_probe_answer(void)
{
    return 42;
}
