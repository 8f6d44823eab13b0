#include "desktop/control_stand_in.h"

#include <algorithm>
#include <exception>
#include <gtest/gtest.h>
#include <utility>

#include "ui/menu_rows.h"

namespace morvane::test {
namespace {

constexpr UINT_PTR WalkTimer = 77;
constexpr UINT WalkPeriod = 10;              // milliseconds
constexpr ULONGLONG WalkTimeLimit = 30'000;  // milliseconds

ControlStandIn* current = nullptr;

}  // namespace

std::function<void()> InTheEnd(std::function<void()> finish) {
    return [finish = std::move(finish), deadline = GetTickCount64() + WalkTimeLimit] {
        if (GetTickCount64() > deadline) {
            ADD_FAILURE() << "did not end on its own";
            finish();
        }
    };
}

ControlStandIn::ControlStandIn(const wchar_t* className) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = className;
    class_.reset(RegisterClassW(&windowClass) != 0 ? className : nullptr);
    current = this;
    window_ = MessageOnlyWindow(className);
    messages_.clear();
}

ControlStandIn::~ControlStandIn() {
    window_.reset();
    current = nullptr;
}

void ControlStandIn::Run(const std::function<void()>& blocking, std::vector<Step> steps,
                         const std::function<void()>& finish) {
    steps_ = std::move(steps);
    finish_ = finish;
    done_ = 0;
    deadline_ = GetTickCount64() + WalkTimeLimit;
    SetTimer(window_.get(), WalkTimer, WalkPeriod, nullptr);
    blocking();
    KillTimer(window_.get(), WalkTimer);
    EXPECT_EQ(done_, steps_.size()) << "steps";
    Pump();
}

void ControlStandIn::Walk() {
    // A step may dispatch messages and so reenter.
    if (walking_) {
        return;
    }
    walking_ = true;
    try {
        if (done_ < steps_.size() && steps_[done_]()) {
            ++done_;
        }
    } catch (const std::exception& error) {
        ADD_FAILURE() << "step " << done_ << ": " << error.what();
        deadline_ = 0;
    }
    if (done_ == steps_.size() || GetTickCount64() > deadline_) {
        finish_();
    }
    walking_ = false;
}

std::size_t ControlStandIn::Count(UINT id) const {
    return static_cast<std::size_t>(
        std::count_if(messages_.begin(), messages_.end(),
                      [id](const Message& message) { return message.id == id; }));
}

void ControlStandIn::Pump() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

LRESULT CALLBACK ControlStandIn::Procedure(HWND window, UINT message, WPARAM wParam,
                                           LPARAM lParam) {
    if (current == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_TIMER && wParam == WalkTimer) {
        current->Walk();
        return 0;
    }
    current->messages_.push_back({message, wParam});
    if (message == current->awaited_ && current->reaction_) {
        current->reaction_();
        return 0;
    }
    if (message == WM_MEASUREITEM &&
        MeasurePinItem(window, *reinterpret_cast<MEASUREITEMSTRUCT*>(lParam))) {
        return TRUE;
    }
    if (message == WM_DRAWITEM && DrawPinItem(*reinterpret_cast<DRAWITEMSTRUCT*>(lParam))) {
        return TRUE;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace morvane::test
