// Text files: LF in the program, CR LF in the file.
#include <string>

#include "fmtio/file_table.h"
#include "services/line_ends.h"
#include "temp_dir.h"

namespace {

std::string dropped(std::string text)
{
    text.resize(tollan::services::dropCarriageReturns(text.data(), text.size()));
    return text;
}

// The file image of text written in text mode.
std::string withCarriageReturns(const std::string &text)
{
    std::string image;
    for (char c : text) {
        if (c == '\n') image += '\r';
        image += c;
    }
    return image;
}

// Lines whose LFs fall on and around the writer's buffer boundaries.
std::string awkwardText()
{
    std::string text;
    for (size_t length : {65535u, 65534u, 0u, 1u, 65536u, 70000u, 2047u, 2046u, 7u}) {
        text.append(length, static_cast<char>('a' + length % 26));
        text += '\n';
    }
    text += "\n\n\rend";
    return text;
}

}  // namespace

TEST(FmtioTextTranslation, DropsOnlyCarriageReturnsBeforeLineFeedsAndExpandsWholePairs)
{
    EXPECT_EQ(dropped("a\r\nb"), "a\nb");
    EXPECT_EQ(dropped("\r\n\r\n"), "\n\n");
    EXPECT_EQ(dropped("a\rb\r"), "a\rb\r");
    EXPECT_EQ(dropped("\r\r\n\r"), "\r\n\r");
    EXPECT_EQ(dropped(""), "");

    // Expanding LFs never splits a CR LF pair across the target's end.
    char target[4];
    size_t consumed = 0;
    EXPECT_EQ(tollan::services::expandLineFeeds("ab\nc", 4, target, 4, &consumed), 4u);
    EXPECT_EQ(std::string(target, 4), "ab\r\n");
    EXPECT_EQ(consumed, 3u);
    EXPECT_EQ(tollan::services::expandLineFeeds("abc\n", 4, target, 4, &consumed), 3u);
    EXPECT_EQ(consumed, 3u);
}

TEST_F(FmtioFileTest, TextWritesCarriageReturnLineFeed)
{
    const int32_t handle = open("t", 2, 0, 1);
    EXPECT_EQ(ZOR_WriteFile(handle, "a\nb\n\n", 5), 5);
    const std::string text = awkwardText();
    EXPECT_EQ(ZOR_WriteFile(handle, text.data(), static_cast<int64_t>(text.size())),
              static_cast<int32_t>(text.size()));
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("t"), "a\r\nb\r\n\r\n" + withCarriageReturns(text));
}

TEST_F(FmtioFileTest, TextReadsDropCarriageReturnsWhateverTheReadSize)
{
    // Small reads on a short text, large ones on the long one.
    const std::string shortText = "x\ny\n\n\rz\r\n";
    const std::string longText = awkwardText();
    writeRaw("short", withCarriageReturns(shortText) + "\r\r\n\r");
    writeRaw("long", withCarriageReturns(longText) + "\r\r\n\r");
    for (int64_t chunk : {1, 2, 3, 4, 7, 4096, 65536}) {
        SCOPED_TRACE(chunk);
        const char *name = chunk < 100 ? "short" : "long";
        const int32_t handle = open(name, 1, 2, 1);
        EXPECT_EQ(readAll(handle, chunk), (chunk < 100 ? shortText : longText) + "\r\n\r");
        EXPECT_EQ(ZOR_CloseFile(handle), 0);
    }

    writeRaw("small", "a\r\nb");
    const int32_t handle = open("small", 1, 2, 1);
    char buffer[8];
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, sizeof buffer), 3);
    EXPECT_EQ(std::string(buffer, 3), "a\nb");
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

TEST_F(FmtioFileTest, BinaryFilesAreNotTranslated)
{
    const int32_t handle = open("b", 0, 0, 0);
    EXPECT_EQ(ZOR_WriteFile(handle, "a\nb\r\n", 5), 5);
    EXPECT_EQ(SetFilePtr(handle, 0, 0), 0);
    EXPECT_EQ(readAll(handle), "a\nb\r\n");
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
    EXPECT_EQ(readRaw("b"), "a\nb\r\n");
}

// A CR that ends one read waits for the next byte: with an LF behind it the
// pair becomes LF; anything else is left for the next read, and the file
// position the program sees stays right behind the bytes it was given.
class FmtioCarriageReturnAtBlockEnd : public FmtioFileTest, public testing::WithParamInterface<bool> {
protected:
    int32_t openText(const char *name, const std::string &bytes)
    {
        writeRaw(name, bytes);
        const int32_t handle = open(name, 1, 2, 1);
        if (!GetParam()) {
            // As for a pipe or terminal: the byte read ahead cannot be given
            // back to the system and is held by the library instead.
            tollan::fmtio::LockedFile file(handle);
            file->diskFile = false;
        }
        return handle;
    }
};

TEST_P(FmtioCarriageReturnAtBlockEnd, PairAcrossTheBoundaryBecomesLineFeed)
{
    const int32_t handle = openText("pair", "ab\r\ncd");
    char buffer[4] = {};
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, 3), 3);
    EXPECT_EQ(std::string(buffer, 3), "ab\n");
    EXPECT_EQ(SetFilePtr(handle, 0, 1), 4);
    EXPECT_EQ(readAll(handle), "cd");
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

TEST_P(FmtioCarriageReturnAtBlockEnd, LoneCarriageReturnKeepsTheNextByteUnread)
{
    const int32_t handle = openText("lone", "ab\rcd\r");
    char buffer[4] = {};
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, 3), 3);
    EXPECT_EQ(std::string(buffer, 3), "ab\r");
    EXPECT_EQ(SetFilePtr(handle, 0, 1), 3);
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, 1), 1);
    EXPECT_EQ(buffer[0], 'c');
    char line[8];
    EXPECT_EQ(ReadLine(handle, line, 7), 2);  // "d\r" ends the file
    EXPECT_STREQ(line, "d\r");
    EXPECT_EQ(ZOR_ReadFile(handle, buffer, 3), 0);
    EXPECT_EQ(ZOR_CloseFile(handle), 0);
}

std::string diskOrStream(const testing::TestParamInfo<bool> &param)
{
    return param.param ? "Disk" : "Stream";
}

INSTANTIATE_TEST_SUITE_P(DiskAndStream, FmtioCarriageReturnAtBlockEnd, testing::Bool(), diskOrStream);
