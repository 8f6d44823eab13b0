#include "bare/bare_pass.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

#include "base/owners.h"

namespace morvane::bare {

namespace {

constexpr int TitleCapacity = 512;
constexpr int ClassCapacity = 256;
constexpr UINT ZOrderOnly = SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW;

// Not cleared: a failed call returns a length of 0.
struct Texts {
    wchar_t title[TitleCapacity];
    wchar_t className[ClassCapacity];
};

int AskTitle(HWND window, Texts& texts) {
    return GetWindowTextW(window, texts.title, TitleCapacity);
}

// The length of the title; 0 for a window that is not a candidate.
int AskAll(HWND window, Texts& texts) {
    if (IsWindowVisible(window) == FALSE || GetWindow(window, GW_OWNER) != nullptr) {
        return 0;
    }
    GetClassNameW(window, texts.className, ClassCapacity);
    return AskTitle(window, texts);
}

BOOL CALLBACK AskEach(HWND window, LPARAM texts) {
    AskAll(window, *reinterpret_cast<Texts*>(texts));
    return TRUE;
}

struct MarkedSearch {
    Texts texts;
    wchar_t mark;
};

BOOL CALLBACK AskMarkedAgain(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<MarkedSearch*>(parameter);
    if (AskAll(window, search.texts) > 0 && search.texts.title[0] == search.mark) {
        AskTitle(window, search.texts);
    }
    return TRUE;
}

struct MarkedList {
    MarkedSearch search;
    std::span<HWND> found;
    std::size_t count;
};

BOOL CALLBACK CollectMarked(HWND window, LPARAM parameter) {
    auto& list = *reinterpret_cast<MarkedList*>(parameter);
    if (AskAll(window, list.search.texts) > 0 && list.search.texts.title[0] == list.search.mark &&
        list.count < list.found.size()) {
        list.found[list.count] = window;
        ++list.count;
    }
    return TRUE;
}

FileHandle OpenForReading(const wchar_t* path) {
    return FileHandle(CreateFileW(path, GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

}  // namespace

void LookAtWindows() {
    Texts texts;
    EnumWindows(AskEach, reinterpret_cast<LPARAM>(&texts));
}

void LookAtAndPin(const PinnedWindows& pinned) {
    MarkedSearch search;
    search.mark = pinned.mark;
    for (const HWND window : pinned.inOrder) {
        if (IsWindow(window) != FALSE) {
            AskAll(window, search.texts);
        }
    }
    EnumWindows(AskMarkedAgain, reinterpret_cast<LPARAM>(&search));
    for (const HWND window : pinned.inOrder) {
        if (IsWindow(window) == FALSE) {
            continue;
        }
        AskTitle(window, search.texts);
        RECT frame;
        if (IsWindow(window) != FALSE && IsIconic(window) == FALSE) {
            GetWindowRect(window, &frame);
        }
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, ZOrderOnly);
    }
}

std::size_t FindMarked(wchar_t mark, std::span<HWND> found) {
    MarkedList list;
    list.search.mark = mark;
    list.found = found;
    list.count = 0;
    EnumWindows(CollectMarked, reinterpret_cast<LPARAM>(&list));
    std::sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(list.count),
              [](HWND a, HWND b) {
                  return reinterpret_cast<std::uintptr_t>(a) < reinterpret_cast<std::uintptr_t>(b);
              });
    return list.count;
}

std::size_t ReadFileOnce(const wchar_t* path, std::span<char> buffer) {
    const FileHandle file = OpenForReading(path);
    std::size_t length = 0;
    DWORD count = 0;
    do {
        length += count;
        ReadFile(file.get(), buffer.data() + length, static_cast<DWORD>(buffer.size() - length),
                 &count, nullptr);
    } while (count > 0);
    return length;
}

std::size_t ReadAndConvertFile(const wchar_t* path) {
    const FileHandle file = OpenForReading(path);
    LARGE_INTEGER size{};
    GetFileSizeEx(file.get(), &size);
    const auto length = static_cast<std::size_t>(size.QuadPart);
    const auto bytes = std::make_unique_for_overwrite<char[]>(length);
    DWORD count = 0;
    ReadFile(file.get(), bytes.get(), static_cast<DWORD>(length), &count, nullptr);
    const auto text = std::make_unique_for_overwrite<wchar_t[]>(length);
    return static_cast<std::size_t>(MultiByteToWideChar(
        CP_UTF8, 0, bytes.get(), static_cast<int>(count), text.get(), static_cast<int>(length)));
}

}  // namespace morvane::bare
