// The interception table. A row whose behaviour is not built yet is pending:
// it is reported, never installed; each guard turns its rows on as it lands.
#include "startup/table.h"

#include <set>

#include "core/identities.h"
#include "processes/camera.h"
#include "processes/incall.h"
#include "processes/settings_guards.h"
#include "prompt/glyph_timing.h"
#include "prompt/passcode_field_hooks.h"
#include "springboard/control_center.h"
#include "springboard/folders.h"
#include "springboard/integrations.h"
#include "springboard/launch_agent.h"
#include "springboard/launch_icons.h"
#include "springboard/launch_other.h"
#include "springboard/launch_urls.h"
#include "springboard/launch_workspace.h"
#include "springboard/lock_state.h"
#include "springboard/notifications.h"
#include "springboard/switcher.h"
#include "springboard/switcher_cover.h"
#include "springboard/system_actions.h"
#include "springboard/system_power.h"
#include "startup/additions.h"
#include "startup/diagnostics.h"
#include "startup/second_stage.h"

namespace kv::startup {

namespace {

using platform::added;
using platform::pendingAddition;
using platform::pendingRow;
using platform::replaced;
using platform::Row;

constexpr auto kPrefs = processes::Family::kPrefs;  // iOS 8's own Settings classes
constexpr auto kPSUI = processes::Family::kPSUI;    // PreferencesUI's, from iOS 9

// One row per line, so that any selector is found whole by one search.
// clang-format off

// Every process the library loads into, first.
const Row kAllProcessesRows[] = {
    replaced<&exceptionRaise>("NSException", "+raise:format:"),
    replaced<&exceptionInit>("NSException", "-initWithName:reason:userInfo:"),
    added<&objectOfClass>("NSArray", "-_kv_objectOfClass:", "@:@"),
};

// The in-call screen (InCallService).
const Row kInCallRows[] = {
    replaced<&processes::setCallBackgroundImage>("PHAudioCallViewController", "-setBackgroundImage:"),
    replaced<&processes::overrideParticipantsString>("PHCallParticipantsViewController", "-overrideStringForParticipantsView:"),
    replaced<&processes::participantsControllerDealloc>("PHCallParticipantsViewController", "-dealloc"),
};

// The Settings app (Preferences).
const Row kSettingsRows[] = {
    replaced<&processes::setTouchIDUnlockEnabled>("PSUIBiometricController", "-setTouchIDUnlockEnabled:specifier:"),
    replaced<&processes::processURL>("PreferencesAppController", "-processURL:"),
    replaced<&processes::mesaSettingsDidDisappear>("PSMesaSettingsController", "-viewDidDisappear:"),
    replaced<&processes::touchIdPasscodeDidDisappear>("PSTouchIDPasscodeController", "-viewDidDisappear:"),
    replaced<&processes::applicationDidResumeFromUnderLock>("UIApplication", "-applicationDidResumeFromUnderLock"),
    replaced<&processes::applicationDidResume>("UIApplication", "-applicationDidResume"),
    replaced<&processes::navigationPush>("UINavigationController", "-pushViewController:animated:"),
    replaced<&processes::setAirplaneMode<kPrefs>>("PrefsListController", "-setAirplaneMode:specifier:"),
    replaced<&processes::showControllerFromSpecifier<kPrefs>>("PrefsListController", "-_showControllerFromSpecifier:"),
    replaced<&processes::setViewControllers<kPrefs>>("PrefsRootController", "-setViewControllers:animated:"),
    replaced<&processes::rootPop<kPrefs>>("PrefsRootController", "-popViewControllerAnimated:"),
    replaced<&processes::rootPush<kPrefs>>("PrefsRootController", "-pushViewController:animated:"),
    replaced<&processes::setAirplaneMode<kPSUI>>("PSUIPrefsListController", "-setAirplaneMode:specifier:"),
    replaced<&processes::showControllerFromSpecifier<kPSUI>>("PSUIPrefsListController", "-_showControllerFromSpecifier:"),
    replaced<&processes::setViewControllers<kPSUI>>("PSUIPrefsRootController", "-setViewControllers:animated:"),
    replaced<&processes::rootPop<kPSUI>>("PSUIPrefsRootController", "-popViewControllerAnimated:"),
    replaced<&processes::rootPush<kPSUI>>("PSUIPrefsRootController", "-pushViewController:animated:"),
    replaced<&processes::resetIconPositions>("ResetPrefController", "-resetIconPositions:"),
    replaced<&processes::listControllerInitialize>("PSListController", "+initialize"),
    replaced<&processes::objectInitialize>("NSObject", "+initialize"),
};

// The Camera app.
const Row kCameraRows[] = {
    replaced<&processes::viewfinderImageWellReleased>("CAMViewfinderViewController", "-_handleImageWellReleased:"),
    replaced<&processes::viewfinderImageWellTapped>("CAMViewfinderViewController", "-_handleImageWellTapped:"),
    replaced<&processes::cameraKitImageWellTapped>("CMKCameraView", "-_imageWellTapped:"),
    replaced<&processes::startImageWellPreview>("UIPreviewInteractionController", "-startInteractivePreviewWithGestureRecognizer:"),
    replaced<&processes::photoLibraryImageWellTapped>("PLCameraView", "-_imageWellTapped:"),
    replaced<&processes::cameraViewImageWellTapped>("CAMCameraView", "-_imageWellTapped:"),
};

// SpringBoard on iOS 10 and later.
const Row kSpringBoardIOS10Rows[] = {
    replaced<&springboard::sectionListWillAppear>("NCNotificationSectionListViewController", "-viewWillAppear:"),
    replaced<&springboard::sectionListDidDisappear>("NCNotificationSectionListViewController", "-viewDidDisappear:"),
    replaced<&springboard::sourceAddBulletinWithReply>("NCBulletinNotificationSource", "-observer:addBulletin:forFeed:playLightsAndSirens:withReply:"),
    replaced<&springboard::sourceAddBulletin>("NCBulletinNotificationSource", "-observer:addBulletin:forFeed:"),
    replaced<&springboard::longLookClose>("NCNotificationLongLookViewController", "-_handleCloseButton:"),
    replaced<&springboard::priorityListClear>("NCNotificationPriorityListViewController", "-notificationListCell:requestsClearingNotificationRequest:"),
    replaced<&springboard::priorityListPerformAction>("NCNotificationPriorityListViewController", "-notificationListCell:requestsPerformAction:forNotificationRequest:completion:"),
    replaced<&springboard::priorityListCell>("NCNotificationPriorityListViewController", "-collectionView:cellForItemAtIndexPath:"),
    replaced<&springboard::priorityListInsert>("NCNotificationPriorityListViewController", "-insertNotificationRequest:forCoalescedNotification:"),
    added<&springboard::removeAll>("NCNotificationPriorityListViewController", "-_kv_removeAll", "v@:"),
    added<&springboard::reInsertAll>("NCNotificationPriorityListViewController", "-_kv_reInsertAll", "v@:"),
    added<&springboard::kavelinCell>("NCNotificationPriorityListViewController", "-kavelinCell", "@@:"),
    added<&springboard::indexPathOfKavelinCell>("NCNotificationPriorityListViewController", "-indexPathOfKavelinCell", "@@:"),
    replaced<&springboard::shouldTurnOnScreen>("SBBacklightController", "-shouldTurnOnScreenForBacklightSource:"),
    pendingRow("SBBacklightController", "-_animateBacklightToFactor:duration:source:silently:completion:"),
    pendingRow("_SBUIBiometricKitInterface", "-init"),
};

// SpringBoard on iOS 11.
const Row kSpringBoardIOS11Rows[] = {
    replaced<&springboard::moduleExpansion>("CCUIContentModuleContainerViewController", "-_previewInteraction:viewControllerPresentationForPresentingViewController:"),
    replaced<&springboard::moduleButtonTouchesEnded>("CCUIButtonModuleView", "-touchesEnded:withEvent:"),
    replaced<&springboard::roundButtonTouchesEnded>("CCUIRoundButton", "-touchesEnded:withEvent:"),
    replaced<&springboard::serviceShutdown>("FBSystemService", "-shutdownWithOptions:"),
    replaced<&springboard::serviceReboot>("FBSystemService", "-shutdownAndReboot:"),
    replaced<&springboard::serviceRelaunch>("FBSystemService", "-exitAndRelaunch:"),
    replaced<&springboard::resourceMatchingEnabled>("SBUIBiometricResource", "-isMatchingEnabled"),
    replaced<&springboard::resourceMatchingAllowed>("SBUIBiometricResource", "-isMatchingAllowed"),
    replaced<&springboard::resourceCapabilityEnabled>("SBUIBiometricResource", "-hasBiometricAuthenticationCapabilityEnabled"),
    added<&stackBlockLength>("__NSStackBlock__", "-length", "q@:"),
};

// SpringBoard on iOS 8 and later.
const Row kSpringBoardIOS8Rows[] = {
    replaced<&prompt::glyphMinimumDuration>("PKGlyphView", "-_minimumAnimationDurationForStateTransition"),
    replaced<&prompt::fingerprintGlyphMinimumDuration>("PKFingerprintGlyphView", "-_minimumAnimationDurationForStateTransition"),
};

// SpringBoard on every version.
const Row kSpringBoardRows[] = {
    replaced<&springboard::dashBoardActivateCamera>("SBDashBoardViewController", "-_activateCameraAnimated:"),
    replaced<&springboard::dashBoardActivateCameraPublic>("SBDashBoardViewController", "-activateCameraAnimated:"),
    replaced<&springboard::systemGestureChanged>("SBSystemGestureManager", "-_systemGestureChanged:"),
    replaced<&springboard::reusableSnapshotLayout>("SBAppSwitcherReusableSnapshotView", "-layoutSubviews"),
    replaced<&springboard::reusableSnapshotSetTransform>("SBAppSwitcherReusableSnapshotView", "-setTransform:"),
    replaced<&springboard::reusableSnapshotDealloc>("SBAppSwitcherReusableSnapshotView", "-dealloc"),
    replaced<&springboard::fluidRunSceneLayout>("SBFluidSwitcherGestureWorkspaceTransaction", "-_runSceneLayoutTransactionForTransitionRequest:updateScenes:"),
    replaced<&springboard::fluidDidComplete>("SBFluidSwitcherGestureWorkspaceTransaction", "-_didComplete"),
    replaced<&springboard::setReturnToDisplayItem>("SBMainSwitcherViewController", "-_setReturnToDisplayItem:"),
    replaced<&springboard::toggleSwitcherWithSource>("SBMainSwitcherViewController", "-toggleSwitcherNoninteractivelyWithSource:"),
    replaced<&springboard::toggleSwitcherNoninteractively>("SBMainSwitcherViewController", "-toggleSwitcherNoninteractively"),
    replaced<&springboard::switcherSelectedItem>("SBMainSwitcherViewController", "-switcherContentController:selectedItem:"),
    replaced<&springboard::forcePressTransition>("SBSwitcherForcePressSystemGestureTransaction", "-_transitionRequestForPresentationWithCommitment:toNextDisplayItem:"),
    replaced<&springboard::shortcutActivate>("SBApplicationShortcutMenu", "-menuContentView:activateShortcutItem:index:"),
    pendingRow("SBAppSwitcherController", "-switcherIconScroller:activate:"),
    pendingRow("SBAppSwitcherController", "-switcherScroller:itemTapped:"),
    pendingRow("SBApplication", "-snapshotImageInfosWithImageName:sceneID:launchingSize:launchingScale:launchingOrientation:"),
    replaced<&springboard::iconLaunchWithContext>("SBApplication", "-icon:launchFromLocation:context:activationSettings:actions:"),
    replaced<&springboard::iconLaunch>("SBApplication", "-icon:launchFromLocation:"),
    replaced<&springboard::systemServiceOpenRequest>("SBMainWorkspace", "-systemService:handleOpenApplicationRequest:withCompletion:"),
    replaced<&springboard::setCurrentTransaction>("SBMainWorkspace", "-_setCurrentTransactionForRequest:fallbackProvider:"),
    replaced<&springboard::appToAppInit>("SBAppToAppWorkspaceTransaction", "-initWithAlertManager:from:to:withResult:"),
    replaced<&springboard::slideUpFinalizeGesture>("SBLockScreenSlideUpToAppController", "-finalizeGesture"),
    replaced<&prompt::passcodeInsertText>("PSPasscodeField", "-insertText:"),
    added<&prompt::updateKavelinAlert>("PSPasscodeField", "-updateKavelinAlert", "v@:"),
    replaced<&springboard::lockScreenCameraDidActivate>("SBLockScreenCameraController", "-_didActivate"),
    replaced<&springboard::peekPresent>("SBUIIconForceTouchViewController", "-presentAnimated:withCompletionHandler:"),
    replaced<&springboard::iconsSetEditingWithFeedback>("SBIconController", "-setIsEditing:withFeedbackBehavior:"),
    replaced<&springboard::iconsSetEditing>("SBIconController", "-setIsEditing:"),
    replaced<&springboard::iconCloseBoxTapped>("SBIconController", "-iconCloseBoxTapped:"),
    replaced<&springboard::sliderCachedImage>("SBAppSliderSnapshotView", "-_cachedImageForImageInfos:foundInfo:"),
    replaced<&springboard::sliderCachedImageDownscaled>("SBAppSliderSnapshotView", "-_cachedImageForImageInfos:downscaled:foundInfo:"),
    replaced<&springboard::sliderDefaultImage>("SBAppSliderSnapshotView", "-_defaultImageforImageInfo:"),
    replaced<&springboard::sliderCGImage>("SBAppSliderSnapshotView", "-_cgImageForSnapshotInfo:"),
    replaced<&springboard::sliderCGImageDownscaled>("SBAppSliderSnapshotView", "-_cgImageForSnapshotInfo:downscaled:"),
    replaced<&springboard::sliderLoadImageAsync>("SBAppSliderSnapshotView", "-_loadImageAsyncFromSnapshotInfo:"),
    replaced<&springboard::snapshotZoomUpForRequest>("SBAppSwitcherSnapshotView", "-_crossfadeToZoomUpViewIfNecessaryForTransitionRequest:"),
    replaced<&springboard::snapshotViewPresenting>("SBAppSwitcherSnapshotView", "-_viewPresenting:"),
    replaced<&springboard::snapshotZoomUp>("SBAppSwitcherSnapshotView", "-_crossfadeToZoomUpViewIfNecessary"),
    replaced<&springboard::snapshotViewLayout>("SBAppSwitcherSnapshotView", "-layoutSubviews"),
    replaced<&springboard::snapshotImageViewLayout>("SBSwitcherSnapshotImageView", "-layoutSubviews"),
    replaced<&springboard::mesaObserveEvent>("SBLockScreenMesaCoordinator", "-biometricResource:observeEvent:"),
    replaced<&springboard::bioAuthenticated>("SBLockScreenManager", "-_bioAuthenticated:"),
    replaced<&springboard::unlockUI>("SBLockScreenManager", "-unlockUIFromSource:withOptions:"),
    replaced<&springboard::unlockUIOld>("SBLockScreenManager", "-unlockUIFromSource:withOptions:"),
    replaced<&springboard::lockUI>("SBLockScreenManager", "-lockUIFromSource:withOptions:"),
    replaced<&springboard::lockButtonSinglePress>("SBLockHardwareButton", "-singlePress:"),
    pendingRow("SBUIBiometricEventMonitor", "-init"),
    replaced<&springboard::powerDownViewRequest>("SBPowerDownController", "-powerDownViewRequestPowerDown:"),
    replaced<&springboard::powerDownControllerPowerDown>("SBPowerDownController", "-powerDown"),
    replaced<&springboard::sendActionsToBackboard>("FBSystemApp", "-sendActionsToBackboard:"),
    replaced<&springboard::restartWithRequest>("SBRestartManager", "-restartWithTransitionRequest:"),
    replaced<&springboard::shutdownForReason>("SBRestartManager", "-shutdownForReason:"),
    replaced<&springboard::rebootForReason>("SBRestartManager", "-rebootForReason:"),
    replaced<&springboard::springBoardPowerDown>("SpringBoard", "-powerDown"),
    replaced<&springboard::springBoardReboot>("SpringBoard", "-reboot"),
    replaced<&springboard::springBoardRebootNow>("SpringBoard", "-_rebootNow"),
    replaced<&springboard::springBoardRebootNowWith>("SpringBoard", "-_rebootNow:"),
    replaced<&springboard::springBoardRelaunch>("SpringBoard", "-relaunchSpringBoard"),
    pendingRow("SpringBoard", "-_menuButtonDown:"),
    pendingRow("SpringBoard", "-_menuButtonUp:"),
    replaced<&springboard::applicationOpenURL>("SpringBoard", "-applicationOpenURL:withApplication:sender:publicURLsOnly:animating:needsPermission:activationContext:activationHandler:"),
    replaced<&springboard::openURLWithSettings>("SpringBoard", "-_openURLCore:display:animating:sender:activationSettings:withResult:"),
    replaced<&springboard::openURLWithFlags>("SpringBoard", "-_openURLCore:display:animating:sender:additionalActivationFlags:activationHandler:"),
    replaced<&springboard::openURLWithContext>("SpringBoard", "-_openURLCore:display:animating:sender:activationContext:activationHandler:"),
    replaced<&springboard::agentOpenApplication>("SBUserAgent", "-_openApplication:withURL:fromSource:animated:options:"),
    replaced<&springboard::bulletinLaunchWithResponse>("SBUserAgent", "-launchFromPushOrLocalBulletin:actionIdentifier:userResponse:origin:"),
    replaced<&springboard::bulletinLaunchWithAction>("SBUserAgent", "-launchFromPushOrLocalBulletin:actionIdentifier:origin:"),
    replaced<&springboard::bulletinLaunch>("SBUserAgent", "-launchFromPushOrLocalBulletin:origin:"),
    replaced<&springboard::longPasscodeOkButtonHit>("SBUILongNumericPasscodeEntryField", "-_okButtonHit"),
    replaced<&springboard::folderRename>("SBFolder", "-setDisplayName:"),
    replaced<&springboard::bookmarkLaunch>("SBBookmarkIcon", "-launchFromLocation:context:activationSettings:actions:"),
    replaced<&springboard::folderLaunch>("SBFolderIcon", "-launchFromLocation:"),
    replaced<&springboard::folderLaunchWithContext>("SBFolderIcon", "-launchFromLocation:context:"),
    replaced<&springboard::folderLaunchWithSettings>("SBFolderIcon", "-launchFromLocation:context:activationSettings:actions:"),
    replaced<&springboard::workspaceOpenRequest>("SBWorkspace", "-workspace:handleOpenApplicationRequest:withOptions:origin:withResult:"),
    replaced<&springboard::pushButtonPress>("CCUIControlCenterPushButton", "-_pressAction"),
    replaced<&springboard::controlCenterButtonPress>("SBControlCenterButton", "-_pressAction"),
    replaced<&springboard::uiControlCenterButtonPress>("SBUIControlCenterButton", "-_pressAction"),
    replaced<&springboard::quickLaunch>("SBCCQuickLaunchSectionController", "-_activateAppWithBundleId:url:"),
    replaced<&springboard::lockScreenImageWell>("PLCameraView", "-_imageWellTapped:"),
    replaced<&springboard::assistantActivate>("SBAssistantController", "-activatePluginForEvent:"),
    replaced<&springboard::assistantActivateFromSource>("SBAssistantController", "-activatePluginForEvent:eventSource:context:"),
    pendingRow("SBSwitchAppList", "-_bundleIDShouldBeRepresentedInList:"),
    replaced<&springboard::updateBatteryState>("SBUIController", "-updateBatteryState:"),
    replaced<&springboard::activateFromIcon>("SBUIController", "-activateApplication:fromIcon:location:"),
    replaced<&springboard::activateAnimated>("SBUIController", "-activateApplicationAnimated:"),
    replaced<&springboard::activate>("SBUIController", "-activateApplication:"),
    pendingRow("SBUIController", "-finishLaunching"),
    replaced<&springboard::switcherActivateLayout>("SBUIController", "-appSwitcher:wantsToActivateDisplayLayout:displayIDsToURLs:displayIDsToActions:"),
    replaced<&springboard::switcherActivateApplication>("SBUIController", "-appSwitcher:wantsToActivateApplication:"),
    replaced<&springboard::uiToggleSwitcher>("SBUIController", "-_toggleSwitcher"),
    replaced<&uiControllerInit>("SBUIController", "-init"),
};

// SpringBoard, when the Pellum extension's library is on the device.
const Row kPellumRows[] = {
    replaced<&springboard::executeOrAppendEvent>("SBWorkspaceEventQueue", "-executeOrAppendEvent:"),
    replaced<&springboard::frontDisplayDidChange>("SpringBoard", "-frontDisplayDidChange:"),
};

// Any process, once an added image brings the class BiometricKit.
const Row kBiometricKitRows[] = {
    replaced<&core::removeIdentity>("BiometricKit", "-removeIdentity:"),
    replaced<&core::updateIdentity>("BiometricKit", "-updateIdentity:"),
};

// SpringBoard, once an added image brings the class FSSwitchButton.
const Row kFlipswitchRows[] = {
    replaced<&springboard::flipswitchPressed>("FSSwitchButton", "-_pressed"),
    replaced<&springboard::flipswitchHeld>("FSSwitchButton", "-_held"),
};

// SpringBoard, once an added image brings the class _FSSwitchButton.
const Row kPrivateFlipswitchRows[] = {
    replaced<&springboard::privateFlipswitchPressed>("_FSSwitchButton", "-_pressed"),
    replaced<&springboard::privateFlipswitchHeld>("_FSSwitchButton", "-_held"),
};

// SpringBoard, once an added image brings the class ZandorFlipswitchButton.
const Row kZandorRows[] = {
    replaced<&springboard::zandorTapped>("ZandorFlipswitchButton", "-tapped"),
};

// SpringBoard, once an added image brings the class LAApplicationListener.
const Row kActivatorApplicationRows[] = {
    replaced<&springboard::activatorActivateApplication>("LAApplicationListener", "-activateApplication:"),
};

// SpringBoard, once an added image brings the class LASwitchListener.
const Row kActivatorSwitchRows[] = {
    replaced<&springboard::activatorSwitchEvent>("LASwitchListener", "-activator:receiveEvent:forListenerName:"),
};

// SpringBoard, once an added image brings the class LAActivator.
const Row kActivatorRows[] = {
    replaced<&springboard::activatorSendEvent>("LAActivator", "-sendEventToListener:"),
};

// SpringBoard, once an added image brings the class LASimpleListener.
const Row kActivatorSimpleRows[] = {
    replaced<&springboard::activatorActivateSwitcher>("LASimpleListener", "-activateSwitcher"),
};

// SpringBoard, once an added image brings the class OrrelSwitcherController.
const Row kOrrelSwitcherRows[] = {
    replaced<&springboard::orrelShowSwitcher>("OrrelSwitcherController", "-showSwitcher"),
};

// SpringBoard, once an added image brings the class OrrelBarView.
const Row kOrrelBarRows[] = {
    replaced<&springboard::orrelIconTapped>("OrrelBarView", "-iconTapped:"),
};

// SpringBoard, once an added image brings the class MevrickAppSwitcherController.
const Row kMevrickRows[] = {
    replaced<&springboard::mevrickOpen>("MevrickAppSwitcherController", "-openWithPercentage:"),
    replaced<&springboard::mevrickActivate>("MevrickAppSwitcherController", "-activateSwitcher:"),
    replaced<&springboard::mevrickDeactivateTo>("MevrickAppSwitcherController", "-deactivateSwitcherToApplication:animated:"),
};

// SpringBoard, once an added image brings the class MevrickApplicationView.
const Row kMevrickCardRows[] = {
    replaced<&springboard::mevrickCardSetImage>("MevrickApplicationView", "-setImage:"),
};

// SpringBoard, once an added image brings the class VeskelQuickSwitcherIconListView.
const Row kVeskelRows[] = {
    replaced<&springboard::veskelIconListInit>("VeskelQuickSwitcherIconListView", "-initWithFrame:"),
};

// SpringBoard, once an added image brings the class PennacSheetOwner.
const Row kPennacRows[] = {
    replaced<&springboard::pennacSheetClicked>("PennacSheetOwner", "-actionSheet:clickedButtonAtIndex:"),
    replaced<&springboard::launchApplicationWithIdentifier>("SpringBoard", "-launchApplicationWithIdentifier:suspended:"),
};

// SpringBoard, once an added image brings the class TamsinControllerModern.
const Row kTamsinRows[] = {
    replaced<&springboard::tamsinSetInfoForCurrentCalls>("TamsinControllerModern", "-setInfoForCurrentCalls"),
    replaced<&springboard::tamsinLaunchAddressBook>("TamsinControllerModern", "-launchAddressBookApp"),
};

// clang-format on

struct GroupRows {
  Group group;
  std::span<const Row> rows;
};

const GroupRows kGroups[] = {
    {Group::kAllProcesses, kAllProcessesRows},
    {Group::kInCall, kInCallRows},
    {Group::kSettings, kSettingsRows},
    {Group::kCamera, kCameraRows},
    {Group::kSpringBoardIOS10, kSpringBoardIOS10Rows},
    {Group::kSpringBoardIOS11, kSpringBoardIOS11Rows},
    {Group::kSpringBoardIOS8, kSpringBoardIOS8Rows},
    {Group::kSpringBoard, kSpringBoardRows},
    {Group::kPellum, kPellumRows},
    {Group::kBiometricKit, kBiometricKitRows},
    {Group::kFlipswitch, kFlipswitchRows},
    {Group::kPrivateFlipswitch, kPrivateFlipswitchRows},
    {Group::kZandor, kZandorRows},
    {Group::kActivatorApplication, kActivatorApplicationRows},
    {Group::kActivatorSwitch, kActivatorSwitchRows},
    {Group::kActivator, kActivatorRows},
    {Group::kActivatorSimple, kActivatorSimpleRows},
    {Group::kOrrelSwitcher, kOrrelSwitcherRows},
    {Group::kOrrelBar, kOrrelBarRows},
    {Group::kMevrick, kMevrickRows},
    {Group::kMevrickCards, kMevrickCardRows},
    {Group::kVeskel, kVeskelRows},
    {Group::kPennac, kPennacRows},
    {Group::kTamsin, kTamsinRows},
};

// A group whose class may load after the library: installed the first time
// an added image makes the class resolve.
struct LateGroup {
  Group group;
  const char* className;
  bool installed;
};

LateGroup gLateGroups[] = {
    {Group::kBiometricKit, "BiometricKit", false},
};

// Other extensions' integrations: the class whose appearance installs each.
LateGroup gIntegrations[] = {
    {Group::kFlipswitch, "FSSwitchButton", false},
    {Group::kPrivateFlipswitch, "_FSSwitchButton", false},
    {Group::kZandor, "ZandorFlipswitchButton", false},
    {Group::kActivatorApplication, "LAApplicationListener", false},
    {Group::kActivatorSwitch, "LASwitchListener", false},
    {Group::kActivator, "LAActivator", false},
    {Group::kActivatorSimple, "LASimpleListener", false},
    {Group::kOrrelSwitcher, "OrrelSwitcherController", false},
    {Group::kOrrelBar, "OrrelBarView", false},
    {Group::kMevrick, "MevrickAppSwitcherController", false},
    {Group::kMevrickCards, "MevrickApplicationView", false},
    {Group::kVeskel, "VeskelQuickSwitcherIconListView", false},
    {Group::kPennac, "PennacSheetOwner", false},
    {Group::kTamsin, "TamsinControllerModern", false},
};

std::vector<platform::InstallRecord>& report() {
  static auto* records = new std::vector<platform::InstallRecord>();
  return *records;
}

}  // namespace

std::span<const Row> rowsOf(Group group) {
  for (const auto& g : kGroups) {
    if (g.group == group) return g.rows;
  }
  return {};
}

std::vector<RowOfGroup> allRows() {
  std::vector<RowOfGroup> rows;
  for (const auto& g : kGroups) {
    int first = g.group == Group::kSpringBoardIOS11   ? 11
                : g.group == Group::kSpringBoardIOS10 ? 10
                                                      : 8;
    for (const Row& row : g.rows) rows.push_back({row, first});
  }
  return rows;
}

void installGroup(Group group) {
  for (const auto& record : platform::installRows(rowsOf(group))) report().push_back(record);
}

namespace {

bool gStartupComplete = false;
int gLateImages = 0;

// Rows whose class was missing when their group was installed, retried as
// images come: a framework the platform loads later (PassKit on first use,
// Control Center's modules when it first opens) brings its classes then.
// The start-up record stays as it was; the late one is added, once.
void installRowsOfLateClasses() {
  static auto* done = new std::set<const Row*>();
  auto& records = report();
  const size_t considered = records.size();
  for (size_t i = 0; i < considered; ++i) {
    const Row* row = records[i].row;
    if (records[i].status != platform::InstallStatus::kClassMissing || done->count(row) != 0 ||
        platform::classNamed(row->className) == nullptr) {
      continue;
    }
    done->insert(row);
    records.push_back({row, platform::installRow(*row), gLateImages});
  }
}

}  // namespace

void installLateGroups(const struct mach_header*, intptr_t) {
  if (gStartupComplete) ++gLateImages;
  for (LateGroup& late : gLateGroups) {
    if (late.installed || platform::classNamed(late.className) == nullptr) continue;
    late.installed = true;
    installGroup(late.group);
  }
  if (gStartupComplete) installRowsOfLateClasses();
}

void installIntegrations(const struct mach_header*, intptr_t) {
  // These extensions hook SpringBoard alone; a process without it has none of their paths.
  if (platform::classNamed("SpringBoard") == nullptr) return;
  for (LateGroup& integration : gIntegrations) {
    if (integration.installed || platform::classNamed(integration.className) == nullptr) continue;
    integration.installed = true;
    for (auto record : platform::installRows(rowsOf(integration.group))) {
      record.lateImage = gStartupComplete ? gLateImages : 0;
      report().push_back(record);
    }
  }
}

void startupComplete() {
  gStartupComplete = true;
}

const std::vector<platform::InstallRecord>& installReport() {
  return report();
}

}  // namespace kv::startup
