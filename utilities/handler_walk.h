// SPDX-License-Identifier: MIT
// The walk of one report through the handlers of a map.
#pragma once

#include <array>
#include <cstddef>
#include <memory>

#include "events.h"

namespace internal {

/// Calls the handlers that a map has when a report is offered, one after the other.
/// Handlers may come and go during the walk, and a handler may raise further reports: each
/// of those has its own walk, within this one.
class handlerWalk {
 public:
  /// Remembers the handlers that `map` has now.  The map must outlive the walk.
  explicit handlerWalk(const handlerMap& map);
  handlerWalk(const handlerWalk&) = delete;
  handlerWalk& operator=(const handlerWalk&) = delete;
  ~handlerWalk();

  /// Offers the report to each that is still there and is not handling one already, until
  /// one claims it.  A handler that throws has not claimed it.
  void offer(eventReport& event);

  /// Ensures that no walk calls a handler that is about to be destroyed.
  static void forget(const eventHandler* handler);

 private:
  bool active(const eventHandler* handler) const;
  bool registered(const handlerMap::value_type& entry) const;

  struct place {
    int priority;
    eventHandler* handler;  // null once it is gone
  };
  static constexpr std::size_t FEW = 16;  // so many need no memory

  const handlerMap& m_map;
  std::array<place, FEW> m_few;
  std::unique_ptr<place[]> m_many;
  place* m_places = m_few.data();
  std::size_t m_count;
  const eventHandler* m_current = nullptr;  // the one that is handling; null once it is gone
  handlerWalk* const m_outer;

  static handlerWalk* c_innermost;  // of the walks under way
};

}  // namespace internal
