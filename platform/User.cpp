// The process-wide user: the one callback that answers for the person at the screen.
#include "User.h"

namespace {

TukUserCallback userCallback = nullptr;
void *userContext = nullptr;

} // namespace

void tukSetUser(TukUserCallback callback, void *context) {
  userCallback = callback;
  userContext = context;
}

bool userInstalled() {
  return userCallback != nullptr;
}

int32_t askUser(const TukUserEvent &event, bool &answered) {
  // Taken first: the callback may install another user while it runs.
  const TukUserCallback callback = userCallback;
  answered = callback != nullptr;
  return callback != nullptr ? callback(userContext, &event) : 0;
}
