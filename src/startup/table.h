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
};

// The rows of a group, in installation order.
std::span<const platform::Row> rowsOf(Group group);

// Every row of every group, in table order.
std::vector<platform::Row> allRows();

// Installs a group's rows and adds their records to the process's report.
void installGroup(Group group);

// Installs, on each image the loader adds, every group of a class that
// loads late whose class has appeared, once; registered with the loader by
// SpringBoard's start-up.
void installLateGroups(const struct mach_header* image, intptr_t slide);

// The process's install report so far, one line per row considered.
const std::vector<platform::InstallRecord>& installReport();

}  // namespace kv::startup
