#include "support/tray_recorder.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "support/import_patch.h"
#include "support/test_files.h"
#include "support/tray_relay.h"
#include "support/window_state.h"

namespace morvane::test {

struct TrayRecorder::Shared {
    mutable std::mutex mutex;
    std::vector<TrayCall> calls;
    int refusals = 0;
    std::wstring watchedPath;
    std::atomic<HWND> window = nullptr;
    std::atomic<bool> failed = false;
    std::thread thread;
    ImportPatch<decltype(&Shell_NotifyIconW)> patch{"Shell_NotifyIconW", RelayTrayCall};
};

namespace {

constexpr const wchar_t* RecorderClass = L"MorvaneTrayRecorder";

TrayCall CallFrom(const RelayedTrayCall& relayed) {
    const NOTIFYICONDATAW& data = relayed.data;
    TrayCall call;
    call.message = relayed.message;
    call.size = data.cbSize;
    call.window = data.hWnd;
    call.id = data.uID;
    call.flags = data.uFlags;
    call.callbackMessage = data.uCallbackMessage;
    call.icon = data.hIcon;
    call.tip = data.szTip;
    call.state = data.dwState;
    call.stateMask = data.dwStateMask;
    call.info = data.szInfo;
    call.timeout = data.uTimeout;
    call.infoTitle = data.szInfoTitle;
    call.infoFlags = data.dwInfoFlags;
    call.item = data.guidItem;
    call.balloonIcon = data.hBalloonIcon;
    return call;
}

LRESULT RecordCall(TrayRecorder::Shared& shared, const COPYDATASTRUCT& data) {
    RelayedTrayCall relayed;
    if (data.cbData != sizeof(relayed)) {
        return FALSE;
    }
    std::memcpy(&relayed, data.lpData, sizeof(relayed));
    const std::scoped_lock lock(shared.mutex);
    TrayCall call = CallFrom(relayed);
    call.watchedPathExists = !shared.watchedPath.empty() && PathExists(shared.watchedPath);
    shared.calls.push_back(std::move(call));
    if (shared.refusals > 0) {
        --shared.refusals;
        return FALSE;
    }
    return TRUE;
}

LRESULT CALLBACK RecorderProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
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

void RunRecorder(TrayRecorder::Shared& shared) {
    const HINSTANCE self = GetModuleHandleW(nullptr);
    WNDCLASSW recorderClass{};
    recorderClass.lpfnWndProc = RecorderProc;
    recorderClass.hInstance = self;
    recorderClass.lpszClassName = RecorderClass;
    // Fails harmlessly if an earlier recorder has registered it.
    RegisterClassW(&recorderClass);
    const HWND window =
        CreateWindowExW(0, RecorderClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, self, nullptr);
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
    shared.thread = std::thread([&shared] { RunRecorder(shared); });
    while (shared.window == nullptr && !shared.failed) {
        std::this_thread::yield();
    }
    if (shared.failed) {
        shared.thread.join();
        throw std::runtime_error("the tray cannot be recorded");
    }
    const auto handle = reinterpret_cast<std::uintptr_t>(shared.window.load());
    SetEnvironmentVariableW(TrayRecorderVariable, std::to_wstring(handle).c_str());
}

TrayRecorder::~TrayRecorder() {
    SetEnvironmentVariableW(TrayRecorderVariable, nullptr);
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

void TrayRecorder::Watch(const std::wstring& path) {
    const std::scoped_lock lock(shared_->mutex);
    shared_->watchedPath = path;
}

}  // namespace morvane::test
