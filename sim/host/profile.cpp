// The host's profile, and Foundation made to answer with it.
#include "sim/host/profile.h"

#include "platform/foundation.h"
#include "platform/hook.h"
#include "platform/runtime.h"

namespace kv::sim::host {

using platform::Hook;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

Profile& current() {
  static auto* p = new Profile();
  return *p;
}

id osVersionString(id, SEL) {
  return platform::makeString(current().osVersionString);
}

id bundleIdentifier(id self, SEL cmd) {
  id main = platform::sendClass<id>(platform::classNamed("NSBundle"), Sel("mainBundle"));
  if (self == main) return platform::makeString(current().bundleIdentifier);
  return Hook<&bundleIdentifier>::original(self, cmd);
}

const platform::Row kProfileRows[] = {
    platform::replaced<&osVersionString>("NSProcessInfo", "-operatingSystemVersionString"),
    platform::replaced<&bundleIdentifier>("NSBundle", "-bundleIdentifier"),
};

std::vector<std::string> strings(const Value& v) {
  std::vector<std::string> out;
  for (const auto& item : v.asArray()) out.push_back(item.asString());
  return out;
}

}  // namespace

Profile profileFrom(const Value& hello) {
  Profile p;
  p.processName = hello["process"].asString();
  p.bundleIdentifier = hello["bundle"].asString();
  p.osVersion = hello["osVersion"].asString();
  p.osVersionString = hello["osVersionString"].asString();
  p.model = hello["model"].asString();
  p.machine = hello["machine"].asString();
  p.idiom = static_cast<int>(hello["idiom"].asInteger());
  p.biometrics = hello["biometrics"].asString();
  p.passcode = hello["passcode"].asBool(true);
  p.identities = static_cast<int>(hello["identities"].asInteger(1));
  p.passKitLate = hello["passKitLate"].asBool();
  p.ioServices = strings(hello["ioServices"]);
  p.privateLibraries = strings(hello["privateLibraries"]);
  p.root = hello["root"].asString();
  p.library = hello["library"].asString();
  return p;
}

const Profile& profile() {
  return current();
}
void setProfile(Profile p) {
  current() = std::move(p);
}

void applyProfile() {
  platform::AutoreleasePool pool;
  id info = platform::sendClass<id>(platform::classNamed("NSProcessInfo"), Sel("processInfo"));
  send<void>(info, Sel("setProcessName:"), platform::makeString(current().processName));
  platform::installRows(kProfileRows);
}

}  // namespace kv::sim::host
