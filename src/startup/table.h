// The interception table: every point the library installs, grouped by host
// and condition, in installation order. Start-up decides which groups apply.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/functions.h"
#include "platform/hook.h"

namespace kv::startup {

enum class Group {
  kAllProcesses,
  kInCall,
  kSettings,
  kCamera,
  kSpringBoardIOS10,
  kSpringBoardIOS11,
  kSpringBoardIOS8,
  kSpringBoard,
  kPellum,
  kBiometricKit,  // the biometric manager, installed when its class is found
  // Other extensions' classes, each installed when its class is found.
  kFlipswitch,
  kPrivateFlipswitch,
  kZandor,
  kActivatorApplication,
  kActivatorSwitch,
  kActivator,
  kActivatorSimple,
  kOrrelSwitcher,
  kOrrelBar,
  kMevrick,
  kMevrickCards,
  kVeskel,
  kPennac,
  kTamsin,
};

// The rows of a group, in installation order.
std::span<const platform::Row> rowsOf(Group group);

// Every row of every group, in table order, with the earliest major iOS
// version its group is installed on (8 when every version has it).
struct RowOfGroup {
  platform::Row row;
  int firstVersion;
};
std::vector<RowOfGroup> allRows();

// Installs a group's rows and adds their records to the process's report.
void installGroup(Group group);

// On each image the loader adds: installs every group of a class that
// loads late once its class has appeared, and every row skipped at start-up
// because its class was missing once the class exists. Registered with the
// loader by start-up, which counts the images added after it.
void installLateGroups(const struct mach_header* image, intptr_t slide);

// On each image the loader adds: installs the rows of every other
// extension's integration whose class has now appeared in SpringBoard, once.
// Registered with the loader by SpringBoard's start-up.
void installIntegrations(const struct mach_header* image, intptr_t slide);

// Start-up is over: images added from now on are late ones.
void startupComplete();

// The process's install report so far, one line per row considered.
const std::vector<platform::InstallRecord>& installReport();

}  // namespace kv::startup
