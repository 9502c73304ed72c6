// What a person sees of an alert's extra content (the Kavelin prompt's ring,
// fingerprint, glyph, item line and passcode field) as "prompt" events, and
// the scenario actions and queries that work the prompt and other alerts.
#include <cstdio>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/actions.h"
#include "sim/host/link.h"
#include "sim/host/run_loop.h"

namespace kv::sim::frameworks {

id alertShowing(id view);

using platform::Integer;
using platform::Sel;
using platform::send;
using platform::Value;

namespace {

constexpr const char* kPromptClass = "KavelinAlertView";

// What was last shown of an alert's content, so that only changes are logged.
struct ContentLog {
  std::string last;
  bool checkQueued = false;
};

std::string number(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", v);
  return text;
}

std::string visibility(id view) {
  std::string out = " alpha " + number(send<double>(view, Sel("alpha")));
  if (send<BOOL>(view, Sel("isHidden"))) out += " hidden";
  return out;
}

// The animations running on a view's layer: " [MyAnimation, MyAnimation2]".
std::string animations(id view) {
  auto keys = platform::stringListOf(send<id>(send<id>(view, Sel("layer")), Sel("animationKeys")));
  if (!keys || keys->empty()) return "";
  std::string out;
  for (const auto& k : *keys) out += (out.empty() ? "" : ", ") + k;
  return " [" + out + "]";
}

// The first label with text in an alert's content: the prompt's item line.
std::string itemLine(id container) {
  std::string text;
  visitSubviews(container, [&](id v) {
    if (!text.empty()) return false;
    if (platform::isKindOf(v, "UILabel")) text = platform::toString(send<id>(v, Sel("text")));
    return true;
  });
  return text;
}

bool passcodeFieldShowing(id container) {
  id field = findSubview(container, "PSPasscodeField");
  return field != nullptr && send<double>(field, Sel("alpha")) > 0 &&
         !send<BOOL>(field, Sel("isHidden"));
}

void checkContent(id alert);

// Re-describes a visible alert at the end of the turn in which its content changed.
void contentChanged(id view) {
  id alert = alertShowing(view);
  if (alert == nullptr || stateOf<ContentLog>(alert).checkQueued) return;
  stateOf<ContentLog>(alert).checkQueued = true;
  platform::Retained keep(alert);
  host::scheduleAfter(0, [keep] {
    stateOf<ContentLog>(keep.get()).checkQueued = false;
    if (send<BOOL>(keep.get(), Sel("isVisible"))) checkContent(keep.get());
  });
}

void checkContent(id alert) {
  std::string now = describeAlertContent(alert);
  ContentLog& log = stateOf<ContentLog>(alert);
  if (now == log.last) return;
  log.last = now;
  host::logEvent("prompt", std::string(platform::classNameOf(alert)) + ": " +
                               (now.empty() ? "no content" : now));
}

id visiblePrompt(std::string* error) {
  id prompt = topmostAlert(kPromptClass);
  if (prompt == nullptr) *error = "no Kavelin prompt is visible";
  return prompt;
}

bool parseIndex(const std::string& word, long* index) {
  if (word.empty() || word.find_first_not_of("0123456789") != std::string::npos) return false;
  *index = std::stol(word);
  return true;
}

Value tapButton(id alert, const std::string& word, std::string* error) {
  long index = 0;
  if (!parseIndex(word, &index)) {
    *error = "a button number is 0, 1, 2 ...: " + word;
    return {};
  }
  tapAlertButton(alert, index, error);
  return {};
}

Value promptAction(const host::ActionRequest& request, std::string* error) {
  const std::string what = request.args.size() == 2 ? request.args[0] : "";
  if (what != "passcode" && what != "button") {
    *error = "prompt passcode DIGITS | prompt button N";
    return {};
  }
  if (what == "passcode") {
    typePromptPasscode(request.args[1], error);
    return {};
  }
  id prompt = visiblePrompt(error);
  return prompt == nullptr ? Value() : tapButton(prompt, request.args[1], error);
}

Value alertAction(const host::ActionRequest& request, std::string* error) {
  bool dismiss = request.args.size() == 1 && request.args[0] == "dismiss";
  if (!dismiss && (request.args.size() != 2 || request.args[0] != "button")) {
    *error = "alert button N | alert dismiss";
    return {};
  }
  id alert = topmostAlert();
  if (alert == nullptr) {
    *error = "no alert is visible";
    return {};
  }
  if (dismiss) {
    // Taken down by the system, as if its cancel button had been tapped.
    send<void>(alert, Sel("dismissWithClickedButtonIndex:animated:"),
               send<Integer>(alert, Sel("cancelButtonIndex")), BOOL{0});
    return {};
  }
  return tapButton(alert, request.args[1], error);
}

Value alertsQuery(const std::vector<std::string>&) {
  Value::Array list;
  for (id alert : visibleAlerts()) {
    Value::Array buttons;
    for (Integer i = 0; i < send<Integer>(alert, Sel("numberOfButtons")); ++i) {
      buttons.push_back(
          Value::string(platform::toString(send<id>(alert, Sel("buttonTitleAtIndex:"), i))));
    }
    list.push_back(Value::dictionary({
        {"class", Value::string(platform::classNameOf(alert))},
        {"title", Value::string(platform::toString(send<id>(alert, Sel("title"))))},
        {"message", Value::string(platform::toString(send<id>(alert, Sel("message"))))},
        {"buttons", Value::array(std::move(buttons))},
    }));
  }
  return Value::array(std::move(list));
}

}  // namespace

// A presentation shows the content afresh, also when the alert comes back.
void logAlertContent(id alert) {
  stateOf<ContentLog>(alert).last.clear();
  checkContent(alert);
}

// Parts are listed by kind (images, glyphs, labels, passcode fields), each
// kind back to front, so that re-adding a view on top changes no line.
std::string describeAlertContent(id alert) {
  id container = alertContainer(alert);
  std::vector<std::string> parts[4];
  visitSubviews(container, [&](id v) {
    if (platform::isKindOf(v, "UIImageView")) {
      std::string name = imageNameOf(send<id>(v, Sel("image")));
      parts[0].push_back("image " + (name.empty() ? std::string("none") : name) + visibility(v) +
                         animations(v));
    } else if (platform::isKindOf(v, "PKGlyphView") ||
               platform::isKindOf(v, "PKFingerprintGlyphView")) {
      parts[1].push_back("glyph style " + std::to_string(send<Integer>(v, Sel("style"))) +
                         " state " + std::to_string(send<Integer>(v, Sel("state"))) + " colors " +
                         colorHexOf(send<id>(v, Sel("primaryColor"))) + "/" +
                         colorHexOf(send<id>(v, Sel("secondaryColor"))) + visibility(v));
    } else if (platform::isKindOf(v, "UILabel")) {
      std::string text = platform::toString(send<id>(v, Sel("text")));
      if (!text.empty()) parts[2].push_back("label " + quoteForLog(text) + visibility(v));
    } else if (platform::isKindOf(v, "PSPasscodeField")) {
      parts[3].push_back("passcode field" + visibility(v));
    } else {
      return true;  // a plain view: what it holds counts
    }
    return false;
  });
  std::string out;
  for (const auto& kind : parts) {
    for (const auto& p : kind) out += (out.empty() ? "" : ", ") + p;
  }
  return out;
}

// One insertText: per key on the field that is first responder, which must
// be the prompt's showing field.
bool typePromptPasscode(const std::string& digits, std::string* error) {
  id prompt = visiblePrompt(error);
  if (prompt == nullptr) return false;
  id field = findSubview(alertContainer(prompt), "PSPasscodeField");
  if (field == nullptr) {
    *error = "the prompt has no passcode field";
    return false;
  }
  if (!passcodeFieldShowing(alertContainer(prompt))) {
    *error = "the prompt's passcode field is not showing";
    return false;
  }
  if (digits.find_first_not_of("0123456789") != std::string::npos) {
    *error = "the passcode keyboard has digits only: " + digits;
    return false;
  }
  platform::Retained keep(field);
  for (size_t i = 0; i < digits.size(); ++i) {
    if (firstResponder() != field) {
      *error = "the keyboard is not up for the prompt's passcode field" +
               (i == 0 ? std::string() : " after " + std::to_string(i) + " digit(s)");
      return false;
    }
    send<void>(field, Sel("insertText:"), platform::makeString(digits.substr(i, 1)));
    host::runDue();
  }
  return true;
}

Value promptInfo() {
  id prompt = topmostAlert(kPromptClass);
  if (prompt == nullptr) return Value::dictionary({{"visible", Value::boolean(false)}});
  id container = alertContainer(prompt);
  return Value::dictionary({
      {"visible", Value::boolean(true)},
      {"title", Value::string(itemLine(container))},
      {"message", Value::string(platform::toString(send<id>(prompt, Sel("message"))))},
      {"passcodeField", Value::boolean(passcodeFieldShowing(container))},
  });
}

void registerAlertActions() {
  setViewChangeObserver(contentChanged);
  host::registerAction("prompt", promptAction);
  host::registerAction("alert", alertAction);
  host::registerQuery("prompt", [](const std::vector<std::string>&) { return promptInfo(); });
  host::registerQuery("alerts", alertsQuery);
}

}  // namespace kv::sim::frameworks
