#pragma once

// Predicts, independently of the program, which windows are topmost, where they are and how large,
// and the order of those pinned by the last pass.

#include <set>
#include <string>
#include <vector>

#include "base/win.h"
#include "pin/pin_list.h"

namespace morvane::test {

struct ModelWindow {
    HWND window = nullptr;
    std::size_t actor = 0;  // the process that has it
    std::wstring title;
    bool isDialog = false;  // has the system's dialog class
    bool visible = true;
    bool owned = false;
    bool minimised = false;
    bool topmost = false;
    int x = 0;  // outer frame, when restored
    int y = 0;
    int width = 0;
    int height = 0;
};

struct Model {
    std::vector<ModelWindow> windows;
    PinList list;                // as last read by the program
    std::set<HWND> remembered;   // pinned, and not forgotten or released since
    std::vector<HWND> expected;  // pinned by the last pass, highest first
};

// In failures: the number of its handle.
[[nodiscard]] std::string NameOf(HWND window);

// The list entry that pins the window; -1 if none does, or if it is invisible, owned, untitled or a
// protected dialog.
[[nodiscard]] int PinningEntry(const PinList& list, const ModelWindow& window);

// Predicts a pass that reads this list from the file.
void RunModelPass(Model& model, const PinList& found);

// Predicts the release of every remembered window, as when pinning is switched off and on exit.
void ReleaseModel(Model& model);

[[nodiscard]] ModelWindow* FindModelWindow(Model& model, HWND window);

// Describes the windows that differ from the model; empty if none does.
[[nodiscard]] std::string WindowDifferences(const Model& model);

// The same for the order of the windows pinned by the last pass.
[[nodiscard]] std::string OrderDifference(const Model& model);

// Describes every window, expected and actual, and the actual order.
[[nodiscard]] std::string Described(const Model& model);

}  // namespace morvane::test
