#pragma once

// What the windows must look like, predicted without the program: which are topmost, where and
// how large they are and in which order those lie that the last pass asked to the top.

#include <set>
#include <string>
#include <vector>

#include "base/win.h"
#include "pin/pin_list.h"

namespace morvane::test {

struct ModelWindow {
    HWND window = nullptr;
    std::size_t actor = 0;  // whose window it is
    std::wstring title;
    bool isDialog = false;  // of the system's dialog class
    bool visible = true;
    bool owned = false;
    bool minimised = false;
    bool topmost = false;
    int x = 0;  // of the restored window, outer frame
    int y = 0;
    int width = 0;
    int height = 0;
};

struct Model {
    std::vector<ModelWindow> windows;
    PinList list;                // as the program read it last
    std::set<HWND> remembered;   // made topmost by the program and not forgotten or released
    std::vector<HWND> expected;  // what the last pass asked to the top, highest first
};

// The part of a title that the program reads.
[[nodiscard]] std::wstring SeenTitle(const std::wstring& title);

// The entry of the list that the window is pinned by, or -1: for an invisible window, an owned one,
// one without a title and a protected dialog too.
[[nodiscard]] int PinningEntry(const PinList& list, const ModelWindow& window);

// One pass of the program that finds this list in the file.
void RunModelPass(Model& model, const PinList& found);

// What happens to every remembered window when pinning is switched off, and at the end.
void ReleaseModel(Model& model);

[[nodiscard]] ModelWindow* FindModelWindow(Model& model, HWND window);

// The windows that differ from what the model says, in words; empty when none does.
[[nodiscard]] std::string WindowDifferences(const Model& model);

// The same for the order of those that the last pass asked to the top.
[[nodiscard]] std::string OrderDifference(const Model& model);

// Every window as the model has it and as it is, and their order.
[[nodiscard]] std::string Described(const Model& model);

}  // namespace morvane::test
