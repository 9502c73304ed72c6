// KavelinInCallController: SpringBoard matches a finger or face while a call
// rings and publishes the outcome as the state of
// "net.quorvan.kavelin.allowInCallNames", which the in-call screen reads to
// show or hide the caller's name.
#pragma once

namespace kv::prompt {

// Registers KavelinInCallController with the runtime (once).
void defineInCallController();

}  // namespace kv::prompt
