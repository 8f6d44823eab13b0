#include "program/scene.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "base/owners.h"
#include "base/win_shell.h"

namespace morvane::test {

std::string SettingsText(bool pinning, std::initializer_list<std::string_view> lines) {
    std::string text(SettingsComments);
    text += pinning ? "@pinning=1\n" : "@pinning=0\n";
    for (const std::string_view line : lines) {
        text.append(line).append("\n");
    }
    return text;
}

bool EditSettings(std::string_view bytes) {
    const std::wstring draft = DataFolder() + L"\\draft.txt";
    CreateDirectoryW(DataFolder().c_str(), nullptr);
    if (!WriteFileBytes(draft, bytes)) {
        return false;
    }
    // Refused for the moment in which the program reads the old file.
    return WaitUntil([&draft] {
        return MoveFileExW(draft.c_str(), SettingsPath().c_str(), MOVEFILE_REPLACE_EXISTING) !=
               FALSE;
    });
}

void ProgramTest::SetUp() {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    ResetProfile();
}

Program StartedProgram(const Environment& changes) {
    Program program(L"", changes);
    EXPECT_NE(program.WaitForControlWindow(), nullptr) << "no control window";
    return program;
}

bool BecomesTopmost(HWND window) {
    return WaitUntil([window] { return IsTopmost(window); });
}

bool BecomesOrdinary(HWND window) {
    return WaitUntil([window] { return !IsTopmost(window); });
}

std::optional<LRESULT> Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    // Neither 0 nor 1, so that an answer which was never given is not taken for one.
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
        std::count_if(requests.begin(), requests.end(), [](const PositionRequest& request) {
            return request.insertAfter == HWND_TOPMOST && (request.flags & SWP_NOZORDER) == 0;
        }));
}

Sentinel::Sentinel(Actor& actor)
    : actor_(&actor),
      window_(
          actor.Create({.title = L"Sentinel", .x = 1100, .y = 10, .width = 150, .height = 80})) {}

bool Sentinel::WaitForPin() const {
    return BecomesTopmost(window_);
}

bool Sentinel::WaitForRequests(std::size_t before) const {
    // The first request may come from a pass that was under way before; the second comes from a
    // later pass, and the third shows that this one is over.
    return WaitUntil([this, before] { return TopmostRequests(*actor_, window_) >= before + 3; });
}

bool Sentinel::WaitForPass(const Program& program) const {
    const std::size_t before = TopmostRequests(*actor_, window_);
    // Posted and not sent: a sent command would be carried out in the middle of a pass that waits
    // for a window's answer, which would then go on with what it had found before.
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

int RowOfTitle(std::wstring_view title) {
    std::vector<std::wstring> titles;
    for (const HWND window : TopLevelWindows()) {
        std::wstring text = WindowTitle(window);
        if (IsWindowVisible(window) != FALSE && GetWindow(window, GW_OWNER) == nullptr &&
            !text.empty()) {
            titles.push_back(std::move(text));
        }
    }
    std::sort(titles.begin(), titles.end());
    const auto found = std::find(titles.begin(), titles.end(), title);
    return found == titles.end() ? -1 : static_cast<int>(std::distance(titles.begin(), found));
}

std::vector<TrayCall> Balloons(const TrayRecorder& recorder) {
    std::vector<TrayCall> calls = recorder.Calls();
    calls.erase(std::remove_if(calls.begin(), calls.end(),
                               [](const TrayCall& call) { return (call.flags & NIF_INFO) == 0; }),
                calls.end());
    return calls;
}

TrayCall WaitForBalloon(const TrayRecorder& recorder, std::size_t seen) {
    const bool came = WaitUntil([&] { return Balloons(recorder).size() > seen; });
    return came ? Balloons(recorder).at(seen) : TrayCall{};
}

std::optional<Shortcut> ReadShortcut(const std::wstring& path) {
    const ComApartment apartment;
    IShellLinkW* newLink = nullptr;
    if (!apartment ||
        FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                reinterpret_cast<void**>(&newLink)))) {
        return std::nullopt;
    }
    const ComPointer<IShellLinkW> link(newLink);
    IPersistFile* newFile = nullptr;
    if (FAILED(newLink->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&newFile)))) {
        return std::nullopt;
    }
    const ComPointer<IPersistFile> file(newFile);
    if (FAILED(newFile->Load(path.c_str(), STGM_READ))) {
        return std::nullopt;
    }
    Shortcut shortcut;
    std::array<wchar_t, 1024> text{};
    const auto size = static_cast<int>(text.size());
    int iconIndex = 0;
    newLink->GetPath(text.data(), size, nullptr, SLGP_RAWPATH);
    shortcut.target = text.data();
    text.fill(L'\0');
    newLink->GetDescription(text.data(), size);
    shortcut.description = text.data();
    text.fill(L'\0');
    newLink->GetArguments(text.data(), size);
    shortcut.arguments = text.data();
    text.fill(L'\0');
    newLink->GetWorkingDirectory(text.data(), size);
    shortcut.workingFolder = text.data();
    text.fill(L'\0');
    newLink->GetIconLocation(text.data(), size, &iconIndex);
    shortcut.iconPath = text.data();
    newLink->GetShowCmd(&shortcut.showCommand);
    newLink->GetHotkey(&shortcut.hotKey);
    return shortcut;
}

}  // namespace morvane::test
