// Launches the workspace carries out: requests to open an app from other
// processes, the transactions that bring an app to the front, and
// app-to-app transitions.
#pragma once

#include "platform/objc.h"

namespace kv::springboard {

// -[SBMainWorkspace systemService:handleOpenApplicationRequest:withCompletion:]
void systemServiceOpenRequest(id self, SEL cmd, id service, id request, id completion);
// -[SBMainWorkspace _setCurrentTransactionForRequest:fallbackProvider:]
BOOL setCurrentTransaction(id self, SEL cmd, id request, id fallbackProvider);
// -[SBAppToAppWorkspaceTransaction initWithAlertManager:from:to:withResult:]
id appToAppInit(id self, SEL cmd, id alertManager, id from, id to, id result);
// -[SBWorkspace workspace:handleOpenApplicationRequest:withOptions:origin:withResult:]
void workspaceOpenRequest(id self, SEL cmd, id workspace, id bundleIdentifier, id options,
                          id origin, id result);

}  // namespace kv::springboard
