// The device's one event log: everything visible that happened, stamped
// with virtual time and process.
#pragma once

#include <string>
#include <vector>

namespace kv::sim {

struct Event {
  double time;          // seconds since the scenario started
  std::string process;  // "SpringBoard", ..., "device", "scenario"
  std::string kind;     // "posted", "sent", "reply", "prefs", "spawn", ...
  std::string details;
};

class EventLog {
 public:
  void add(double time, std::string process, std::string kind, std::string details);
  const std::vector<Event>& events() const { return events_; }

  // Starts a new window for the window predicates.
  void mark() { windowStart_ = events_.size(); }
  // The events of the current window.
  std::vector<const Event*> window() const;

  // One line of the timeline.
  static std::string line(const Event& e);
  // The whole log as JSON (an array of objects).
  std::string json() const;

 private:
  std::vector<Event> events_;
  size_t windowStart_ = 0;
};

}  // namespace kv::sim
