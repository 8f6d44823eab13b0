#include "support/tray_relay.h"

#include <array>
#include <cwchar>

namespace morvane::test {
namespace {

constexpr UINT AnswerMilliseconds = 10'000;
constexpr std::size_t MaxHandleDigits = 24;

HWND RecorderWindow() {
    std::array<wchar_t, MaxHandleDigits> text{};
    GetEnvironmentVariableW(TrayRecorderVariable, text.data(), static_cast<DWORD>(text.size()));
    return reinterpret_cast<HWND>(std::wcstoull(text.data(), nullptr, 10));
}

}  // namespace

bool IsTrayRecorded() {
    return RecorderWindow() != nullptr;
}

BOOL WINAPI RelayTrayCall(DWORD message, PNOTIFYICONDATAW data) {
    RelayedTrayCall call{message, *data};
    COPYDATASTRUCT envelope{0, sizeof(call), &call};
    DWORD_PTR result = FALSE;
    SendMessageTimeoutW(RecorderWindow(), WM_COPYDATA, reinterpret_cast<WPARAM>(data->hWnd),
                        reinterpret_cast<LPARAM>(&envelope), SMTO_NORMAL, AnswerMilliseconds,
                        &result);
    return static_cast<BOOL>(result);
}

}  // namespace morvane::test
