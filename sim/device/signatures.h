// Holds the library's interceptions and the simulated platform against the
// method types iOS itself declares (a table made from class-dumped headers,
// per major version): a row whose replacement has another type would be
// refused on a device, and a simulated method of another type would hide it.
#pragma once

#include <string>

#include "sim/device/runner.h"

namespace kv::sim {

// Reads the table at `tablePath`, starts every process on every version
// profile, and prints each difference and a summary to options.out.
// Answers 0 when nothing differs, 1 when something does, 2 when the table
// cannot be read or a host cannot start.
int checkSignatures(const std::string& tablePath, const RunOptions& options);

}  // namespace kv::sim
