// The prompt's own texts: the newline padding that makes room above the
// passcode field, and the body shown with the field.
#pragma once

#include <string>

namespace kv::prompt {

// The run of newlines above the passcode field: six with the item name shown
// on a system of version 8 to 11, five with only one of the two, else four.
std::string newlinePadding(bool showProtectedItemName, bool systemOf8To11);

// The same for this process: the `showProtectedItemName` setting, and the
// version flag `isIOS8OrLater` standing for a system of version 8 to 11.
std::string newlinePadding();

// "%@Please enter Kavelin passcode." with newlinePadding() for the %@.
std::string passcodeBody();

}  // namespace kv::prompt
