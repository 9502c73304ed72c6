// The language change and the deletion of an app from the storage pane:
// both are held back until the owner authenticates, like the panes.
#pragma once

#include "platform/objc.h"

namespace kv::processes {

// Installs the interception of the language setup, once.
void installLanguageGuard();

// Installs the interception of the storage pane's deletion, once.
void installDeletionGuard();

// Repeat the held-back change or deletion once SpringBoard has granted it.
void repeatLanguageChange();
void repeatDeletion();

}  // namespace kv::processes
