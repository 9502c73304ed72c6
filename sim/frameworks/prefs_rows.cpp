// The Settings app's rows: the panes as data (which rows each lists, what
// each row opens or sets), specifiers with their properties, the table cells
// that record being selected, and the switches of switch rows.
#include <string>
#include <vector>

#include "platform/foundation.h"
#include "platform/retained.h"
#include "platform/runtime.h"
#include "sim/frameworks/catalog.h"
#include "sim/frameworks/prefs.h"
#include "sim/frameworks/state.h"
#include "sim/frameworks/system.h"
#include "sim/frameworks/uikit.h"
#include "sim/host/classes.h"
#include "sim/host/link.h"

namespace kv::sim::frameworks {

using host::ClassBuilder;
using host::imp;
using platform::Retained;
using platform::Sel;
using platform::send;

namespace {

enum class RowKind { kLink, kSwitch, kButton };

// One row of a pane. A link opens the first of its classes this version
// has; a switch sets its value with `action`; a button performs `action`.
struct RowSpec {
  const char* pane;
  const char* id;
  const char* name;
  RowKind kind;
  std::vector<const char*> classes;
  const char* action;
};

// Every pane's rows, in the order they are listed.
const std::vector<RowSpec>& rows() {
  static const auto* table = new std::vector<RowSpec>{
      {"root",
       "AIRPLANE_MODE",
       "Airplane Mode",
       RowKind::kSwitch,
       {},
       "setAirplaneMode:specifier:"},
      {"root", "WIFI", "Wi-Fi", RowKind::kLink, {"APNetworksController"}, nullptr},
      {"root", "General", "General", RowKind::kLink, {"PSListController"}, nullptr},
      {"root",
       "TOUCHID_PASSCODE",
       "Touch ID & Passcode",
       RowKind::kLink,
       {"PSUIBiometricController", "PSTouchIDPasscodeController", "PSMesaSettingsController",
        "PSListController"},
       nullptr},
      {"root", "PRIVACY", "Privacy", RowKind::kLink, {"PSListController"}, nullptr},
      {"root", "Kavelin", "Kavelin", RowKind::kLink, {"KavelinPrefsListController"}, nullptr},
      {"General",
       "INTERNATIONAL",
       "Language & Region",
       RowKind::kLink,
       {"ISInternationalLanguageController"},
       nullptr},
      {"General", "STORAGE", "Storage", RowKind::kLink, {"PSListController"}, nullptr},
      {"General", "Reset", "Reset", RowKind::kLink, {"ResetPrefController"}, nullptr},
      {"Reset",
       "RESET_ICONS_LABEL",
       "Reset Home Screen Layout",
       RowKind::kButton,
       {},
       "resetIconPositions:"},
      {"STORAGE",
       "com.apple.mobilenotes",
       "Notes",
       RowKind::kLink,
       {"UsageDetailController"},
       nullptr},
      {"com.apple.mobilenotes", "DELETE_APP", "Delete App", RowKind::kButton, {}, "deleteApp"},
      {"TOUCHID_PASSCODE",
       "TOUCHID_UNLOCK",
       "iPhone Unlock",
       RowKind::kSwitch,
       {},
       "setTouchIDUnlockEnabled:specifier:"},
      {"Kavelin",
       "PROTECTED_SETTINGS",
       "Protected Settings",
       RowKind::kLink,
       {"PSListController"},
       nullptr},
  };
  return *table;
}

// The class a link row opens on this version, "" when none of its classes
// exists here (the row is then not listed).
std::string linkClass(const RowSpec& row) {
  for (const char* name : row.classes) {
    if (platform::classNamed(name) != nullptr) return name;
  }
  return "";
}

// A switch row lists only where its setter exists on the pane's class.
bool rowListed(const RowSpec& row) {
  if (row.kind == RowKind::kLink) return !linkClass(row).empty();
  return true;
}

const RowSpec* rowSpec(const std::string& pane, const std::string& id) {
  for (const auto& r : rows()) {
    if (pane == r.pane && id == r.id && rowListed(r)) return &r;
  }
  return nullptr;
}

std::string displayName(const RowSpec& row) {
  if (std::string(row.id) == "TOUCHID_PASSCODE" && system().biometrics == "faceid") {
    return "Face ID & Passcode";
  }
  return row.name;
}

// ---- PSSpecifier ----

struct SpecifierState {
  Retained name;
  Retained identifier;
  Retained properties;  // NSMutableDictionary
  std::string detail;
  SEL action = nullptr;
};

id specifierIdentifier(id self, SEL) {
  return stateOf<SpecifierState>(self).identifier.get();
}
id specifierName(id self, SEL) {
  return stateOf<SpecifierState>(self).name.get();
}
id specifierProperties(id self, SEL) {
  auto& s = stateOf<SpecifierState>(self);
  if (!s.properties) {
    s.properties = Retained::adopt(
        platform::sendClass<id>(platform::classNamed("NSMutableDictionary"), Sel("new")));
  }
  return s.properties.get();
}
id specifierPropertyForKey(id self, SEL, id key) {
  return send<id>(specifierProperties(self, nullptr), Sel("objectForKey:"), key);
}
void specifierSetProperty(id self, SEL, id value, id key) {
  if (key == nullptr) return;
  id properties = specifierProperties(self, nullptr);
  if (value == nullptr) {
    send<void>(properties, Sel("removeObjectForKey:"), key);
  } else {
    send<void>(properties, Sel("setObject:forKey:"), value, key);
  }
}

// ---- Cells ----

struct CellState {
  std::string row;
  bool selected = false;
};

void cellSetSelected(id self, SEL, BOOL selected) {
  auto& c = stateOf<CellState>(self);
  if (c.selected == (selected != 0)) return;
  c.selected = selected != 0;
  host::logEvent("settings", "row " + c.row + (c.selected ? " selected" : " deselected"));
}
BOOL cellIsSelected(id self, SEL) {
  return stateOf<CellState>(self).selected ? 1 : 0;
}

// ---- Switches ----

struct SwitchState {
  std::string row;
  bool on = false;
};

void switchSetOn(id self, SEL, BOOL on) {
  auto& s = stateOf<SwitchState>(self);
  if (s.on == (on != 0)) return;
  s.on = on != 0;
  host::logEvent("settings", "switch " + s.row + (s.on ? " on" : " off"));
  noteViewChanged(self);
}
void switchSetOnAnimated(id self, SEL, BOOL on, BOOL) {
  switchSetOn(self, nullptr, on);
}
BOOL switchIsOn(id self, SEL) {
  return stateOf<SwitchState>(self).on ? 1 : 0;
}

}  // namespace

id newSpecifier(const std::string& paneId, const std::string& rowId) {
  const RowSpec* row = rowSpec(paneId, rowId);
  if (row == nullptr) return nullptr;
  id specifier = host::newObject(platform::classNamed("PSSpecifier"));
  auto& s = stateOf<SpecifierState>(specifier);
  s.name.reset(platform::makeString(displayName(*row)));
  s.identifier.reset(platform::makeString(row->id));
  s.detail = row->kind == RowKind::kLink ? linkClass(*row) : "";
  s.action = row->action != nullptr ? platform::selector(row->action) : nullptr;
  specifierSetProperty(specifier, nullptr, platform::makeString(row->id),
                       platform::makeString("id"));
  id cell = newView("PSTableCell", platform::makeRect(0, 0, 320, 44));
  stateOf<CellState>(cell).row = row->id;
  specifierSetProperty(specifier, nullptr, cell, platform::makeString("cellObject"));
  send<void>(cell, Sel("release"));
  if (row->kind == RowKind::kSwitch) {
    id control = newView("UISwitch", platform::makeRect(0, 0, 51, 31));
    auto& sw = stateOf<SwitchState>(control);
    sw.row = row->id;
    sw.on = rowId == "AIRPLANE_MODE" ? airplaneMode() : true;
    specifierSetProperty(specifier, nullptr, control, platform::makeString("control"));
    send<void>(control, Sel("release"));
  }
  return specifier;
}

std::vector<std::string> rowIdsOf(const std::string& paneId) {
  std::vector<std::string> ids;
  for (const auto& r : rows()) {
    if (paneId == r.pane && rowListed(r)) ids.emplace_back(r.id);
  }
  return ids;
}

std::string detailClassOf(id specifier) {
  return hasState<SpecifierState>(specifier) ? stateOf<SpecifierState>(specifier).detail : "";
}

SEL actionOf(id specifier) {
  return hasState<SpecifierState>(specifier) ? stateOf<SpecifierState>(specifier).action : nullptr;
}

id switchOf(id specifier) {
  id control = specifierPropertyForKey(specifier, nullptr, platform::makeString("control"));
  return platform::isKindOf(control, "UISwitch") ? control : nullptr;
}

std::string rowIdOf(id specifier) {
  if (specifier == nullptr) return "";
  return platform::toString(
      specifierPropertyForKey(specifier, nullptr, platform::makeString("id")));
}

void definePrefsRows() {
  ClassBuilder("PSSpecifier", "NSObject")
      .instance("identifier", imp(specifierIdentifier), "@@:")
      .instance("name", imp(specifierName), "@@:")
      .instance("properties", imp(specifierProperties), "@@:")
      .instance("propertyForKey:", imp(specifierPropertyForKey), "@@:@")
      .instance("setProperty:forKey:", imp(specifierSetProperty), "v@:@@")
      .build();
  ClassBuilder("UITableViewCell", "UIView")
      .instance("setSelected:", imp(cellSetSelected), "v@:C")
      .instance("isSelected", imp(cellIsSelected), "C@:")
      .build();
  ClassBuilder("PSTableCell", "UITableViewCell").build();
  ClassBuilder("UIControl", "UIView").build();  // the catalog gives it its methods
  ClassBuilder("UISwitch", "UIControl")
      .instance("setOn:", imp(switchSetOn), "v@:C")
      .instance("setOn:animated:", imp(switchSetOnAnimated), "v@:CC")
      .instance("isOn", imp(switchIsOn), "C@:")
      .build();
}

}  // namespace kv::sim::frameworks
