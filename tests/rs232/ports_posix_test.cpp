// Opening, closing and configuring ports on pseudo-terminal pairs.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <tollan/debugger.h>
#include <tollan/rs232.h>

#include "fixtures/pty_pair.h"
#include "fixtures/settings_writer.h"

using tollan::testing::PtyPair;

namespace {

constexpr int kPort = 7;

struct Config {
    int baud, parity, data, stop, in, out;
};

int32_t openPort(const PtyPair &pty, int port = kPort, Config c = {9600, 0, 8, 1, 0, 0})
{
    return OpenComConfig(port, pty.device().c_str(), c.baud, c.parity, c.data, c.stop, c.in, c.out);
}

Config heldConfig(int port = kPort)
{
    Config c{};
    EXPECT_EQ(__GetComConfig(port, &c.baud, &c.parity, &c.data, &c.stop, &c.in, &c.out), 0);
    return c;
}

}  // namespace

TEST(Rs232Ports, OpenCloseReopenKeepsTheLineAndResetsTheSettings)
{
    PtyPair pty;
    ASSERT_EQ(openPort(pty, kPort, {19200, 2, 7, 2, 100, 200}), 0);
    // A pseudo-terminal keeps the rate and the stop bits; it always has 8
    // data bits and no parity.
    Config held = heldConfig();
    EXPECT_EQ(held.baud, 19200);
    EXPECT_EQ(held.stop, 2);
    EXPECT_EQ(held.in, 100);
    EXPECT_EQ(held.out, 200);
    EXPECT_EQ(ComWrt(kPort, "one", 3), 3);
    EXPECT_EQ(pty.receive(3), "one");

    // Opening an open port opens it afresh.
    ASSERT_EQ(openPort(pty), 0);
    EXPECT_EQ(heldConfig().baud, 9600);
    EXPECT_EQ(CloseCom(kPort), 0);
    EXPECT_EQ(CloseCom(kPort), 0);  // closing twice is no error
    EXPECT_EQ(ComWrt(kPort, "x", 1), ZOR_RS232_PORT_NOT_OPEN);
    EXPECT_EQ(rs232err, ZOR_RS232_PORT_NOT_OPEN);

    ASSERT_EQ(openPort(pty), 0);
    EXPECT_EQ(ComWrt(kPort, "two", 3), 3);
    EXPECT_EQ(pty.receive(3), "two");
    EXPECT_EQ(CloseCom(kPort), 0);
}

TEST(Rs232Ports, QueueSizesAreRoundedAsAnOpenTakesThem)
{
    PtyPair pty;
    struct Case {
        int in, out, heldIn, heldOut;
    } cases[] = {
        {0, 0, 512, 512}, {10, 10, 30, 30}, {31, 33, 32, 34}, {1000, 30, 1000, 30}, {512, -1, 512, 512}};
    for (const Case &c : cases) {
        ASSERT_EQ(openPort(pty, kPort, {9600, 0, 8, 1, c.in, c.out}), 0) << c.in;
        const Config held = heldConfig();
        EXPECT_EQ(held.in, c.heldIn) << c.in;
        EXPECT_EQ(held.out, c.heldOut) << c.out;
    }
    CloseCom(kPort);
}

TEST(Rs232Ports, EverySettingErrorHasItsCodeAndLeavesThePortClosed)
{
    PtyPair pty;
    struct Case {
        Config config;
        int32_t code;
    } cases[] = {
        {{0, 0, 8, 1, 0, 0}, ZOR_RS232_INVALID_BAUD},
        {{-9600, 0, 8, 1, 0, 0}, ZOR_RS232_INVALID_BAUD},
        {{9600, 5, 8, 1, 0, 0}, ZOR_RS232_INVALID_PARITY},
        {{9600, -1, 8, 1, 0, 0}, ZOR_RS232_INVALID_PARITY},
        {{9600, 0, 4, 1, 0, 0}, ZOR_RS232_INVALID_DATA_BITS},
        {{9600, 0, 9, 1, 0, 0}, ZOR_RS232_INVALID_DATA_BITS},
        {{9600, 0, 8, 0, 0, 0}, ZOR_RS232_INVALID_STOP_BITS},
        {{9600, 0, 8, 3, 0, 0}, ZOR_RS232_INVALID_STOP_BITS},
        {{9600, 0, 8, 1, -1, 0}, ZOR_RS232_INVALID_INPUT_QUEUE},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(openPort(pty, kPort, c.config), c.code);
        EXPECT_EQ(rs232err, c.code);
        EXPECT_EQ(ReturnRS232Err(), c.code);
        EXPECT_EQ(GetInQLen(kPort), ZOR_RS232_PORT_NOT_OPEN);
    }
    // Any positive rate is a rate, with or without a name of its own.
    for (int baud : {123, 9600, 250000}) {
        ASSERT_EQ(openPort(pty, kPort, {baud, 0, 8, 1, 0, 0}), 0) << baud;
        EXPECT_EQ(heldConfig().baud, baud);
    }
    CloseCom(kPort);
}

