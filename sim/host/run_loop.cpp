// The host's main run loop on the device's virtual clock.
#include "sim/host/run_loop.h"

#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/retained.h"
#include "platform/runtime.h"

namespace kv::sim::host {

using platform::Hook;
using platform::Retained;
using platform::Sel;
using platform::send;

namespace {

struct Task {
  std::function<void()> work;
  // Set for delayed performs, so that they can be cancelled.
  Retained target;
  SEL selector = nullptr;
  Retained argument;
};

int64_t gNow = 0;
uint64_t gSequence = 0;
// Ordered by (due, sequence): the order in which work runs.
std::map<std::pair<int64_t, uint64_t>, Task>& tasks() {
  static auto* queue = new std::map<std::pair<int64_t, uint64_t>, Task>();
  return *queue;
}

int64_t nanosFromDelay(double delay) {
  return delay > 0 && std::isfinite(delay) ? std::llround(delay * 1e9) : 0;
}

const Sel kIsEqual("isEqual:");
const Sel kPerformWithObject("performSelector:withObject:");

bool sameArgument(id a, id b) {
  if (a == b) return true;
  if (a == nullptr || b == nullptr) return false;
  return send<BOOL>(a, kIsEqual, b) != 0;
}

// ---- Foundation's real-time entry points, replaced ----

void performAfterDelay(id self, SEL, SEL selector, id argument, double delay) {
  schedulePerform(delay, self, selector, argument);
}
void performAfterDelayInModes(id self, SEL, SEL selector, id argument, double delay, id) {
  schedulePerform(delay, self, selector, argument);
}
// Foundation answers the same messages sent to a class with methods of its own.
void classPerformAfterDelay(id self, SEL, SEL selector, id argument, double delay) {
  schedulePerform(delay, self, selector, argument);
}
void classPerformAfterDelayInModes(id self, SEL, SEL selector, id argument, double delay, id) {
  schedulePerform(delay, self, selector, argument);
}
void cancelWithSelector(id, SEL, id target, SEL selector, id argument) {
  cancelPerforms(target, selector, argument, false);
}
void cancelAll(id, SEL, id target) {
  cancelPerforms(target, nullptr, nullptr, true);
}

double referenceNow(id, SEL) {
  return now();
}
id dateInit(id self, SEL) {
  return send<id>(self, Sel("initWithTimeIntervalSinceReferenceDate:"), now());
}
double intervalSinceNow(id self, SEL) {
  return send<double>(self, Sel("timeIntervalSinceReferenceDate")) - now();
}
double concreteIntervalSinceNow(id self, SEL) {
  return send<double>(self, Sel("timeIntervalSinceReferenceDate")) - now();
}
id dateNow(id self, SEL) {
  return send<id>(self, Sel("dateWithTimeIntervalSinceReferenceDate:"), now());
}
id dateSinceNow(id self, SEL, double seconds) {
  return send<id>(self, Sel("dateWithTimeIntervalSinceReferenceDate:"), now() + seconds);
}
id initSinceNow(id self, SEL, double seconds) {
  return send<id>(self, Sel("initWithTimeIntervalSinceReferenceDate:"), now() + seconds);
}

// A timer added to the run loop fires at its fire date, then again every
// interval while it repeats and stays valid.
void fireTimer(Retained timer);
void scheduleTimer(const Retained& timer) {
  double due =
      send<double>(send<id>(timer.get(), Sel("fireDate")), Sel("timeIntervalSinceReferenceDate"));
  scheduleAt(nanosFromSeconds(due), [timer] { fireTimer(timer); });
}
void fireTimer(Retained timer) {
  if (send<BOOL>(timer.get(), Sel("isValid")) == 0) return;
  double interval = send<double>(timer.get(), Sel("timeInterval"));
  bool repeats = platform::ivar<BOOL>(timer.get(), "_repeats").value_or(0) != 0;
  send<void>(timer.get(), Sel("fire"));
  if (repeats && interval > 0 && send<BOOL>(timer.get(), Sel("isValid")) != 0) {
    scheduleAfter(interval, [timer] { fireTimer(timer); });
  }
}
void addTimer(id, SEL, id timer, id) {
  if (timer != nullptr) scheduleTimer(Retained(timer));
}

// Installed on the Foundation classes of this process.
const platform::Row kVirtualTimeRows[] = {
    platform::replaced<&performAfterDelay>("NSObject", "-performSelector:withObject:afterDelay:"),
    platform::replaced<&performAfterDelayInModes>(
        "NSObject", "-performSelector:withObject:afterDelay:inModes:"),
    platform::replaced<&classPerformAfterDelay>("NSObject",
                                                "+performSelector:withObject:afterDelay:"),
    platform::replaced<&classPerformAfterDelayInModes>(
        "NSObject", "+performSelector:withObject:afterDelay:inModes:"),
    platform::replaced<&cancelWithSelector>(
        "NSObject", "+cancelPreviousPerformRequestsWithTarget:selector:object:"),
    platform::replaced<&cancelAll>("NSObject", "+cancelPreviousPerformRequestsWithTarget:"),
    platform::replaced<&referenceNow>("NSDate", "+timeIntervalSinceReferenceDate"),
    platform::replaced<&dateInit>("NSDate", "-init"),
    platform::replaced<&intervalSinceNow>("NSDate", "-timeIntervalSinceNow"),
    platform::replaced<&concreteIntervalSinceNow>("NSGDate", "-timeIntervalSinceNow"),
    platform::replaced<&dateNow>("NSDate", "+date"),
    platform::replaced<&dateSinceNow>("NSDate", "+dateWithTimeIntervalSinceNow:"),
    platform::replaced<&initSinceNow>("NSDate", "-initWithTimeIntervalSinceNow:"),
    platform::replaced<&addTimer>("NSRunLoop", "-addTimer:forMode:"),
};

}  // namespace

int64_t nowNanos() {
  return gNow;
}
void setNowNanos(int64_t nanos) {
  if (nanos > gNow) gNow = nanos;
}
double now() {
  return static_cast<double>(gNow) / 1e9;
}

int64_t nanosFromSeconds(double seconds) {
  if (!std::isfinite(seconds) || std::fabs(seconds) > 9e9) return gNow;
  return std::llround(seconds * 1e6) * 1000;
}

void scheduleAt(int64_t dueNanos, std::function<void()> work) {
  Task task;
  task.work = std::move(work);
  tasks().emplace(std::make_pair(dueNanos < gNow ? gNow : dueNanos, gSequence++), std::move(task));
}

void scheduleAfter(double delay, std::function<void()> work) {
  scheduleAt(gNow + nanosFromDelay(delay), std::move(work));
}

void schedulePerform(double delay, id target, SEL selector, id argument) {
  int64_t due = gNow + nanosFromDelay(delay);
  Task task;
  task.target = Retained(target);
  task.selector = selector;
  task.argument = Retained(argument);
  id t = target;
  task.work = [t, selector, argument] { send<id>(t, kPerformWithObject, selector, argument); };
  tasks().emplace(std::make_pair(due, gSequence++), std::move(task));
}

void cancelPerforms(id target, SEL selector, id argument, bool anySelector) {
  auto& queue = tasks();
  for (auto it = queue.begin(); it != queue.end();) {
    const Task& t = it->second;
    bool match = t.target.get() == target && t.selector != nullptr &&
                 (anySelector ||
                  (sel_isEqual(t.selector, selector) && sameArgument(t.argument.get(), argument)));
    it = match ? queue.erase(it) : std::next(it);
  }
}

int runDue() {
  int ran = 0;
  auto& queue = tasks();
  while (!queue.empty() && queue.begin()->first.first <= gNow) {
    Task task = std::move(queue.begin()->second);
    queue.erase(queue.begin());
    platform::AutoreleasePool pool;
    task.work();
    ++ran;
  }
  return ran;
}

std::optional<int64_t> nextDue() {
  if (tasks().empty()) return std::nullopt;
  return tasks().begin()->first.first;
}

std::vector<std::string> installVirtualTime() {
  std::vector<std::string> problems;
  for (const auto& record : platform::installRows(kVirtualTimeRows)) {
    if (std::string(platform::statusWord(record.status)) != "installed") {
      problems.push_back(platform::describe(record));
    }
  }
  return problems;
}

}  // namespace kv::sim::host
