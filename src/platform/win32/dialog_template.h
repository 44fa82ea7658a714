// Dialog templates built in memory, for DialogBoxIndirectParamA: the
// run-time error report's dialog needs no resource in the DLL, and its size
// follows its text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/developer_prompt.h"

namespace tollan::platform::win32 {

// Control classes by their predefined atoms.
inline constexpr uint16_t kButtonClass = 0x0080;
inline constexpr uint16_t kStaticClass = 0x0082;

// Ids of the report dialog's buttons; the dialog ends with the id pressed.
inline constexpr uint16_t kBreakButton = 1000;
inline constexpr uint16_t kIgnoreButton = 1001;
inline constexpr uint16_t kTerminateButton = 1002;
// The report dialog's static text (any id not taken by a button).
inline constexpr uint16_t kBodyText = 1003;

// A place in dialog units.
struct DialogPlace {
    int16_t x, y, width, height;
};

struct DialogControl {
    uint32_t style;
    DialogPlace place;
    uint16_t id;
    uint16_t classAtom;
    std::string_view text;  // in the process's code page
};

struct DialogDesign {
    uint32_t style;  // DS_SETFONT is added
    DialogPlace place;
    std::string_view title;
    std::string_view fontName;
    uint16_t pointSize;
    std::span<const DialogControl> controls;
};

// The template of `design`: a DLGTEMPLATE with no menu and the standard
// class, the title and the font, then each control DWORD-aligned with its
// class atom, its text and no creation data. Texts are turned into UTF-16
// from the process's code page. The bytes start at an address aligned for
// any type, as the template must. Throws std::bad_alloc.
std::vector<std::byte> buildDialogTemplate(const DialogDesign &design);

// The base units of the dialog's font in pixels: the average character
// width and the character height.
struct FontUnits {
    int averageWidth;
    int height;
};

// A text's extent in pixels.
struct TextExtent {
    int width;
    int height;
};

// The widest body the report dialog lays out, in dialog units; a longer line
// is wrapped to it.
inline constexpr int kWidestBody = 320;

// The run-time error report's dialog: the question's title, the shown part
// of its body in a static text of `body`'s extent (measured in `font`, to
// at most kWidestBody), and below it the three choices as buttons 1000 (break),
// 1001 (ignore) and 1002 (terminate) in a row, the default choice the default
// button. "MS Sans Serif" at 8 points. Throws std::bad_alloc.
std::vector<std::byte> reportDialogTemplate(const ReportQuestion &question, FontUnits font, TextExtent body);

}  // namespace tollan::platform::win32
