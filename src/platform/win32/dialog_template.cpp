#include "platform/win32/dialog_template.h"

#include <windows.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace tollan::platform::win32 {
namespace {

class TemplateWriter {
public:
    explicit TemplateWriter(std::vector<std::byte> &bytes) : bytes_(bytes) {}

    void word(uint16_t value) { raw(&value, sizeof value); }
    void dword(uint32_t value) { raw(&value, sizeof value); }
    void place(const DialogPlace &box)
    {
        for (int16_t value : {box.x, box.y, box.width, box.height}) raw(&value, sizeof value);
    }
    // The text as UTF-16 and its terminating zero.
    void text(std::string_view ansi)
    {
        if (!ansi.empty() && ansi.size() <= INT_MAX) {
            const int length = static_cast<int>(ansi.size());
            const int units = MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, nullptr, 0);
            if (units > 0) {
                std::vector<wchar_t> wide(static_cast<size_t>(units));
                MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, wide.data(), units);
                raw(wide.data(), wide.size() * sizeof(wchar_t));
            }
        }
        word(0);
    }
    // Pads to a multiple of four bytes: every control starts on a DWORD.
    void alignToDword() { bytes_.resize((bytes_.size() + 3) & ~size_t{3}); }

private:
    void raw(const void *data, size_t count)
    {
        const auto *from = static_cast<const std::byte *>(data);
        bytes_.insert(bytes_.end(), from, from + count);
    }

    std::vector<std::byte> &bytes_;
};

// Layout of the report dialog, in dialog units.
constexpr int kMargin = 7;
constexpr int kBodyToButtons = 10;
constexpr int kButtonWidth = 50;
constexpr int kButtonHeight = 14;
constexpr int kButtonSpacing = 6;
constexpr int kButtonRow = 3 * kButtonWidth + 2 * kButtonSpacing;
// Past this height the body is cut off at the bottom, so that the buttons
// stay on a screen of 768 lines.
constexpr int kTallestBody = 400;

// Pixels to dialog units, rounded up: 4 units to the average character
// width, 8 to the character height.
int toDialogUnits(int pixels, int baseUnit, int unitsPerBase)
{
    const long long units =
        (static_cast<long long>(std::max(pixels, 0)) * unitsPerBase + baseUnit - 1) / std::max(baseUnit, 1);
    return static_cast<int>(std::min<long long>(units, SHRT_MAX));
}

int16_t du(int value)
{
    return static_cast<int16_t>(value);
}

}  // namespace

std::vector<std::byte> buildDialogTemplate(const DialogDesign &design)
{
    std::vector<std::byte> bytes;
    TemplateWriter out(bytes);
    out.dword(design.style | DS_SETFONT);
    out.dword(0);  // extended style
    out.word(static_cast<uint16_t>(design.controls.size()));
    out.place(design.place);
    out.word(0);  // no menu
    out.word(0);  // the standard dialog class
    out.text(design.title);
    out.word(design.pointSize);
    out.text(design.fontName);
    for (const DialogControl &control : design.controls) {
        out.alignToDword();
        out.dword(control.style);
        out.dword(0);  // extended style
        out.place(control.place);
        out.word(control.id);
        out.word(0xFFFF);  // the class by its atom
        out.word(control.classAtom);
        out.text(control.text);
        out.word(0);  // no creation data
    }
    return bytes;
}

std::vector<std::byte> reportDialogTemplate(const ReportQuestion &question, FontUnits font, TextExtent body)
{
    const int bodyWidth = std::min(toDialogUnits(body.width, font.averageWidth, 4) + 2, kWidestBody + 2);
    const int bodyHeight = std::min(toDialogUnits(body.height, font.height, 8), kTallestBody);
    const int inner = std::max(bodyWidth, kButtonRow);
    const int buttonsTop = kMargin + bodyHeight + kBodyToButtons;
    const int firstButton = kMargin + (inner - kButtonRow) / 2;

    constexpr uint32_t kText = WS_CHILD | WS_VISIBLE | SS_LEFT | SS_NOPREFIX;
    constexpr uint32_t kButton = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
    const uint16_t ids[3] = {kBreakButton, kIgnoreButton, kTerminateButton};
    DialogControl controls[4];
    controls[0] = {kText,
                   {du(kMargin), du(kMargin), du(inner), du(bodyHeight)},
                   kBodyText,
                   kStaticClass,
                   shownBody(question)};
    for (size_t i = 0; i < 3; ++i) {
        const bool isDefault = static_cast<size_t>(question.defaultChoice) == i;
        controls[i + 1] = {kButton | (i == 0 ? WS_GROUP : 0) | (isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON),
                           {du(firstButton + static_cast<int>(i) * (kButtonWidth + kButtonSpacing)),
                            du(buttonsTop), du(kButtonWidth), du(kButtonHeight)},
                           ids[i],
                           kButtonClass,
                           choiceLabel(question, i)};
    }
    const DialogDesign design{DS_MODALFRAME | DS_CENTER | DS_SETFOREGROUND | WS_POPUP | WS_CAPTION,
                              {0, 0, du(inner + 2 * kMargin), du(buttonsTop + kButtonHeight + kMargin)},
                              question.title != nullptr ? question.title : "",
                              "MS Sans Serif",
                              8,
                              controls};
    return buildDialogTemplate(design);
}

}  // namespace tollan::platform::win32
