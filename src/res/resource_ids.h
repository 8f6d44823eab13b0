#pragma once

// Numbers shared by morvane.rc and the program. Macros, because the resource compiler understands
// nothing else; keep this file free of C++.

#define IDI_MORVANE 101  // the icon, for LoadIconW
