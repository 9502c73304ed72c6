// What a developer does with the library's debugging aids: write a line
// through its line writer, as code under test would call it.
#include <dlfcn.h>

#include <string>

#include "sim/host/actions.h"
#include "sim/host/link.h"

namespace kv::sim::host {

namespace {

using platform::Value;

// log-line TEXT: the library's line writer, found by name as a developer's
// code would find it, appends TEXT to /tmp/syslog.
Value logLine(const ActionRequest& request, std::string* error) {
  using LineWriter = void (*)(const char*);
  auto write = reinterpret_cast<LineWriter>(dlsym(RTLD_DEFAULT, "KavelinLogLine"));
  if (write == nullptr) {
    *error = "the library has no line writer";
    return {};
  }
  std::string text;
  for (const auto& a : request.args) text += (text.empty() ? "" : " ") + a;
  write(text.c_str());
  return {};
}

}  // namespace

void registerDiagnosticActions() {
  registerAction("log-line", logLine);
}

}  // namespace kv::sim::host
