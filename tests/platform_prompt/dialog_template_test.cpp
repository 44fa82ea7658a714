// The report dialog's in-memory template, read back field by field as the
// dialog manager reads it (Windows only).
#ifdef _WIN32
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/win32/dialog_template.h"

namespace {

using namespace tollan::platform;
using namespace tollan::platform::win32;

// A reader of the template's bytes, checking alignment on the way.
class TemplateReader {
public:
    explicit TemplateReader(const std::vector<std::byte> &bytes) : bytes_(bytes) {}

    template <typename T>
    T next()
    {
        T value{};
        EXPECT_LE(at_ + sizeof value, bytes_.size());
        if (at_ + sizeof value <= bytes_.size()) std::memcpy(&value, bytes_.data() + at_, sizeof value);
        at_ += sizeof value;
        return value;
    }
    std::string text()
    {
        std::string ascii;
        for (uint16_t unit = next<uint16_t>(); unit != 0 && at_ < bytes_.size(); unit = next<uint16_t>())
            ascii += unit < 0x80 ? static_cast<char>(unit) : '?';
        return ascii;
    }
    void alignToDword() { at_ = (at_ + 3) & ~size_t{3}; }
    bool atEnd() const { return at_ == bytes_.size(); }

private:
    const std::vector<std::byte> &bytes_;
    size_t at_ = 0;
};

struct ReadControl {
    uint32_t style;
    DialogPlace place;
    uint16_t id;
    uint16_t atom;
    std::string text;
};

struct ReadDialog {
    uint32_t style;
    DialogPlace place;
    std::string title;
    uint16_t pointSize;
    std::string font;
    std::vector<ReadControl> controls;
};

DialogPlace readPlace(TemplateReader &in)
{
    const int16_t x = in.next<int16_t>(), y = in.next<int16_t>(), width = in.next<int16_t>();
    return {x, y, width, in.next<int16_t>()};
}

ReadDialog readTemplate(const std::vector<std::byte> &bytes)
{
    TemplateReader in(bytes);
    ReadDialog dialog{};
    dialog.style = in.next<uint32_t>();
    EXPECT_EQ(in.next<uint32_t>(), 0u) << "extended style";
    const uint16_t count = in.next<uint16_t>();
    dialog.place = readPlace(in);
    EXPECT_EQ(in.next<uint32_t>(), 0u) << "no menu, the standard class";
    dialog.title = in.text();
    dialog.pointSize = in.next<uint16_t>();
    dialog.font = in.text();
    for (uint16_t i = 0; i < count; ++i) {
        in.alignToDword();
        ReadControl control{};
        control.style = in.next<uint32_t>();
        EXPECT_EQ(in.next<uint32_t>(), 0u) << "extended style of control " << i;
        control.place = readPlace(in);
        control.id = in.next<uint16_t>();
        EXPECT_EQ(in.next<uint16_t>(), 0xFFFF) << "class of control " << i << " is no atom";
        control.atom = in.next<uint16_t>();
        control.text = in.text();
        EXPECT_EQ(in.next<uint16_t>(), 0) << "creation data of control " << i;
        dialog.controls.push_back(control);
    }
    EXPECT_TRUE(in.atEnd());
    return dialog;
}

TEST(DialogTemplate, StartsEveryControlOnADword)
{
    // Texts of odd and even lengths shift the following control by two bytes.
    const DialogControl controls[] = {{WS_CHILD, {}, 1, kStaticClass, "a"},
                                      {WS_CHILD, {}, 2, kStaticClass, "ab"},
                                      {WS_CHILD, {}, 3, kStaticClass, ""},
                                      {WS_CHILD, {1, 2, 3, 4}, 4, kButtonClass, "abc"}};
    for (std::string_view title : {"", "x", "xy", "xyz"}) {
        const DialogDesign design{WS_POPUP, {5, 6, 7, 8}, title, "MS Sans Serif", 8, controls};
        const ReadDialog dialog = readTemplate(buildDialogTemplate(design));
        ASSERT_EQ(dialog.controls.size(), 4u);
        EXPECT_EQ(dialog.style, static_cast<uint32_t>(WS_POPUP | DS_SETFONT));
        EXPECT_EQ(std::memcmp(&dialog.place, &design.place, sizeof design.place), 0);
        EXPECT_EQ(std::memcmp(&dialog.controls[3].place, &controls[3].place, sizeof design.place), 0);
        EXPECT_EQ(dialog.title, title);
        EXPECT_EQ(dialog.controls[1].text, "ab");
        EXPECT_EQ(dialog.controls[3].id, 4);
    }
}

ReportQuestion question(const char *body, size_t limit, ReportAnswer defaultChoice = ReportAnswer::ignore)
{
    return {"Fatal Run-time Error", body, limit, {"Break", "Ignore", "Terminate"}, defaultChoice};
}

constexpr FontUnits kFont{6, 13};

TEST(ReportDialogTemplate, HasTheTitleTheFontTheBodyAndTheThreeButtons)
{
    const ReadDialog dialog =
        readTemplate(reportDialogTemplate(question("Dereference of null pointer.", 40), kFont, {170, 13}));
    EXPECT_EQ(dialog.title, "Fatal Run-time Error");
    EXPECT_EQ(dialog.font, "MS Sans Serif");
    EXPECT_EQ(dialog.pointSize, 8);
    EXPECT_NE(dialog.style & DS_SETFONT, 0u);
    EXPECT_NE(dialog.style & DS_MODALFRAME, 0u);
    ASSERT_EQ(dialog.controls.size(), 4u);

    const ReadControl &body = dialog.controls[0];
    EXPECT_EQ(body.atom, kStaticClass);
    EXPECT_EQ(body.text, "Dereference of null pointer.");
    EXPECT_NE(body.style & SS_NOPREFIX, 0u) << "an & in the message is no mnemonic";
    // 170 pixels in a 6-pixel average width is at least 114 dialog units.
    EXPECT_GE(body.place.width, 114);
    EXPECT_GE(body.place.height, 8);

    const struct {
        uint16_t id;
        const char *label;
    } buttons[] = {{1000, "Break"}, {1001, "Ignore"}, {1002, "Terminate"}};
    for (size_t i = 0; i < 3; ++i) {
        const ReadControl &button = dialog.controls[i + 1];
        SCOPED_TRACE(buttons[i].label);
        EXPECT_EQ(button.id, buttons[i].id);
        EXPECT_EQ(button.atom, kButtonClass);
        EXPECT_EQ(button.text, buttons[i].label);
        EXPECT_NE(button.style & WS_TABSTOP, 0u);
        // In one row below the body, inside the dialog, left to right.
        EXPECT_GE(button.place.y, body.place.y + body.place.height);
        EXPECT_EQ(button.place.y, dialog.controls[1].place.y);
        EXPECT_LE(button.place.x + button.place.width, dialog.place.width);
        EXPECT_LE(button.place.y + button.place.height, dialog.place.height);
        if (i > 0) {
            const ReadControl &left = dialog.controls[i];
            EXPECT_GE(button.place.x, left.place.x + left.place.width);
        }
    }
}

TEST(ReportDialogTemplate, ShowsAtMostTheBodyLimitLessOneBytes)
{
    const struct {
        size_t limit;
        const char *shown;
    } cases[] = {{0, ""},
                 {1, ""},
                 {2, "F"},
                 {26, "File \"a.c\", line 3:\n\nBad."},
                 {1000, "File \"a.c\", line 3:\n\nBad."}};
    for (const auto &each : cases) {
        SCOPED_TRACE(each.limit);
        const ReadDialog dialog = readTemplate(
            reportDialogTemplate(question("File \"a.c\", line 3:\n\nBad.", each.limit), kFont, {60, 39}));
        ASSERT_EQ(dialog.controls.size(), 4u);
        EXPECT_EQ(dialog.controls[0].text, each.shown);
    }
}

TEST(ReportDialogTemplate, MakesTheDefaultChoiceTheDefaultButtonAndOnlyIt)
{
    for (ReportAnswer choice : {ReportAnswer::breakIntoDebugger, ReportAnswer::ignore,
                                ReportAnswer::terminate, ReportAnswer::nobodyToAsk}) {
        const ReadDialog dialog =
            readTemplate(reportDialogTemplate(question("x", 2, choice), kFont, {6, 13}));
        ASSERT_EQ(dialog.controls.size(), 4u);
        for (size_t i = 0; i < 3; ++i) {
            const bool isDefault = (dialog.controls[i + 1].style & 0xF) == BS_DEFPUSHBUTTON;
            EXPECT_EQ(isDefault, static_cast<size_t>(choice) == i)
                << "button " << i << ", default " << int(choice);
        }
    }
}

TEST(ReportDialogTemplate, SizesTheDialogToTheBodyWithinLimits)
{
    const ReadDialog small = readTemplate(reportDialogTemplate(question("x", 2), kFont, {6, 13}));
    const ReadDialog wide = readTemplate(reportDialogTemplate(question("x", 2), kFont, {100000, 13 * 200}));
    ASSERT_EQ(small.controls.size(), 4u);
    ASSERT_EQ(wide.controls.size(), 4u);
    // A short body still leaves room for the three buttons.
    EXPECT_GE(small.place.width, 3 * 50);
    // A body measured wider than the widest body is laid out at that width;
    // one too tall for a screen is cut off.
    EXPECT_LE(wide.controls[0].place.width, kWidestBody + 2);
    EXPECT_GT(wide.controls[0].place.height, small.controls[0].place.height);
    EXPECT_LE(wide.place.height, 480);
}

TEST(ReportDialogTemplate, NamesChoicesWithoutLabelsInEnglishAndReadsNullTextsAsEmpty)
{
    const ReportQuestion bare{nullptr, nullptr, 100, {nullptr, "Weiter", nullptr}, ReportAnswer::ignore};
    const ReadDialog dialog = readTemplate(reportDialogTemplate(bare, kFont, {0, 0}));
    ASSERT_EQ(dialog.controls.size(), 4u);
    EXPECT_EQ(dialog.title, "");
    EXPECT_EQ(dialog.controls[0].text, "");
    EXPECT_EQ(dialog.controls[1].text, "Break");
    EXPECT_EQ(dialog.controls[2].text, "Weiter");
    EXPECT_EQ(dialog.controls[3].text, "Terminate");
}

}  // namespace
#endif
