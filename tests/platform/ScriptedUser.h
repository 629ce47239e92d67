// The person at the screen, scripted for tests: installed as the process-wide user for the
// life of the object, it records every event and answers from what the test queued.
#pragma once

#include "platform/WindowApi.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

class ScriptedUser {
public:
  struct Event {
    int32_t kind;
    TukWindow window;
    std::string text;
    std::string caption;
    uint32_t flags;
    bool operator==(const Event &o) const {
      return kind == o.kind && window == o.window && text == o.text && caption == o.caption &&
             flags == o.flags;
    }
    friend void PrintTo(const Event &e, std::ostream *out) {
      *out << e.kind << " on " << e.window << ": \"" << e.text << "\", \"" << e.caption << "\", "
           << e.flags;
    }
  };
  ScriptedUser() { tukSetUser(&answer, this); }
  ~ScriptedUser() { tukSetUser(nullptr, nullptr); }
  ScriptedUser(const ScriptedUser &) = delete;
  ScriptedUser &operator=(const ScriptedUser &) = delete;
  // Message boxes take the queued answers in turn; with none left, Cancel.
  std::deque<int32_t> boxAnswers;
  // The picker takes the queued folders in turn; an empty one, or none left, cancels.
  std::deque<std::string> folders;
  // What the person does with a modal dialog while it is up; nothing when unset.
  std::function<void(TukWindow dialog)> onModal;
  std::vector<Event> events;
  size_t count(int32_t kind) const {
    return static_cast<size_t>(std::count_if(events.begin(), events.end(),
                                             [kind](const Event &e) { return e.kind == kind; }));
  }
  const Event *last(int32_t kind) const {
    for (auto it = events.rbegin(); it != events.rend(); ++it)
      if (it->kind == kind)
        return &*it;
    return nullptr;
  }

private:
  static int32_t answer(void *context, const TukUserEvent *event) {
    auto &user = *static_cast<ScriptedUser *>(context);
    user.events.push_back({event->kind, event->window, event->text, event->caption, event->flags});
    switch (event->kind) {
    case TUK_USER_MESSAGE_BOX:
      return user.next(user.boxAnswers, int32_t{TUK_ID_CANCEL});
    case TUK_USER_FOLDER_PICKER: {
      const std::string folder = user.next(user.folders, std::string());
      if (folder.empty() || folder.size() >= event->folderCapacity)
        return 0;
      std::memcpy(event->folder, folder.c_str(), folder.size() + 1);
      return 1;
    }
    case TUK_USER_MODAL_DIALOG:
      if (user.onModal)
        user.onModal(event->window);
      return 0;
    default:
      return 0;
    }
  }
  template <class T> static T next(std::deque<T> &queue, T otherwise) {
    if (queue.empty())
      return otherwise;
    T value = queue.front();
    queue.pop_front();
    return value;
  }
};

// Small readers over the C API.
inline std::string windowText(TukWindow window) {
  const int32_t length = tukWindowGetText(window, nullptr, 0);
  if (length < 0)
    return "<no window>";
  std::string text(static_cast<size_t>(length) + 1, '\0');
  tukWindowGetText(window, text.data(), length + 1);
  text.resize(static_cast<size_t>(length));
  return text;
}

inline TukWindowInfo windowInfo(TukWindow window) {
  TukWindowInfo info{};
  tukWindowGetInfo(window, &info);
  return info;
}

inline std::vector<TukWindow> childWindows(TukWindow parent) {
  std::vector<TukWindow> children(
      static_cast<size_t>(std::max(tukWindowChildren(parent, nullptr, 0), 0)));
  tukWindowChildren(parent, children.data(), static_cast<int32_t>(children.size()));
  return children;
}
