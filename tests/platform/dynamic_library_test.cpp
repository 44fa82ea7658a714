// Loading a library by its Windows name.
#include <gtest/gtest.h>

#include "platform/dynamic_library.h"

#ifndef _WIN32
#include "platform/posix/library_name.h"
#endif

using namespace tollan::platform;

TEST(DynamicLibrary, LoadsByWindowsNameAndFindsSymbols)
{
    void *library = loadLibrary("TollanProbe.dll");
    ASSERT_NE(library, nullptr);
    using Answer = int (*)();
    auto answer = reinterpret_cast<Answer>(librarySymbol(library, "tollan_probe_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(librarySymbol(library, "no_such_symbol"), nullptr);
    unloadLibrary(library);

    EXPECT_EQ(loadLibrary("no-such-library.dll"), nullptr);
    EXPECT_EQ(loadLibrary(nullptr), nullptr);
}

#ifndef _WIN32
TEST(DynamicLibrary, WindowsNamesMapToSharedObjectNames)
{
    using posix::sharedObjectName;
    EXPECT_EQ(sharedObjectName("qwuste.dll"), "libqwuste.so");
    EXPECT_EQ(sharedObjectName("QWUSTE.DLL"), "libqwuste.so");
    EXPECT_EQ(sharedObjectName("QwUste"), "libqwuste.so");
    EXPECT_EQ(sharedObjectName("libm.dll"), "libm.so");
    EXPECT_EQ(sharedObjectName("Engines\\Timing\\QWUSTE.dll"), "Engines/Timing/libqwuste.so");
    EXPECT_EQ(sharedObjectName("/opt/x/libfoo.so.1"), "/opt/x/libfoo.so.1");
}
#endif
