#pragma once

// The shell's headers, which rely on the Windows headers having come before.

#include "base/win.h"

#include <shellapi.h>
#include <shlobj.h>
