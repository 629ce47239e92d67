// Private to the platform library: asking the process-wide user (WindowApi.h).
#pragma once

#include "WindowApi.h"

bool userInstalled();
// The callback's answer, with `answered` true; 0 with `answered` false when no user is
// installed.
int32_t askUser(const TukUserEvent &event, bool &answered);
