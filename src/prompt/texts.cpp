// The prompt's own texts.
#include "prompt/texts.h"

#include "base/flags.h"
#include "settings/settings.h"

namespace kv::prompt {

namespace {

struct Padding {
  bool showProtectedItemName;
  bool systemOf8To11;
  const char* newlines;
};
constexpr Padding kPadding[] = {
    {true, true, "\n\n\n\n\n\n"},
    {true, false, "\n\n\n\n\n"},
    {false, true, "\n\n\n\n\n"},
    {false, false, "\n\n\n\n"},
};

constexpr const char* kPasscodeText = "Please enter Kavelin passcode.";

}  // namespace

std::string newlinePadding(bool showProtectedItemName, bool systemOf8To11) {
  for (const auto& row : kPadding) {
    if (row.showProtectedItemName == showProtectedItemName && row.systemOf8To11 == systemOf8To11) {
      return row.newlines;
    }
  }
  return "";
}

std::string newlinePadding() {
  return newlinePadding(settings::current().showProtectedItemName, base::flags().isIOS8OrLater);
}

std::string passcodeBody() {
  return newlinePadding() + kPasscodeText;
}

}  // namespace kv::prompt
