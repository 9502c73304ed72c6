// The device's event log.
#include "sim/device/event_log.h"

#include <cstdio>

#include "platform/value.h"
#include "sim/common/json.h"

namespace kv::sim {

void EventLog::add(double time, std::string process, std::string kind, std::string details) {
  events_.push_back({time, std::move(process), std::move(kind), std::move(details)});
}

std::vector<const Event*> EventLog::window() const {
  std::vector<const Event*> out;
  for (size_t i = windowStart_; i < events_.size(); ++i) out.push_back(&events_[i]);
  return out;
}

std::string EventLog::line(const Event& e) {
  char stamp[64];
  std::snprintf(stamp, sizeof stamp, "%9.3f  %-14s %-9s ", e.time, e.process.c_str(),
                e.kind.c_str());
  return stamp + e.details;
}

std::string EventLog::json() const {
  platform::Value::Array items;
  for (const auto& e : events_) {
    items.push_back(platform::Value::dictionary({
        {"time", platform::Value::real(e.time)},
        {"process", platform::Value::string(e.process)},
        {"kind", platform::Value::string(e.kind)},
        {"details", platform::Value::string(e.details)},
    }));
  }
  return toJson(platform::Value::array(std::move(items)));
}

}  // namespace kv::sim
