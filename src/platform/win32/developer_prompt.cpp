// Asking the developer with user32's dialogs and message boxes and comdlg32's
// file-open dialog. The report dialog is laid out on the measures of its
// font on the screen, so that the whole body shows, wrapped, above the
// buttons.
#include "platform/developer_prompt.h"

#include <windows.h>
#include <commdlg.h>

#include <cstring>
#include <new>

#include "platform/win32/dialog_template.h"

namespace tollan::platform {
namespace {

using win32::FontUnits;
using win32::TextExtent;

constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

// Measures the dialog's font and the body, wrapped to the widest body, on a
// screen context. False when there is no screen to measure on.
bool measureReport(std::string_view body, FontUnits &font, TextExtent &extent)
{
    HDC screen = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
    if (screen == nullptr) return false;
    const int height = -MulDiv(8, GetDeviceCaps(screen, LOGPIXELSY), 72);
    HFONT made =
        CreateFontA(height, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                    CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_DONTCARE, "MS Sans Serif");
    HGDIOBJ used = made != nullptr ? static_cast<HGDIOBJ>(made) : GetStockObject(DEFAULT_GUI_FONT);
    HGDIOBJ previous = SelectObject(screen, used);

    TEXTMETRICA metrics{};
    SIZE letters{};
    bool measured = GetTextMetricsA(screen, &metrics) != FALSE &&
                    GetTextExtentPoint32A(screen, kLetters, sizeof kLetters - 1, &letters) != FALSE;
    if (measured) {
        // The dialog manager's own rounding of the average width.
        font = {static_cast<int>((letters.cx / 26 + 1) / 2), static_cast<int>(metrics.tmHeight)};
        RECT wrapped{0, 0, MulDiv(win32::kWidestBody, font.averageWidth, 4), 0};
        if (!body.empty())
            measured = DrawTextA(screen, body.data(), static_cast<int>(body.size()), &wrapped,
                                 DT_CALCRECT | DT_WORDBREAK | DT_EXPANDTABS | DT_NOPREFIX) != 0;
        extent = {static_cast<int>(wrapped.right - wrapped.left),
                  static_cast<int>(wrapped.bottom - wrapped.top)};
    }
    SelectObject(screen, previous);
    if (made != nullptr) DeleteObject(made);
    DeleteDC(screen);
    return measured;
}

// The dialog's procedure: the default choice's button has the focus, and a
// choice's button ends the dialog with its id. Escape and the close command
// (IDCANCEL) do not: the developer has to choose.
INT_PTR CALLBACK reportDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        HWND button = GetDlgItem(dialog, static_cast<int>(lParam));
        if (button == nullptr) return TRUE;
        SetFocus(button);
        return FALSE;  // the focus is set
    }
    if (message == WM_COMMAND) {
        const int id = LOWORD(wParam);
        if (id >= win32::kBreakButton && id <= win32::kTerminateButton) EndDialog(dialog, id);
        return TRUE;
    }
    return FALSE;
}

ReportAnswer answerOf(INT_PTR pressed)
{
    switch (pressed) {
        case win32::kBreakButton:
            return ReportAnswer::breakIntoDebugger;
        case win32::kIgnoreButton:
            return ReportAnswer::ignore;
        case win32::kTerminateButton:
            return ReportAnswer::terminate;
        default:
            return ReportAnswer::cannotShow;
    }
}

}  // namespace

ReportAnswer askReport(const ReportQuestion &question) noexcept
{
    FontUnits font{};
    TextExtent body{};
    if (!measureReport(shownBody(question), font, body)) return ReportAnswer::cannotShow;
    try {
        const std::vector<std::byte> dialog = win32::reportDialogTemplate(question, font, body);
        const int defaultButton = question.defaultChoice <= ReportAnswer::terminate
                                      ? win32::kBreakButton + static_cast<int>(question.defaultChoice)
                                      : 0;
        // -1, or 0 for a missing owner, when the dialog cannot be made; any
        // other value is what the procedure ended it with.
        const INT_PTR pressed = DialogBoxIndirectParamA(GetModuleHandleA(nullptr),
                                                        reinterpret_cast<LPCDLGTEMPLATEA>(dialog.data()),
                                                        nullptr, reportDialogProcedure, defaultButton);
        return answerOf(pressed);
    } catch (const std::bad_alloc &) {
        return ReportAnswer::cannotShow;
    }
}

bool askRetryStart(const char *title, const char *text) noexcept
{
    return MessageBoxA(nullptr, text, title,
                       MB_RETRYCANCEL | MB_ICONEXCLAMATION | MB_TASKMODAL | MB_SETFOREGROUND) == IDRETRY;
}

bool askProgramPath(const char *defaultName, char *path, size_t size) noexcept
{
    if (path == nullptr || size == 0 || size > MAXDWORD) return false;
    const char *name = defaultName != nullptr ? defaultName : "";
    if (std::strlen(name) >= size) return false;
    std::strcpy(path, name);
    OPENFILENAMEA choice{};
    choice.lStructSize = sizeof choice;
    choice.lpstrFilter = "Programs (*.exe)\0*.exe\0All files (*.*)\0*.*\0";
    choice.lpstrFile = path;
    choice.nMaxFile = static_cast<DWORD>(size);
    choice.Flags = OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    return GetOpenFileNameA(&choice) != FALSE;
}

void showFatalMessage(const char *title, const char *text) noexcept
{
    MessageBoxA(nullptr, text, title, MB_OK | MB_ICONSTOP | MB_TASKMODAL | MB_SETFOREGROUND);
}

}  // namespace tollan::platform
