// "Open settings": the file is created if missing, reread, and actually opened in Notepad.

#include "shell/settings_editor.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/win_shell.h"
#include "desktop/engine_fixture.h"
#include "pin/engine.h"
#include "support/import_patch.h"
#include "support/notepad.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/wait.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

std::wstring TextOf(HWND window) {
    std::wstring text(5000, L'\0');
    const LRESULT length =
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Editors differ in how they end lines.
std::wstring WithoutLineEnds(std::wstring text) {
    std::erase_if(text, [](wchar_t unit) { return unit == L'\r' || unit == L'\n'; });
    return text;
}

// Whether any control inside the window has the text.
bool Shows(HWND window, const std::wstring& text) {
    struct Search {
        std::wstring text;
        bool found = false;
    };
    Search search{WithoutLineEnds(text)};
    EnumChildWindows(
        window,
        [](HWND child, LPARAM parameter) -> BOOL {
            auto* const wanted = reinterpret_cast<Search*>(parameter);
            wanted->found = WithoutLineEnds(TextOf(child)) == wanted->text;
            return wanted->found ? FALSE : TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::wstring Widened(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

struct EditorStart {
    HWND owner;
    std::wstring verb;
    std::wstring file;
    std::wstring parameters;
    LPCWSTR folder;
    int show;
};

std::vector<EditorStart> editorStarts;

HINSTANCE WINAPI RecordStart(HWND owner, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters,
                             LPCWSTR folder, INT show) {
    editorStarts.push_back({owner, verb == nullptr ? L"" : verb, file, parameters, folder, show});
    return nullptr;
}

class SettingsEditorTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ASSERT_TRUE(com_);
        ResetProfile();
        Engine() = PinEngine{};
        ASSERT_TRUE(NotepadWindows().empty());
    }
    void TearDown() override {
        EndNotepads();
        Engine() = PinEngine{};
    }

    // The only running Notepad, once it shows this text; null if it does not.
    [[nodiscard]] static HWND EditorShowing(const std::string& text) {
        const auto shows = [&text] {
            const std::vector<HWND> editors = NotepadWindows();
            return editors.size() == 1 && Shows(editors[0], Widened(text));
        };
        return WaitUntil(shows) ? NotepadWindows().front() : nullptr;
    }

private:
    ComApartment com_;
};

TEST_F(SettingsEditorTest, MissingFileIsWrittenWithTheCurrentList) {
    EXPECT_TRUE(EnsureSettingsFile());
    EXPECT_EQ(ReadSettings(), WrittenSettings(""));
    EXPECT_EQ(Engine().settingsPath, SettingsPath());
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    Engine().pinList = {.pinning = false,
                        .entries = {{.pattern = L"alpha", .minWidth = 0, .minHeight = 600}}};
    EXPECT_TRUE(EnsureSettingsFile());
    EXPECT_EQ(ReadSettings(), std::string(SettingsHeader) + "@pinning=0\nalpha\t0\t600\n");
}

TEST_F(SettingsEditorTest, ExistingFileIsLeftAlone) {
    WriteSettings("mine\r\n");
    EXPECT_TRUE(EnsureSettingsFile());
    EXPECT_EQ(ReadSettings(), "mine\r\n");
    WriteSettings("");
    EXPECT_TRUE(EnsureSettingsFile());
    EXPECT_EQ(ReadSettings(), "");
}

TEST_F(SettingsEditorTest, NotepadShowsTheFileAndItIsReadAgain) {
    const std::string text = "# mine\nalpha 640 480\n";
    WriteSettings(text);
    Engine().pinList.entries = {{.pattern = L"stale"}};
    OpenSettings();
    const HWND editor = EditorShowing(text);
    ASSERT_NE(editor, nullptr);
    EXPECT_NE(WindowTitle(editor).find(L"config.txt"), std::wstring::npos);
    EXPECT_EQ(ReadSettings(), text);
    ASSERT_EQ(Engine().pinList.entries.size(), 1U);
    EXPECT_EQ(Engine().pinList.entries[0].pattern, L"alpha");
    EXPECT_EQ(Engine().pinList.entries[0].minWidth, 640);
}

TEST_F(SettingsEditorTest, DeletedFileIsRewrittenBeforeNotepadOpensItAtAPathWithBlanks) {
    const std::wstring profile = TestPath(L"A user with blanks");
    CreateDirectoryW(profile.c_str(), nullptr);
    {
        const ShellFolderOverride redirected(L"AppData", profile);
        Engine().pinList.entries = {{.pattern = L"alpha"}};
        OpenSettings();
        EXPECT_EQ(ReadSettings(), WrittenSettings("alpha\n"));
        EXPECT_NE(EditorShowing(WrittenSettings("alpha\n")), nullptr);
        EXPECT_EQ(Engine().pinList.entries.size(), 1U);
        EndNotepads();
        RemoveDataFolder();
    }
    EXPECT_NE(RemoveDirectoryW(profile.c_str()), FALSE);
}

TEST_F(SettingsEditorTest, EditorIsStartedVisibleWithoutOwnerOrFolder) {
    const ImportPatch<decltype(&ShellExecuteW)> patch("ShellExecuteW", RecordStart);
    editorStarts.clear();
    OpenInEditor(L"C:\\a b.txt");
    ASSERT_EQ(editorStarts.size(), 1U);
    const EditorStart& start = editorStarts[0];
    EXPECT_EQ(start.owner, nullptr);
    EXPECT_EQ(start.verb, L"open");
    std::array<wchar_t, MAX_PATH> system{};
    GetSystemDirectoryW(system.data(), MAX_PATH);
    EXPECT_EQ(start.file, std::wstring(system.data()) + L"\\notepad.exe");
    EXPECT_EQ(start.parameters, L"\"C:\\a b.txt\"");
    EXPECT_EQ(start.folder, nullptr);
    EXPECT_EQ(start.show, SW_SHOW);
}

TEST_F(SettingsEditorTest, DirectoryInPlaceOfTheFileCountsAsExisting) {
    const ImportPatch<decltype(&ShellExecuteW)> patch("ShellExecuteW", RecordStart);
    editorStarts.clear();
    ASSERT_NE(CreateDirectoryW(DataFolder().c_str(), nullptr), FALSE);
    ASSERT_NE(CreateDirectoryW(SettingsPath().c_str(), nullptr), FALSE);
    EXPECT_TRUE(EnsureSettingsFile());
    Engine().pinList.entries = {{.pattern = L"stale"}};
    OpenSettings();
    EXPECT_TRUE(Engine().pinList.entries.empty());
    EXPECT_EQ(editorStarts.size(), 1U) << "still started";
    EXPECT_NE(RemoveDirectoryW(SettingsPath().c_str()), FALSE) << "must still be empty";
}

TEST_F(SettingsEditorTest, WithoutASettingsPathNoEditorIsStarted) {
    const ImportPatch<decltype(&ShellExecuteW)> patch("ShellExecuteW", RecordStart);
    editorStarts.clear();
    Engine().pinList = {.pinning = false, .entries = {{.pattern = L"stale"}}};
    const ShellFolderOverride redirected(L"AppData", L"Q:\\nowhere");
    OpenSettings();
    OpenInEditor(L"");
    EXPECT_TRUE(editorStarts.empty());
    EXPECT_TRUE(Engine().pinList.pinning);
    EXPECT_TRUE(Engine().pinList.entries.empty());
}

}  // namespace
}  // namespace morvane::test
