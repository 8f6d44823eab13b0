#include "support/tray_recorder.h"

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "support/test_files.h"
#include "support/window_state.h"

namespace morvane::test {

struct TrayRecorder::Shared {
    mutable std::mutex mutex;
    std::vector<TrayCall> calls;
    int refusals = 0;
    HWND watchedWindow = nullptr;
    std::wstring watchedPath;
    std::atomic<HWND> window = nullptr;
    std::atomic<bool> failed = false;
    std::thread thread;
};

namespace {

constexpr const wchar_t* TaskbarClass = L"Shell_TrayWnd";

// The struct that Wine's shell32 sends: window handles travel as 32-bit numbers.
struct TrayMessage {
    std::uint32_t window;
    std::uint32_t id;
    std::uint32_t flags;
    std::uint32_t callbackMessage;
    std::array<wchar_t, 128> tip;
    std::uint32_t state;
    std::uint32_t stateMask;
    std::array<wchar_t, 256> info;
    std::uint32_t timeout;
    std::array<wchar_t, 64> infoTitle;
    std::uint32_t infoFlags;
    GUID item;
    std::uint32_t iconWidth;
    std::uint32_t iconHeight;
    std::uint32_t iconPlanes;
    std::uint32_t iconBitsPerPixel;
};
static_assert(offsetof(TrayMessage, info) == 280 && offsetof(TrayMessage, infoTitle) == 796 &&
              offsetof(TrayMessage, infoFlags) == 924 && sizeof(TrayMessage) == 960);

template <std::size_t Size>
std::wstring TextOf(const std::array<wchar_t, Size>& buffer) {
    const std::wstring_view all(buffer.data(), buffer.size());
    return std::wstring(all.substr(0, all.find(L'\0')));
}

// FNV-1a: the same picture gives the same number in every process and on every run.
std::uint64_t HashOf(const unsigned char* bytes, std::size_t count) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (std::size_t i = 0; i < count; ++i) {
        hash = (hash ^ bytes[i]) * 0x100000001B3U;
    }
    return hash;
}

TrayCall CallFrom(const COPYDATASTRUCT& data) {
    TrayMessage message{};
    std::memcpy(&message, data.lpData, sizeof(message));
    TrayCall call;
    call.message = static_cast<DWORD>(data.dwData);
    call.window = reinterpret_cast<HWND>(static_cast<INT_PTR>(message.window));
    call.id = message.id;
    call.flags = message.flags;
    call.callbackMessage = message.callbackMessage;
    call.tip = TextOf(message.tip);
    call.state = message.state;
    call.stateMask = message.stateMask;
    call.info = TextOf(message.info);
    call.timeout = message.timeout;
    call.infoTitle = TextOf(message.infoTitle);
    call.infoFlags = message.infoFlags;
    call.iconWidth = static_cast<int>(message.iconWidth);
    call.iconHeight = static_cast<int>(message.iconHeight);
    // Mask and colours follow the struct.
    if (data.cbData > sizeof(message)) {
        call.pictureHash = HashOf(static_cast<const unsigned char*>(data.lpData) + sizeof(message),
                                  data.cbData - sizeof(message));
    }
    return call;
}

LRESULT RecordCall(TrayRecorder::Shared& shared, const COPYDATASTRUCT& data) {
    if (data.cbData < sizeof(TrayMessage)) {
        return FALSE;
    }
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    const std::scoped_lock lock(shared.mutex);
    TrayCall call = CallFrom(data);
    call.arrival = now.QuadPart;
    call.watchedWindowTopmost = shared.watchedWindow != nullptr && IsTopmost(shared.watchedWindow);
    call.watchedPathExists = !shared.watchedPath.empty() && PathExists(shared.watchedPath);
    shared.calls.push_back(std::move(call));
    if (shared.refusals > 0) {
        --shared.refusals;
        return FALSE;
    }
    return TRUE;
}

LRESULT CALLBACK TaskbarProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* shared =
        reinterpret_cast<TrayRecorder::Shared*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_COPYDATA && shared != nullptr) {
        return RecordCall(*shared, *reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    }
    if (message == WM_CLOSE) {
        DestroyWindow(window);
        return 0;
    }
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void RunTaskbar(TrayRecorder::Shared& shared) {
    const HINSTANCE self = GetModuleHandleW(nullptr);
    WNDCLASSW taskbarClass{};
    taskbarClass.lpfnWndProc = TaskbarProc;
    taskbarClass.hInstance = self;
    taskbarClass.lpszClassName = TaskbarClass;
    // Fails harmlessly if an earlier recorder has registered it.
    RegisterClassW(&taskbarClass);
    // Topmost, so that it is found before the shell's own taskbar. Never shown and untitled, so
    // that the program under test ignores it.
    const HWND window = CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, TaskbarClass, L"",
                                        WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, self, nullptr);
    if (window == nullptr) {
        shared.failed = true;
        return;
    }
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&shared));
    shared.window = window;
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
}

}  // namespace

TrayRecorder::TrayRecorder() : shared_(std::make_unique<Shared>()) {
    Shared& shared = *shared_;
    shared.thread = std::thread([&shared] { RunTaskbar(shared); });
    while (shared.window == nullptr && !shared.failed) {
        std::this_thread::yield();
    }
    const bool found = FindWindowExW(nullptr, nullptr, TaskbarClass, nullptr) == shared.window;
    if (shared.failed || !found) {
        PostMessageW(shared.window, WM_CLOSE, 0, 0);
        shared.thread.join();
        throw std::runtime_error("the taskbar cannot be replaced");
    }
}

TrayRecorder::~TrayRecorder() {
    PostMessageW(shared_->window, WM_CLOSE, 0, 0);
    shared_->thread.join();
}

std::vector<TrayCall> TrayRecorder::Calls() const {
    const std::scoped_lock lock(shared_->mutex);
    return shared_->calls;
}

void TrayRecorder::Forget() {
    const std::scoped_lock lock(shared_->mutex);
    shared_->calls.clear();
}

void TrayRecorder::RefuseNext(int count) {
    const std::scoped_lock lock(shared_->mutex);
    shared_->refusals = count;
}

void TrayRecorder::Watch(HWND window, const std::wstring& path) {
    const std::scoped_lock lock(shared_->mutex);
    shared_->watchedWindow = window;
    shared_->watchedPath = path;
}

}  // namespace morvane::test
