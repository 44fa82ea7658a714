// A failed plain function is offered as a break on library errors with
// the text of the library that failed: the I/O error of the file
// functions, the RS-232 error of the ports, errno of the streams, and errno
// by name for the conversions.
#include <cerrno>
#include <cstring>
#include <functional>

#include <tollan/fmtio.h>
#include <tollan/rs232.h>

#include "rtcheck_twins/twin_fixture.h"

namespace {

using tollan::testing::caughtReports;
using tollan::testing::TwinTest;

using LibraryFailures = TwinTest;

TEST_F(LibraryFailures, EachIsExplainedByItsLibrarysText)
{
    struct Case {
        const char *what;
        std::function<void()> call;
        std::function<std::string()> text;  // read right after the call
        const char *status;
    };
    const Case cases[] = {
        {"file function", [] { _UP_ZOR_CloseFile(99); }, [] { return std::string(GetFmtIOErrorString(3)); },
         "return value == -1"},
        {"serial port", [] { _UP_ComRdByte(-5); },
         [] { return std::string(GetRS232ErrorString(ReturnRS232Err())); }, "return value == "},
        {"stream", [] { _UP_remove("no-such-folder/no-such-file"); },
         [] { return std::string(std::strerror(*tollan_errno())); }, "return value == -1"},
        {"conversion out of range", [] { _UP_strtol("99999999999999999999999", nullptr, 10); },
         [] { return std::string(std::strerror(ERANGE)); }, "errno == "},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        caughtReports().clear();
        c.call();
        const std::string text = c.text();
        ASSERT_EQ(caughtReports().size(), 1u);
        EXPECT_EQ(caughtReports()[0].severity, ZOR_RTE_NON_FATAL);
        const std::string &report = caughtReports()[0].text;
        EXPECT_NE(report.find(c.status), std::string::npos) << report;
        EXPECT_EQ(report.substr(report.find('\n') + 1), text);
    }
}

TEST_F(LibraryFailures, NothingIsOfferedWithLibraryBreaksOffOrOnSuccess)
{
    SetBreakOnLibraryErrors(0);
    _UP_ZOR_CloseFile(99);
    SetBreakOnLibraryErrors(1);
    EXPECT_EQ(_UP_strtol("42", nullptr, 10), 42);
    EXPECT_TRUE(caughtReports().empty());
}

}  // namespace
