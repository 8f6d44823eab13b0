#pragma once

#include "base/win.h"

// The real pointer and keyboard of the session: input goes through the system to whatever window is
// there, as it does for a user. Coordinates are screen pixels. Calls that cannot be
// carried out throw std::runtime_error.
namespace morvane::test {

enum class MouseButton { Left, Right };

// Returns once the session reports the pointer there.
void MovePointer(POINT to);
void PressButton(MouseButton button);
void ReleaseButton(MouseButton button);

// Approaches from the side, so that the target notices the pointer before the button; then presses
// and releases. The messages arrive a little later: wait for their effect.
void Click(POINT at, MouseButton button);

// Presses and releases a key, which goes to the window with the focus. An open menu takes keys only
// once it is on the screen: wait for it, and for the effect of each key.
void TapKey(WORD virtualKey);

}  // namespace morvane::test
