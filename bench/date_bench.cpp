// SPDX-License-Identifier: MIT
// Writes and reads a time of day.

#include <fmt/chrono.h>

#include <ctime>

#include "datetime.h"
#include "library.h"

namespace {

constexpr std::time_t someTime = 1795203107;  // 2026-11-20T19:31:47Z

// Many times of the day, so that no result is ready.
template <class Time, class Make>
std::vector<Time> times(const Make& make) {
  std::vector<Time> result;
  for (int i = 0; i < 1024; i++) {
    result.push_back(make(i * 83));
  }
  return result;
}

template <class Time>
class cycle {
 public:
  explicit cycle(std::vector<Time> times) : m_times(std::move(times)) {}
  const Time& next() { return m_times[m_turn++ % m_times.size()]; }

 private:
  std::vector<Time> m_times;
  std::size_t m_turn = 0;
};

cycle<std::time_t> someTimes() {
  return cycle(times<std::time_t>([](int seconds) { return someTime + seconds; }));
}

}  // namespace

void addDateBenchmarks() {
  const std::vector<std::size_t> once = {1};
  const char* task = "date, format";
  add(task, "hoplaunch", once, [](std::size_t) {
    const DateTime first("2026-11-20T19:31:47");
    return [list = cycle(times<DateTime>([&first](int seconds) {
              return first + seconds;
            }))]() mutable { return list.next().format(DS_ISO8601); };
  });
  add(task, "{fmt}", once, [](std::size_t) {
    return [list = someTimes()]() mutable {
      return fmt::format("{:%Y%m%dT%H%M%S}", fmt::gmtime(list.next()));
    };
  });
  add(task, "strftime", once, [](std::size_t) {
    return [list = someTimes()]() mutable {
      std::tm fields;
      char text[32];
      gmtime_r(&list.next(), &fields);
      return std::string(text, std::strftime(text, sizeof text, "%Y%m%dT%H%M%S", &fields));
    };
  });

  task = "date, parse";
  add(task, "hoplaunch", once, [](std::size_t) {
    return [text = std::string("2026-11-20T19:31:47")] { return DateTime(text); };
  });
  add(task, "strptime", once, [](std::size_t) {
    return [text = std::string("2026-11-20T19:31:47")] {
      std::tm fields{};
      strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &fields);
      return timegm(&fields);
    };
  });
}
