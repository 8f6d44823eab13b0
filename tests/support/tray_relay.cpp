#include "support/tray_relay.h"

#include <array>
#include <cwchar>

namespace morvane::test {
namespace {

constexpr UINT AnswerMilliseconds = 10'000;
constexpr std::size_t MaxHandleDigits = 24;
constexpr std::size_t MaxIconWidth = 256;
constexpr std::uint64_t FnvStart = 0xCBF29CE484222325U;
constexpr std::uint64_t FnvPrime = 0x100000001B3U;

HWND RecorderWindow() {
    std::array<wchar_t, MaxHandleDigits> text{};
    GetEnvironmentVariableW(TrayRecorderVariable, text.data(), static_cast<DWORD>(text.size()));
    return reinterpret_cast<HWND>(std::wcstoull(text.data(), nullptr, 10));
}

// FNV-1a over the rows of a bitmap: the same picture gives the same number in every process.
void AddPicture(HDC context, HBITMAP bitmap, RelayedTrayCall& call) {
    BITMAP shape{};
    if (GetObjectW(bitmap, sizeof(shape), &shape) == 0 ||
        shape.bmWidth > static_cast<LONG>(MaxIconWidth)) {
        return;
    }
    call.iconSize = {shape.bmWidth, shape.bmHeight};
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof(format.bmiHeader);
    format.bmiHeader.biWidth = shape.bmWidth;
    format.bmiHeader.biHeight = shape.bmHeight;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    std::array<DWORD, MaxIconWidth> row{};
    for (LONG line = 0; line < shape.bmHeight; ++line) {
        GetDIBits(context, bitmap, static_cast<UINT>(line), 1, row.data(), &format, DIB_RGB_COLORS);
        for (const DWORD pixel : row) {
            call.pictureHash = (call.pictureHash ^ pixel) * FnvPrime;
        }
    }
}

void AddIcon(HICON icon, RelayedTrayCall& call) {
    ICONINFO parts{};
    if (GetIconInfo(icon, &parts) == FALSE) {
        return;
    }
    call.pictureHash = FnvStart;
    HDC const context = CreateCompatibleDC(nullptr);
    AddPicture(context, parts.hbmMask, call);
    // Without colours, both pictures are in the mask.
    if (parts.hbmColor != nullptr) {
        AddPicture(context, parts.hbmColor, call);
        DeleteObject(parts.hbmColor);
    }
    DeleteObject(parts.hbmMask);
    DeleteDC(context);
}

}  // namespace

bool IsTrayRecorded() {
    return RecorderWindow() != nullptr;
}

BOOL WINAPI RelayTrayCall(DWORD message, PNOTIFYICONDATAW data) {
    RelayedTrayCall call;
    call.message = message;
    call.data = *data;
    if ((data->uFlags & NIF_ICON) != 0) {
        AddIcon(data->hIcon, call);
    }
    COPYDATASTRUCT envelope{0, sizeof(call), &call};
    DWORD_PTR result = FALSE;
    SendMessageTimeoutW(RecorderWindow(), WM_COPYDATA, reinterpret_cast<WPARAM>(data->hWnd),
                        reinterpret_cast<LPARAM>(&envelope), SMTO_NORMAL, AnswerMilliseconds,
                        &result);
    return static_cast<BOOL>(result);
}

}  // namespace morvane::test
