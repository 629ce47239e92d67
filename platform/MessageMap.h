// MessageMap: the table by which a window class names the handlers of its messages.
//
// A class's map lists entries made with the helpers below and points at its base class's map;
// a message goes to the first entry that matches, searching from the most derived class. The
// helpers bind a member function by its type, so no handler is ever cast:
//
//   const MessageMap *CMyDialog::GetMessageMap() const {
//     static const MessageMapEntry entries[] = {commandEntry<&CMyDialog::onBrowse>(1001),
//                                               sizeEntry<&CMyDialog::OnSize>()};
//     static const MessageMap map = {CDialog::GetMessageMap(), entries, std::size(entries)};
//     return &map;
//   }
#pragma once

#include "Window.h"

#include <cstddef>

class CWnd;

typedef LRESULT (*MessageHandler)(CWnd &window, WPARAM wParam, LPARAM lParam);

struct MessageMapEntry {
  UINT message;
  UINT id; // WM_COMMAND: the control id; 0 for other messages
  MessageHandler handler;
};

struct MessageMap {
  const MessageMap *base; // null for CWnd's, the end of the chain
  const MessageMapEntry *entries;
  size_t count;
};

namespace message_map_detail {
template <class Member> struct ClassOf;
template <class Class, class Type> struct ClassOf<Type Class::*> { using type = Class; };
template <auto Handler> using HandlerClass = typename ClassOf<decltype(Handler)>::type;
} // namespace message_map_detail

// WM_COMMAND from control `id` (a click): void Handler().
template <auto Handler> MessageMapEntry commandEntry(UINT id) {
  using Class = message_map_detail::HandlerClass<Handler>;
  return {WM_COMMAND, id, [](CWnd &window, WPARAM, LPARAM) -> LRESULT {
            (static_cast<Class &>(window).*Handler)();
            return 0;
          }};
}

// WM_SIZE: void Handler(UINT type, int clientWidth, int clientHeight).
template <auto Handler> MessageMapEntry sizeEntry() {
  using Class = message_map_detail::HandlerClass<Handler>;
  return {WM_SIZE, 0, [](CWnd &window, WPARAM wParam, LPARAM lParam) -> LRESULT {
            const auto size = static_cast<uintptr_t>(lParam);
            (static_cast<Class &>(window).*Handler)(static_cast<UINT>(wParam),
                                                    static_cast<int>(size & 0xFFFF),
                                                    static_cast<int>((size >> 16) & 0xFFFF));
            return 0;
          }};
}

// WM_GETMINMAXINFO: void Handler(MINMAXINFO *limits).
template <auto Handler> MessageMapEntry minMaxInfoEntry() {
  using Class = message_map_detail::HandlerClass<Handler>;
  return {WM_GETMINMAXINFO, 0, [](CWnd &window, WPARAM, LPARAM lParam) -> LRESULT {
            (static_cast<Class &>(window).*Handler)(reinterpret_cast<MINMAXINFO *>(lParam));
            return 0;
          }};
}

// WM_HELP: BOOL Handler(HELPINFO *info).
template <auto Handler> MessageMapEntry helpEntry() {
  using Class = message_map_detail::HandlerClass<Handler>;
  return {WM_HELP, 0, [](CWnd &window, WPARAM, LPARAM lParam) -> LRESULT {
            return (static_cast<Class &>(window).*Handler)(reinterpret_cast<HELPINFO *>(lParam));
          }};
}

// WM_INITDIALOG: BOOL Handler().
template <auto Handler> MessageMapEntry initDialogEntry() {
  using Class = message_map_detail::HandlerClass<Handler>;
  return {WM_INITDIALOG, 0, [](CWnd &window, WPARAM, LPARAM) -> LRESULT {
            return (static_cast<Class &>(window).*Handler)();
          }};
}
