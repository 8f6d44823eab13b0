#include "support/tray.h"

#include <array>

#include "base/owners.h"
#include "support/window_state.h"

#include <commctrl.h>

namespace morvane::test {
namespace {

constexpr std::size_t MaxTipUnits = 256;
constexpr UINT AnswerMilliseconds = 2'000;

// The buffer for TTM_ENUMTOOLSW, laid out in the other process.
struct RemoteTool {
    TOOLINFOW info;
    std::array<wchar_t, MaxTipUnits> text;
};

struct ToolOfWindow {
    HWND owner = nullptr;
    RECT rect{};  // client pixels of the owner
    std::wstring text;
};

// Memory in another process, large enough for one RemoteTool.
class RemoteBlock {
public:
    explicit RemoteBlock(DWORD processId)
        : process_(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE,
                               processId)) {
        if (process_) {
            address_ = VirtualAllocEx(process_.get(), nullptr, sizeof(RemoteTool),
                                      MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
        }
    }
    RemoteBlock(const RemoteBlock&) = delete;
    RemoteBlock& operator=(const RemoteBlock&) = delete;
    RemoteBlock(RemoteBlock&&) = delete;
    RemoteBlock& operator=(RemoteBlock&&) = delete;
    ~RemoteBlock() {
        if (address_ != nullptr) {
            VirtualFreeEx(process_.get(), address_, 0, MEM_RELEASE);
        }
    }

    [[nodiscard]] bool Write(const RemoteTool& tool) const {
        return address_ != nullptr &&
               WriteProcessMemory(process_.get(), address_, &tool, sizeof(tool), nullptr) != FALSE;
    }
    [[nodiscard]] bool Read(RemoteTool& tool) const {
        return ReadProcessMemory(process_.get(), address_, &tool, sizeof(tool), nullptr) != FALSE;
    }
    [[nodiscard]] LPARAM Address() const { return reinterpret_cast<LPARAM>(address_); }
    [[nodiscard]] wchar_t* TextAddress() const {
        return reinterpret_cast<wchar_t*>(static_cast<char*>(address_) +
                                          offsetof(RemoteTool, text));
    }

private:
    KernelHandle process_;
    void* address_ = nullptr;
};

std::optional<LRESULT> Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, AnswerMilliseconds,
                            &result) == 0) {
        return std::nullopt;
    }
    return static_cast<LRESULT>(result);
}

std::vector<ToolOfWindow> ToolsOf(HWND tooltip) {
    std::vector<ToolOfWindow> tools;
    const LRESULT count = Ask(tooltip, TTM_GETTOOLCOUNT, 0, 0).value_or(0);
    const RemoteBlock block(ProcessOf(tooltip));
    for (LRESULT index = 0; index < count; ++index) {
        RemoteTool tool{};
        tool.info.cbSize = sizeof(tool.info);
        tool.info.lpszText = block.TextAddress();
        if (!block.Write(tool) ||
            Ask(tooltip, TTM_ENUMTOOLSW, static_cast<WPARAM>(index), block.Address()).value_or(0) ==
                0 ||
            !block.Read(tool)) {
            continue;
        }
        tool.text.back() = L'\0';
        tools.push_back({tool.info.hwnd, tool.info.rect, tool.text.data()});
    }
    return tools;
}

std::vector<HWND> ShellTooltips(HWND taskbar) {
    std::vector<HWND> tooltips;
    for (const HWND window : TopLevelWindows()) {
        if (ProcessOf(window) == ProcessOf(taskbar) && WindowClass(window) == TOOLTIPS_CLASSW) {
            tooltips.push_back(window);
        }
    }
    return tooltips;
}

// Visibility proves nothing: Wine shows the taskbar only while it holds icons.
HWND ShellTaskbar() {
    HWND taskbar = nullptr;
    do {
        taskbar = FindWindowExW(nullptr, taskbar, L"Shell_TrayWnd", nullptr);
        // A stand-in may belong to this process.
    } while (taskbar != nullptr && ProcessOf(taskbar) == GetCurrentProcessId());
    return taskbar;
}

bool IsBalloonWindow(HWND tooltip) {
    return (GetWindowLongPtrW(tooltip, GWL_STYLE) & TTS_BALLOON) != 0;
}

}  // namespace

bool WaitForTaskbar(std::chrono::milliseconds timeout) {
    // Makes Wine start the shell, which searching for windows does not.
    GetDesktopWindow();
    return WaitUntil([] { return ShellTaskbar() != nullptr; }, timeout);
}

std::vector<TrayIcon> TrayIcons() {
    std::vector<TrayIcon> icons;
    const HWND taskbar = ShellTaskbar();
    if (taskbar == nullptr) {
        return icons;
    }
    for (const HWND tooltip : ShellTooltips(taskbar)) {
        if (IsBalloonWindow(tooltip)) {
            continue;
        }
        for (ToolOfWindow& tool : ToolsOf(tooltip)) {
            if (tool.owner != taskbar || IsRectEmpty(&tool.rect) != FALSE) {
                continue;
            }
            RECT rect = tool.rect;
            MapWindowPoints(taskbar, nullptr, reinterpret_cast<POINT*>(&rect), 2);
            icons.push_back({rect, std::move(tool.text)});
        }
    }
    return icons;
}

bool TrayIconPresent() {
    return !TrayIcons().empty();
}

std::optional<POINT> TrayIconCentre() {
    const std::vector<TrayIcon> icons = TrayIcons();
    if (icons.empty()) {
        return std::nullopt;
    }
    const RECT& rect = icons.front().rect;
    return POINT{(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

std::optional<std::wstring> TrayIconTip() {
    const std::vector<TrayIcon> icons = TrayIcons();
    return icons.empty() ? std::nullopt : std::optional<std::wstring>(icons.front().tip);
}

std::optional<Balloon> ShownBalloon() {
    const HWND taskbar = ShellTaskbar();
    if (taskbar == nullptr) {
        return std::nullopt;
    }
    for (const HWND tooltip : ShellTooltips(taskbar)) {
        if (!IsBalloonWindow(tooltip) || IsWindowVisible(tooltip) == FALSE) {
            continue;
        }
        std::vector<ToolOfWindow> tools = ToolsOf(tooltip);
        if (!tools.empty()) {
            return Balloon{WindowRect(tooltip), std::move(tools.front().text)};
        }
    }
    return std::nullopt;
}

}  // namespace morvane::test
