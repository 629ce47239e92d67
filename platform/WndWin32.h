// Private to the platform library on Windows: the objects bound to real windows.
#pragma once

#include "Dialogs.h"

// The object attached to `window`, or null.
CWnd *attachedObject(HWND window);
// The window is being destroyed: its object, if any, loses it.
void detachObject(HWND window);