TEST(Rs232Ports, DevicesThatAreNoSerialPorts)
{
    EXPECT_EQ(OpenComConfig(3, "/dev/tollan-no-such-port", 9600, 0, 8, 1, 0, 0), ZOR_RS232_NO_PORT);
    // A file is no serial port.
    EXPECT_EQ(OpenComConfig(3, "/dev/null", 9600, 0, 8, 1, 0, 0), ZOR_RS232_NO_PORT);
    EXPECT_EQ(CloseCom(3), 0);
}

TEST(Rs232Ports, AnotherProcessCannotOpenAnOpenPort)
{
    PtyPair pty;
    ASSERT_EQ(openPort(pty), 0);
    const pid_t child = fork();
    if (child == 0) {
        const int32_t result = OpenComConfig(1, pty.device().c_str(), 9600, 0, 8, 1, 0, 0);
        _exit(result == ZOR_RS232_CANNOT_OPEN ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    CloseCom(kPort);
    // Once closed, the device is free for the next one.
    ASSERT_EQ(openPort(pty, 8), 0);
    CloseCom(8);
}

TEST(Rs232Ports, ModesAndEscapesAreRefusedAsTheModesSay)
{
    PtyPair pty;
    ASSERT_EQ(openPort(pty), 0);
    EXPECT_EQ(SetComTime(kPort, -0.5), ZOR_RS232_INVALID_PARAMETER);
    EXPECT_EQ(SetComTime(kPort, 0.0), 0);
    EXPECT_EQ(SetCTSMode(kPort, 3), ZOR_RS232_INVALID_PARAMETER);
    EXPECT_EQ(SetCTSMode(kPort, static_cast<uint32_t>(-1)), ZOR_RS232_INVALID_PARAMETER);
    for (uint32_t code : {0u, 7u, 8u, 10u, 127u, 132u, 1000u})
        EXPECT_EQ(ComSetEscape(kPort, code), ZOR_RS232_INVALID_PARAMETER) << code;
    // XON/XOFF escapes need XON/XOFF mode.
    EXPECT_EQ(ComSetEscape(kPort, 1), ZOR_RS232_INVALID_PARAMETER);
    EXPECT_EQ(SetXMode(kPort, 5), 0);
    EXPECT_EQ(ComSetEscape(kPort, 1), 0);
    EXPECT_EQ(ComSetEscape(kPort, 2), 0);
    // RTS belongs to the handshake in CTS mode, DTR to it in mode 1.
    EXPECT_EQ(SetCTSMode(kPort, 1), 0);
    EXPECT_EQ(ComSetEscape(kPort, 3), ZOR_RS232_INVALID_PARAMETER);
    EXPECT_EQ(ComSetEscape(kPort, 5), ZOR_RS232_INVALID_PARAMETER);
    EXPECT_EQ(SetCTSMode(kPort, 2), 0);
    EXPECT_EQ(ComSetEscape(kPort, 4), ZOR_RS232_INVALID_PARAMETER);
    EXPECT_NE(ComSetEscape(kPort, 6), ZOR_RS232_INVALID_PARAMETER);
    EXPECT_EQ(ComSetEscape(kPort, 9), 0);
    // The serial driver's own requests do not exist on a terminal.
    EXPECT_EQ(ComSetEscape(kPort, 128), ZOR_RS232_SYSTEM_ERROR);
    EXPECT_STRNE(GetRS232ErrorString(ZOR_RS232_SYSTEM_ERROR), "Unknown system error");
    intptr_t handle = -1;
    EXPECT_EQ(GetSystemComHandle(kPort, nullptr), ZOR_RS232_NULL_POINTER);
    EXPECT_EQ(GetSystemComHandle(kPort, &handle), 0);
    EXPECT_GE(handle, 0);
    CloseCom(kPort);
}

TEST(Rs232Ports, OpenComTakesTheDefaultsOfTheSettingsStore)
{
    PtyPair pty;
    const std::string value = pty.device() + ":";
    const char *key = "Software\\Vantrel\\ZOR\\17.0\\Ports";
    struct Case {
        const char *entry;
        int32_t result;
        Config held;
        int32_t xon, cts;
    } cases[] = {
        {"19200,e,7,2", 0, {19200, 2, 7, 2, 512, 512}, 0, 0},
        {"96,n,8,1,x", 0, {9600, 0, 8, 1, 512, 512}, 1, 0},
        {"4800,o,8,1.5,p", 0, {4800, 1, 8, 1, 512, 512}, 0, 1},
        {"baud=57600 parity=m data=6 stop=2 xon=on", 0, {57600, 3, 6, 2, 512, 512}, 1, 0},
        {"baud=1200 octs=on dtr=hs", 0, {1200, 0, 7, 1, 512, 512}, 0, 1},
        {"", 0, {9600, 0, 7, 1, 512, 512}, 0, 0},
        {"9600,q,8,1", ZOR_RS232_INTERNAL_ERROR, {}, 0, 0},
        {"baud=fast", ZOR_RS232_INTERNAL_ERROR, {}, 0, 0},
    };
    for (const Case &c : cases) {
        ASSERT_EQ(tollan::testing::storeString(key, value.c_str(), c.entry), 0);
        EXPECT_EQ(OpenCom(kPort, pty.device().c_str()), c.result) << c.entry;
        int32_t baud = 0, parity = 0, data = 0, stop = 0, xon = -1, cts = -1;
        unsigned char found = 0;
        const int32_t defaults =
            __GetPortDefaults(pty.device().c_str(), &baud, &parity, &data, &stop, &xon, &cts, &found);
        EXPECT_EQ(found, 1);
        if (c.result != 0) {
            EXPECT_EQ(defaults, c.result);
            continue;
        }
        const Config held = heldConfig();
        EXPECT_EQ(held.baud, c.held.baud) << c.entry;
        EXPECT_EQ(held.stop, c.held.stop) << c.entry;
        EXPECT_EQ(baud, c.held.baud) << c.entry;
        EXPECT_EQ(parity, c.held.parity) << c.entry;
        EXPECT_EQ(data, c.held.data) << c.entry;
        EXPECT_EQ(stop, c.held.stop) << c.entry;
        EXPECT_EQ(xon, c.xon) << c.entry;
        EXPECT_EQ(cts, c.cts) << c.entry;
        // XON/XOFF escapes are allowed exactly when the defaults gave the mode.
        EXPECT_EQ(ComSetEscape(kPort, 2) == 0, c.xon == 1) << c.entry;
    }
    CloseCom(kPort);
}

TEST(Rs232Ports, OpenPortsAreTrackedAsResourcesUntilClosed)
{
    PtyPair pty;
    const int32_t level = __SetDebuggingLevel(2);
    ZORThreadEnv *record = __DBG_GetCurrentThreadEnv();
    ZORFunctionFrame frame{};
    frame.functionName = "measure";
    __DBG_EnterFunctionInCurrentThreadEnv(record, &frame, "measure.c");
    const std::string path = (std::filesystem::temp_directory_path() / "tollan-rs232-resources.txt").string();
    const auto dump = [&] {
        EXPECT_EQ(__ZOR_Resource_DumpToFile(path.c_str()), 0);
        std::ifstream in(path);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    };
    const std::string entry = "(Serial port connections) Port 7 with device " + pty.device() + "\n";

    ASSERT_EQ(openPort(pty), 0);
    EXPECT_NE(dump().find(entry), std::string::npos);
    // A failed open of another port leaves nothing behind.
    EXPECT_EQ(OpenComConfig(8, pty.device().c_str(), 9600, 0, 8, 1, 0, 0), ZOR_RS232_CANNOT_OPEN);
    EXPECT_EQ(dump().find("Port 8"), std::string::npos);
    ASSERT_EQ(CloseCom(kPort), 0);
    EXPECT_EQ(dump().find(entry), std::string::npos);

    __DBG_LeaveFunctionInCurrentThreadEnv(record, &frame);
    __SetDebuggingLevel(level);
    std::filesystem::remove(path);
}
