#include "desktop/engine_fixture.h"

#include <algorithm>

#include "base/process.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/settings_sync.h"
#include "support/test_environment.h"
#include "support/wait.h"
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

std::string HexOf(UINT flags) {
    constexpr const char* Digits = "0123456789abcdef";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += Digits[(flags >> static_cast<UINT>(shift)) & 0xFU];
    }
    return text;
}

}  // namespace

std::vector<std::string> Described(const std::vector<PositionRequest>& requests) {
    std::vector<std::string> all;
    all.reserve(requests.size());
    for (const PositionRequest& request : requests) {
        all.push_back(PlaceInWords(request.insertAfter) + " " + std::to_string(request.x) + "," +
                      std::to_string(request.y) + " " + std::to_string(request.cx) + "x" +
                      std::to_string(request.cy) + " " + HexOf(request.flags));
    }
    return all;
}

std::string GrowRequest(int x, int y, int width, int height) {
    return Described({{.x = x, .y = y, .cx = width, .cy = height, .flags = 0x0054}}).front();
}

std::vector<HWND> InDesktopOrder(const std::vector<HWND>& windows) {
    std::vector<HWND> all = TopLevelWindows();
    const auto foreign = [&windows](HWND window) {
        return std::find(windows.begin(), windows.end(), window) == windows.end();
    };
    all.erase(std::remove_if(all.begin(), all.end(), foreign), all.end());
    return all;
}

bool PassesOrder(const std::vector<HWND>& windows) {
    return WaitUntil([&windows] {
        ApplyAll();
        return InDesktopOrder(windows) == windows;
    });
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

void ApplySettings(std::string_view lines) {
    ASSERT_TRUE(WriteSettings(lines));
    ApplyAll();
}

void LoadSettings(std::string_view lines) {
    ASSERT_TRUE(WriteSettings(lines));
    ReloadSettings();
}

std::string FullSettings() {
    std::string lines;
    for (std::size_t index = 0; index < MaxPinEntries; ++index) {
        lines += "entry-" + std::to_string(index) + "\n";
    }
    return lines;
}

std::string WrittenSettings(std::string_view entryLines) {
    return std::string(SettingsHeader) + "@pinning=1\n" + std::string(entryLines);
}

}  // namespace morvane::test
