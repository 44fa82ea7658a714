// Error codes, their texts, and who sees which error: on every platform.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include <tollan/rs232.h>

namespace {

TEST(Rs232Errors, EveryCodeHasItsTextAndUnknownCodesSaySo)
{
    EXPECT_STREQ(GetRS232ErrorString(0), "No error");
    EXPECT_STREQ(GetRS232ErrorString(ZOR_RS232_NO_RESOURCES), "Unable to allocate system resources.");
    EXPECT_STREQ(GetRS232ErrorString(ZOR_RS232_TIMEOUT), "I/O operation timed out");
    EXPECT_STREQ(GetRS232ErrorString(-508), "CRC error");
    for (int32_t unknown : {1, -9, -1000, INT32_MIN})
        EXPECT_STREQ(GetRS232ErrorString(unknown), "Unknown error number") << unknown;
    const std::string library = GetRS232ErrorString(-180);
    EXPECT_EQ(library.rfind("A necessary run-time library could not be found or loaded.\n\n", 0), 0u);
    EXPECT_GT(library.size(), 200u);
    // The text lives in the calling thread's buffer, long enough for every text.
    EXPECT_EQ(library, GetRS232ErrorString(-180));
}

TEST(Rs232Errors, BadAndUnopenedPortsGiveTheirCodes)
{
    char byte = 0;
    for (int32_t port : {0, 1001, -1}) {
        EXPECT_EQ(OpenCom(port, nullptr), ZOR_RS232_INVALID_PORT);
        EXPECT_EQ(rs232err, ZOR_RS232_INVALID_PORT);
        EXPECT_EQ(CloseCom(port), ZOR_RS232_INVALID_PORT);
        EXPECT_EQ(ComRd(port, &byte, 1), ZOR_RS232_INVALID_PORT);
        // The line status is never negative.
        EXPECT_EQ(GetComLineStatus(port), 0);
        EXPECT_EQ(ReturnRS232Err(), ZOR_RS232_INVALID_PORT);
    }
    // The port is looked at before the arguments.
    EXPECT_EQ(ComWrt(998, nullptr, 1), ZOR_RS232_PORT_NOT_OPEN);
    EXPECT_EQ(ComRd(998, &byte, uint64_t{1} << 31), ZOR_RS232_PORT_NOT_OPEN);
    EXPECT_EQ(GetInQLen(998), ZOR_RS232_PORT_NOT_OPEN);
    EXPECT_EQ(GetComLineStatus(998), 0);
    // Closing a port that is not open is no error, however often.
    EXPECT_EQ(CloseCom(999), 0);
    EXPECT_EQ(CloseCom(999), 0);
    EXPECT_EQ(ReturnRS232Err(), 0);
#ifdef _WIN32
    EXPECT_EQ(OpenCom(7, "COM250"), ZOR_RS232_NO_PORT);
#else
    EXPECT_EQ(OpenCom(7, "/dev/tollan-no-such-port"), ZOR_RS232_NO_PORT);
#endif
}

TEST(Rs232Errors, EachThreadHasItsOwnLastErrorAndRs232errIsTheLastOfAll)
{
    EXPECT_EQ(CloseCom(999), 0);
    std::thread failing([] {
        EXPECT_EQ(CloseCom(0), ZOR_RS232_INVALID_PORT);
        EXPECT_EQ(ReturnRS232Err(), ZOR_RS232_INVALID_PORT);
    });
    failing.join();
    EXPECT_EQ(ReturnRS232Err(), 0);
    EXPECT_EQ(rs232err, ZOR_RS232_INVALID_PORT);
    EXPECT_EQ(*_GetRs232Err(), ZOR_RS232_INVALID_PORT);
}

}  // namespace
