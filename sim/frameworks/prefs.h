// The simulated Settings app ("Preferences"): its rows (specifiers, their
// cells and switches), its list and root controllers of each iOS version,
// the panes a scenario reaches, and the application object.
#pragma once

#include <string>
#include <vector>

#include "platform/objc.h"

namespace kv::sim::frameworks {

// Defines the Settings app's classes (Preferences process only), in order.
void definePreferences();
void definePrefsRows();
void definePrefsPanes();
void definePrefsApp();

// Starts the app: the root list in its root controller (on an iPad, in a
// split view beside the pane shown), in a window.
void startPreferences();

// A new specifier for the row `rowId` of the pane whose rows are listed
// under `paneId`, with its cell (and switch); the caller owns it. nil when
// the pane has no such row on this version.
id newSpecifier(const std::string& paneId, const std::string& rowId);

// The ids of the rows of pane `paneId` on this version, in order.
std::vector<std::string> rowIdsOf(const std::string& paneId);

// The class that shows the row's pane ("" for a button or a switch).
std::string detailClassOf(id specifier);

// The selector a switch row sets its value with, or a button row performs.
SEL actionOf(id specifier);

// The switch of a switch row, or nil.
id switchOf(id specifier);

// The specifier's "id" property, "" when it has none.
std::string rowIdOf(id specifier);

// The pane id a list controller lists the rows of ("root" for the root list).
std::string paneIdOf(id listController);

// The device's airplane mode as the Settings app last set or read it.
bool airplaneMode();
void setAirplaneMode(bool on);

}  // namespace kv::sim::frameworks
