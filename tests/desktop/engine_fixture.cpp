#include "desktop/engine_fixture.h"

#include <array>
#include <cstdio>

#include "base/process.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/settings_sync.h"
#include "support/test_environment.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

void ResetEngine() {
    Process() = ProcessState{};
    PinEngine& engine = Engine();
    engine.ownClassName = ControlWindowClass;
    engine.ownWindow = nullptr;
    engine.settingsPath = SettingsPath();
    engine.pinList = PinList{};
    engine.pinnedWindows.clear();
}

std::string PlaceInWords(HWND insertAfter) {
    if (insertAfter == HWND_TOPMOST) {
        return "topmost";
    }
    if (insertAfter == HWND_NOTOPMOST) {
        return "notopmost";
    }
    return insertAfter == HWND_TOP ? "top" : "elsewhere";
}

}  // namespace

Requests Described(const std::vector<PositionRequest>& requests) {
    Requests all;
    all.reserve(requests.size());
    for (const PositionRequest& request : requests) {
        std::array<char, 64> numbers{};
        std::snprintf(numbers.data(), numbers.size(), " %d,%d %dx%d %04x", request.x, request.y,
                      request.cx, request.cy, request.flags);
        all.push_back(PlaceInWords(request.insertAfter) + numbers.data());
    }
    return all;
}

std::string GrowRequest(int x, int y, int width, int height) {
    return Described({{.x = x, .y = y, .cx = width, .cy = height, .flags = 0x0054}}).front();
}

void EngineTest::SetUp() {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    ResetProfile();
    ResetEngine();
}

void EngineTest::TearDown() {
    ResetEngine();
}

HWND EngineTest::Window(std::wstring_view title, int x) {
    WindowSpec spec;
    spec.title = title;
    spec.x = x;
    return actor_.Create(spec);
}

std::vector<HWND> EngineTest::OrderOfAPass(const std::vector<HWND>& windows) {
    for (const HWND window : windows) {
        actor_.ForgetRecords(window);
    }
    ApplyAll();
    return actor_.RequestedOrder(windows);
}

bool EngineTest::DesktopShows(const std::vector<HWND>& windows) {
    return test::DesktopShows(windows, ApplyAll);
}

void ApplySettings(std::string_view lines) {
    WriteSettings(lines);
    ApplyAll();
}

void LoadSettings(std::string_view lines) {
    WriteSettings(lines);
    ReloadSettings();
}

std::string FullSettings() {
    std::string lines;
    for (int index = 0; index < 100; ++index) {
        lines += "entry-" + std::to_string(index) + "\n";
    }
    return lines;
}

std::string WrittenSettings(std::string_view entryLines) {
    return std::string(SettingsHeader) + "@pinning=1\n" + std::string(entryLines);
}

}  // namespace morvane::test
