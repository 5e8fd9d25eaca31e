// SPDX-License-Identifier: MIT
#include "handler_walk.h"

#include <algorithm>
#include <new>
#include <utility>

namespace internal {

constinit handlerWalk* handlerWalk::c_innermost = nullptr;

handlerWalk::handlerWalk(const handlerMap& map)
    : m_map(map), m_count(map.size()), m_outer(c_innermost) {
  if (m_count > FEW) {
    m_many.reset(new (std::nothrow) place[m_count]);
    if (m_many != nullptr) {
      m_places = m_many.get();
    } else {
      m_count = FEW;  // no memory is left: calling the first few is better than none
    }
  }
  auto entry = map.begin();
  for (std::size_t i = 0; i < m_count; i++, entry++) {
    m_places[i] = {entry->first, entry->second};
  }
  c_innermost = this;
}

handlerWalk::~handlerWalk() {
  c_innermost = m_outer;
}

void handlerWalk::offer(eventReport& event) {
  for (std::size_t i = 0; i < m_count; i++) {
    const auto [priority, handler] = m_places[i];
    // The order matters: a destroyed handler must not be looked at.
    if (handler == nullptr || !registered({priority, handler}) || active(handler)) {
      continue;
    }
    m_current = handler;
    bool claimed = false;
    try {
      claimed = handler->handle(event);
    } catch (...) {  // NOLINT(bugprone-empty-catch): a report never stops its sender
    }
    m_current = nullptr;
    if (claimed) {
      break;
    }
  }
}

void handlerWalk::forget(const eventHandler* handler) {
  for (handlerWalk* walk = c_innermost; walk != nullptr; walk = walk->m_outer) {
    if (walk->m_current == handler) {
      walk->m_current = nullptr;
    }
    for (std::size_t i = 0; i < walk->m_count; i++) {
      if (walk->m_places[i].handler == handler) {
        walk->m_places[i].handler = nullptr;
      }
    }
  }
}

bool handlerWalk::active(const eventHandler* handler) const {
  for (const handlerWalk* walk = m_outer; walk != nullptr; walk = walk->m_outer) {
    if (walk->m_current == handler) {
      return true;
    }
  }
  return false;
}

bool handlerWalk::registered(const handlerMap::value_type& entry) const {
  const auto [first, last] = m_map.equal_range(entry.first);
  return std::find(first, last, entry) != last;
}

}  // namespace internal
