#include "actor/actor_windows.h"

#include <map>
#include <mutex>

namespace morvane::test {
namespace {

struct WindowRecord {
    WNDPROC originalProc = nullptr;
    COLORREF colour = 0;
    bool refusing = false;
    long long requestsUntilDeath = 0;  // 0: immortal
    std::vector<PositionRequest> requests;
    std::vector<InputEvent> input;
};

struct WindowRecords {
    std::mutex mutex;
    std::map<HWND, WindowRecord> records;
};

WindowRecords& Records() {
    static WindowRecords records;
    return records;
}

// Runs action on the window's record under the lock. A window that was never created has none.
template <typename Action>
void WithRecord(HWND window, Action action) {
    WindowRecords& all = Records();
    const std::scoped_lock lock(all.mutex);
    const auto found = all.records.find(window);
    if (found != all.records.end()) {
        action(found->second);
    }
}

// Returns false if the window has destroyed itself.
bool HandlePositionRequest(HWND window, WINDOWPOS& position) {
    bool refusing = false;
    bool dying = false;
    WithRecord(window, [&](WindowRecord& record) {
        record.requests.push_back({position.hwndInsertAfter, position.x, position.y, position.cx,
                                   position.cy, position.flags, GetTickCount64(), CounterNow()});
        refusing = record.refusing;
        if (record.requestsUntilDeath > 0) {
            --record.requestsUntilDeath;
            dying = record.requestsUntilDeath == 0;
        }
    });
    if (refusing) {
        position.flags |= SWP_NOZORDER;
    }
    if (dying) {
        DestroyWindow(window);
        return false;
    }
    return true;
}

void PaintBackground(HWND window, HDC context, COLORREF colour) {
    RECT client{};
    GetClientRect(window, &client);
    SetBkColor(context, colour);
    // Empty opaque text fills the rectangle without needing a brush.
    ExtTextOutW(context, 0, 0, ETO_OPAQUE, &client, nullptr, 0, nullptr);
}

LRESULT CALLBACK RecordingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    WNDPROC original = DefWindowProcW;
    COLORREF colour = 0;
    WithRecord(window, [&](const WindowRecord& record) {
        original = record.originalProc;
        colour = record.colour;
    });
    switch (message) {
        case WM_WINDOWPOSCHANGING:
            if (!HandlePositionRequest(window, *reinterpret_cast<WINDOWPOS*>(lParam))) {
                return 0;
            }
            break;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
        case WM_RBUTTONDOWN:
        case WM_RBUTTONUP: {
            const POINTS at = MAKEPOINTS(lParam);
            WithRecord(window, [&](WindowRecord& record) {
                record.input.push_back({message, at.x, at.y});
            });
            break;
        }
        case WM_KEYDOWN:
        case WM_KEYUP:
            WithRecord(window, [&](WindowRecord& record) {
                record.input.push_back({message, static_cast<int>(wParam), 0});
            });
            break;
        case WM_ERASEBKGND:
            PaintBackground(window, reinterpret_cast<HDC>(wParam), colour);
            return 1;
        case WM_CLOSE:
            // The standard dialog procedure would only hide the window.
            DestroyWindow(window);
            return 0;
        default:
            break;
    }
    return CallWindowProcW(original, window, message, wParam, lParam);
}

// Null for a system class; any other name is registered as a class of this program.
HINSTANCE ClassModule(const std::wstring& className) {
    WNDCLASSEXW known{};
    known.cbSize = sizeof(known);
    if (GetClassInfoExW(nullptr, className.c_str(), &known) != FALSE) {
        return nullptr;
    }
    const HINSTANCE self = GetModuleHandleW(nullptr);
    WNDCLASSW own{};
    own.lpfnWndProc = DefWindowProcW;
    own.hInstance = self;
    own.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    own.lpszClassName = className.c_str();
    // Fails harmlessly if an earlier window has registered the name.
    RegisterClassW(&own);
    return self;
}

}  // namespace

HWND CreateRecordedWindow(const WindowSpec& wanted) {
    const HWND window = CreateWindowExW(
        wanted.exStyle, wanted.className.c_str(), wanted.title.c_str(),
        wanted.style & ~static_cast<DWORD>(WS_VISIBLE), wanted.x, wanted.y, wanted.width,
        wanted.height, wanted.owner, nullptr, ClassModule(wanted.className), nullptr);
    if (window == nullptr) {
        return nullptr;
    }
    {
        // The handle may be a reused one; drop the old window's records.
        WindowRecords& all = Records();
        const std::scoped_lock lock(all.mutex);
        WindowRecord& record = all.records[window];
        record = WindowRecord{};
        record.colour = wanted.colour;
        record.originalProc = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
    }
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&RecordingProc));
    if (wanted.visible) {
        ShowWindow(window, SW_SHOWNA);
        UpdateWindow(window);
    }
    ForgetRecords(window);
    return window;
}

std::vector<PositionRequest> RecordedRequests(HWND window) {
    std::vector<PositionRequest> requests;
    WithRecord(window, [&](const WindowRecord& record) { requests = record.requests; });
    return requests;
}

std::vector<InputEvent> RecordedInput(HWND window) {
    std::vector<InputEvent> input;
    WithRecord(window, [&](const WindowRecord& record) { input = record.input; });
    return input;
}

void ForgetRecords(HWND window) {
    WithRecord(window, [](WindowRecord& record) {
        record.requests.clear();
        record.input.clear();
    });
}

void SetRefusing(HWND window, bool refusing) {
    WithRecord(window, [&](WindowRecord& record) { record.refusing = refusing; });
}

void SetDeathRequest(HWND window, long long n) {
    WithRecord(window, [&](WindowRecord& record) { record.requestsUntilDeath = n; });
}

}  // namespace morvane::test
