#include "program/scene.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "support/notepad.h"

namespace morvane::test {

std::string SettingsText(bool pinning, std::string_view lines) {
    return std::string(SettingsHeader)
        .append(pinning ? "@pinning=1\n" : "@pinning=0\n")
        .append(lines);
}

void ProgramTest::SetUp() {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    ResetProfile();
}

void ProgramTest::TearDown() {
    EndNotepads();
}

Actor& ProgramTest::Other() {
    return other_ ? *other_ : other_.emplace();
}

HWND ProgramTest::Window(std::wstring_view title) {
    return Other().Create({.title = std::wstring(title)});
}

HWND ProgramTest::Window(std::wstring_view title, int width, int height) {
    return Other().Create({.title = std::wstring(title), .width = width, .height = height});
}

Program StartedProgram(std::string_view settings, const std::vector<HWND>& pinned) {
    if (!settings.empty()) {
        WriteSettings(settings);
    }
    Program program;
    EXPECT_NE(program.WaitForControlWindow(), nullptr) << "no control window";
    for (const HWND window : pinned) {
        EXPECT_TRUE(BecomesTopmost(window)) << WindowTitle(window);
    }
    return program;
}

bool BecomesTopmost(HWND window) {
    return WaitUntil([window] { return IsTopmost(window); });
}

bool BecomesOrdinary(HWND window) {
    return WaitUntil([window] { return !IsTopmost(window); });
}

std::optional<LRESULT> Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    // Neither 0 nor 1, so that a missing answer is not taken for one.
    DWORD_PTR result = 0xDEAD;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL,
                            static_cast<UINT>(DefaultTimeout.count()), &result) == 0) {
        return std::nullopt;
    }
    return static_cast<LRESULT>(result);
}

std::size_t TopmostRequests(Actor& actor, HWND window) {
    const std::vector<PositionRequest> requests = actor.Requests(window);
    return static_cast<std::size_t>(
        std::count_if(requests.begin(), requests.end(), IsTopmostRequest));
}

Sentinel::Sentinel(Actor& actor)
    : actor_(&actor),
      window_(
          actor.Create({.title = L"Sentinel", .x = 1100, .y = 10, .width = 150, .height = 80})) {}

bool Sentinel::WaitForRequests(std::size_t before) const {
    // The first request may come from a pass already running; the second comes from a later pass,
    // and the third shows that this one is over.
    return WaitUntil([this, before] { return TopmostRequests(*actor_, window_) >= before + 3; });
}

std::vector<PositionRequest> Sentinel::Raises() const {
    std::vector<PositionRequest> raises = actor_->Requests(window_);
    std::erase_if(raises,
                  [](const PositionRequest& request) { return !IsTopmostRequest(request); });
    return raises;
}

bool Sentinel::WaitForPass(const Program& program) const {
    const std::size_t before = TopmostRequests(*actor_, window_);
    // Posted, as a sent command would run in the middle of a pass that waits for a window, and that
    // pass would then go on with outdated state.
    for (int i = 0; i < 3; ++i) {
        if (!program.PostCommand(ApplyNowCommand)) {
            return false;
        }
    }
    return WaitForRequests(before);
}

bool Sentinel::WaitForTimedPass() const {
    return WaitForRequests(TopmostRequests(*actor_, window_));
}

std::vector<ULONGLONG> Sentinel::PassTicks() const {
    std::vector<ULONGLONG> ticks;
    for (const PositionRequest& raise : Raises()) {
        ticks.push_back(raise.tickCount);
    }
    return ticks;
}

std::size_t Sentinel::PassesBetween(LONGLONG after, LONGLONG before) const {
    const std::vector<PositionRequest> raises = Raises();
    return static_cast<std::size_t>(std::ranges::count_if(raises, [=](const auto& raise) {
        return raise.counter > after && raise.counter < before;
    }));
}

std::vector<HWND> Sentinel::OrderOfNextPass(const std::vector<HWND>& windows) const {
    const std::size_t before = Raises().size();
    // A pass may be running; the one after it begins later than this call.
    EXPECT_TRUE(WaitUntil([&] { return Raises().size() >= before + 2; })) << "no pass";
    const std::vector<PositionRequest> raises = Raises();
    return raises.size() < before + 2 ? std::vector<HWND>()
                                      : actor_->RequestedOrder(windows, raises[before].counter,
                                                               raises[before + 1].counter);
}

bool Sentinel::DesktopShows(const std::vector<HWND>& windows) const {
    return test::DesktopShows(windows, [this] {
        const std::size_t before = Raises().size();
        EXPECT_TRUE(WaitUntil([&] { return Raises().size() > before; })) << "no further pass";
    });
}

void Sentinel::ExpectPassesTwiceASecond(const char* when) const {
    using namespace std::chrono_literals;
    constexpr std::size_t Gaps = 10;
    // The timer's period is 500 ms. A busy machine delays passes: the gap after a late one is
    // short, but the mean is not, and a single long gap does not count in the median.
    constexpr ULONGLONG ShortestMean = 450;
    constexpr ULONGLONG LongestMedian = 650;
    actor_->ForgetRecords(window_);
    ASSERT_TRUE(WaitUntil([&] { return PassTicks().size() > Gaps; }, 60s)) << "too few passes";
    const std::vector<ULONGLONG> ticks = PassTicks();
    std::vector<ULONGLONG> gaps;
    for (std::size_t i = 1; i < ticks.size(); ++i) {
        gaps.push_back(ticks[i] - ticks[i - 1]);
    }
    std::sort(gaps.begin(), gaps.end());
    const ULONGLONG median = gaps[gaps.size() / 2];
    const ULONGLONG mean = (ticks.back() - ticks.front()) / gaps.size();
    std::printf(
        "measured: pass -> pass, %s: %zu gaps, min %llu, median %llu, mean %llu, max %llu ms\n",
        when, gaps.size(), gaps.front(), median, mean, gaps.back());
    EXPECT_GE(mean, ShortestMean) << when;
    EXPECT_LE(median, LongestMedian) << when;
}

int RowOfTitle(std::wstring_view title) {
    const std::vector<std::wstring> titles = RowTitles();
    const auto found = std::find(titles.begin(), titles.end(), title);
    return found == titles.end() ? -1 : static_cast<int>(std::distance(titles.begin(), found));
}

bool SendRowCommand(const Program& program, WORD firstCommand, std::wstring_view title) {
    const int row = RowOfTitle(title);
    return row >= 0 && program.SendCommand(static_cast<WORD>(firstCommand + row));
}

std::vector<TrayCall> Balloons(const TrayRecorder& recorder) {
    std::vector<TrayCall> calls = recorder.Calls();
    calls.erase(std::remove_if(calls.begin(), calls.end(),
                               [](const TrayCall& call) { return (call.flags & NIF_INFO) == 0; }),
                calls.end());
    return calls;
}

void ExpectBalloon(const TrayRecorder& recorder, const wchar_t* text, DWORD kind,
                   std::size_t seen) {
    ASSERT_TRUE(WaitUntil([&] { return Balloons(recorder).size() > seen; })) << "no balloon";
    const TrayCall balloon = Balloons(recorder).at(seen);
    EXPECT_EQ(balloon.infoTitle, L"Morvane");
    EXPECT_EQ(balloon.info, text);
    EXPECT_EQ(balloon.infoFlags, kind);
}

}  // namespace morvane::test
