// The output hook: what forwardStandardOutput gives the transport in use,
// and what it answers when there is no connection or no hook.
#include <gtest/gtest.h>

#include <string>

#include <tollan/debugger.h>

#include "debugger/backend.h"
#include "debugger/library.h"
#include "debugger/runtime_record.h"
#include "debugger/standard_output.h"

namespace {

using namespace tollan::debugger;

std::string hooked;

int32_t takeOutput(const void *bytes, uint32_t count) noexcept
{
    hooked.append(static_cast<const char *>(bytes), count);
    return 7;
}

int32_t connectNever(void *, const char *, intptr_t, int32_t) noexcept
{
    return ZOR_DEBUG_NOT_CONNECTED;
}

TEST(StandardOutputHook, GetsTheBytesOnlyWhileTheTransportIsConnected)
{
    hooked.clear();
    // Not connected: the hook of the local transport is not called.
    localBackend().standardOutput = takeOutput;
    EXPECT_EQ(forwardStandardOutput("unseen", 6), ZOR_DEBUG_NOT_CONNECTED);
    localBackend().standardOutput = nullptr;
    EXPECT_EQ(hooked, "");

    // Connected (as another module of the process would leave it), with and without a hook.
    RuntimeRecord *record = runtimeRecord();
    ASSERT_NE(record, nullptr);
    static BackendTable transport{};
    transport.connect = connectNever;
    transport.connectedWord = 1;
    record->backend = &transport;
    record->connectionMode = 1;
    ASSERT_EQ(__ZOR_Debug_Connect(nullptr, 0, 0), 0);
    EXPECT_EQ(forwardStandardOutput("no hook", 7), 0);
    transport.standardOutput = takeOutput;
    EXPECT_EQ(forwardStandardOutput("seen\0and more", 13), 7);
    EXPECT_EQ(hooked, std::string("seen\0and more", 13));
    disconnectChannel();
}

}  // namespace
