#pragma once

#include <array>
#include <cstddef>

/// Every text that a prompt shows by itself. `\n` stands for the two characters that `Dialog` reads as a line break;
/// words in braces are filled in. Preferences replace titles, messages and buttons of the update prompts.
namespace vorlu::texts {

// What a message says of updating at another time, without and with a Self Service application.
inline constexpr auto manyAppsAdvice =
    "You can also install app updates manually at a more convenient time if you can’t update right now";
inline constexpr auto oneAppAdvice =
    "You can also install this app update manually at a more convenient time if you can’t update right now";
inline constexpr auto shortAdvice = "You can update manually at a more convenient time if you can’t update right now";
inline constexpr auto manyAppsSelfServiceAdvice =
    "You can also install updates at your own convenience using **Application Updates** in **{selfService}**";
inline constexpr auto oneAppSelfServiceAdvice =
    "You can also install the update at your own convenience using **Application Updates** in **{selfService}**";
inline constexpr auto shortSelfServiceAdvice =
    "You can also update when convenient using **Application Updates** in **{selfService}**";

// Buttons.
inline constexpr auto update = "Update";
inline constexpr auto defer = "Defer";
inline constexpr auto deferWithCount = "Defer ({deferCount})";
inline constexpr auto skip = "Skip";
inline constexpr auto done = "Done";
inline constexpr auto ok = "Ok";
inline constexpr auto yes = "Yes";
inline constexpr auto no = "No";

// The initial prompt, one app.
inline constexpr auto initialOneAppSelfService =
    R"(**{appName}** must quit in order to install an important update. Please save your work and click )"
    R"(**{updateButton}**\n\n)"
    R"(If it is not convenient to update right now, you can **Skip** the update and come back at a time of your )"
    R"(convenience\n\n)"
    R"(We will also remind you about the update later)";
inline constexpr auto initialOneAppWithLimit =
    R"(**{appName}** must quit in order to install an important update. Please save your work and click )"
    R"(**{updateButton}**\n\n)"
    R"(If updating now is not convenient, you may **Defer** and be reminded later. {shortAdvice}\n\n)"
    R"(**Deferrals Remaining: ({deferCount})**)";
inline constexpr auto initialOneApp =
    R"(**{appName}** must quit in order to install an important update. Please save your work and click )"
    R"(**{updateButton}**\n\n)"
    R"(If updating now is not convenient, you may **Defer** and be reminded later\n\n{oneAppAdvice})";

// Several apps: the head, then the paragraphs of the case.
inline constexpr auto severalAppsHead =
    "Some of your open Apps must quit to update. Please save your work and click **{updateButton}**";
inline constexpr auto appNames = R"(\n\nApps that must quit: **{apps}**)";
inline constexpr auto mayDefer =
    R"(\n\nIf updating now is not convenient, you may **Defer** and be reminded later. {manyAppsAdvice})";
inline constexpr auto deferralsRemaining = R"(\n\n**Deferrals Remaining: ({deferCount})**)";
inline constexpr auto maySkip =
    R"(\n\nIf it is not convenient to update right now, you can **Skip** the update and come back at a time of your )"
    R"(convenience. We will also remind you about the update later)";

/// The last paragraph of a message above a list, from this number of apps on.
struct ListEnding {
  std::size_t atLeast;
  const char* text;
};
inline constexpr auto scrollEnding =
    R"(\n\n**Important**: Use **Scroll** to review the **{count} Apps** listed below which will quit before )"
    R"(updating)";
inline constexpr auto boldCountEnding =
    R"(\n\n**Important:** The **{count} Apps** listed below will quit before updating)";
inline constexpr std::array initialListEndings = {
    ListEnding{4, scrollEnding}, ListEnding{3, boldCountEnding},
    ListEnding{2, R"(\n\n**Important:** The {count} Apps listed below will quit before updating)"}};
inline constexpr std::array graceListEndings = {ListEnding{4, scrollEnding}, ListEnding{2, boldCountEnding}};
inline constexpr std::array selfServiceListEndings = {
    ListEnding{
        4, R"(\n\n**Important**: Use **scroll** to review the **{count} Apps** listed below which will be updated)"},
    ListEnding{2, R"(\n\n**Important**: The **{count} Apps** listed below will be updated)"}};

// The grace period prompt; "without deferrals" is for those who never had any.
inline constexpr auto graceOneAppWithoutDeferrals =
    R"(**{appName}** needs to quit to install an important update. Please save your work and click )"
    R"(**{updateButton}**\n\n)"
    R"(The update will start automatically in **{grace}** if you take no action)";
inline constexpr auto graceOneApp =
    R"(**{appName}** needs to quit to install an important update. Please save your work and click )"
    R"(**{updateButton}**\n\n)"
    R"(**You have no remaining deferrals**\n\nThe update will start automatically in **{grace}** if you take no )"
    R"(action)";
inline constexpr auto graceNamesWithoutDeferrals =
    R"(\n\nApps that must quit: **{apps}**\n\nPlease save any work and click **{updateButton}** to quit the Apps )"
    R"(and update\n\n)"
    R"(If you take no action the Apps will quit automatically after {grace})";
inline constexpr auto graceNames =
    R"(\n\nApps that must quit: **{apps}**\n\nYou have no remaining deferrals\n\n)"
    R"(Please save any work and click **{updateButton}** to quit the Apps and update\n\n)"
    R"(If you take no action the Apps will quit automatically after {grace})";
inline constexpr auto graceListWithoutDeferrals =
    R"(\n\nThe update will start automatically after {grace} if you take no action)";
inline constexpr auto graceList =
    R"(\n\n**You have no remaining deferrals**. The update will start automatically after {grace} if you take no )"
    R"(action)";

// Forced updates.
inline constexpr auto forcedTitle = "Urgent Update Required";
inline constexpr auto forcedInitial =
    R"(**{appName}** must quit in order to install an urgent update\n\n)"
    R"(Please save your work in {appName} and click **{updateButton}**\n\n)"
    R"(If it is not convenient to update right now, you may defer and be reminded later\n\n)"
    R"(**Deferrals Remaining: ({deferCount})**)";
inline constexpr auto forcedWithoutDeferrals =
    R"(**{appName}** must quit in order to install an urgent update\n\n)"
    R"(Please save your work in {appName} and click **{updateButton}**\n\n)"
    R"(If you take no action, {appName} will quit and update automatically in **{grace}**)";
inline constexpr auto forcedGrace =
    R"(**{appName}** must quit in order to install an urgent update\n\n**You have no remaining deferrals**\n\n)"
    R"(Please save your work in {appName} and click **{updateButton}**\n\n)"
    R"(If you take no action, {appName} will quit and update automatically in **{grace}**)";

// The completion prompts.
inline constexpr auto upToDateTitle = "You're all up to date!";
inline constexpr auto completeOneApp =
    R"(The pending application update was successfully installed\n\nYou can now use {appName})";
inline constexpr auto completeSeveralApps =
    R"(All pending application updates were successfully installed\n\nYou can now use your updated apps)";
inline constexpr auto nothingPending =
    R"(Your device has no pending Application updates to install at this time\n\n)"
    R"(No further action is required\n\nThis prompt will close automatically in 20 seconds)";
inline constexpr auto installCompleteTitle = "Install Complete!";
inline constexpr auto installComplete = "The install completed successfully. Do you want to launch {appName} now?";

// Failures.
inline constexpr auto oneFailedTitle = "Error Installing Update";
inline constexpr auto oneFailed =
    R"(There was a problem updating **{appName}**.\n\n)"
    R"(The **{appName}** install will remain unchanged. We will attempt the update again later.\n\n)"
    R"(Please contact the IT Helpdesk for assistance.)";
inline constexpr auto severalFailedTitle = "Error Installing Updates";
inline constexpr auto severalFailed =
    R"(There was a problem installing some of the pending updates.\n\n)"
    R"(The Apps listed below remain unchanged. We will attempt to update the Apps again later.\n\n)"
    R"(Please contact the IT Helpdesk for assistance.)";
inline constexpr auto forcedFailedTitle = "Error Updating {appName}";
inline constexpr auto forcedFailed =
    R"(There was a problem updating **{appName}**\n\n)"
    R"(Your {appName} install will remain unchanged. We will attempt the update again later.\n\n)"
    R"(Please contact the IT Helpdesk for assistance.)";
inline constexpr auto unexpectedErrorTitle = "Unexpected Error";
inline constexpr auto noUpdatesPossible =
    R"(We can't check for updates right now. Please contact the IT helpdesk for assistance\n\nError Code: ({code}))";
inline constexpr auto noInstallsPossible =
    R"(We can't run App installations right now. Please contact the IT helpdesk for assistance\n\nError Code: )"
    R"(({code}))";

// Installs that came to nothing.
inline constexpr auto installCancelledTitle = "Install Cancelled";
inline constexpr auto notInCatalog =
    "The installation was cancelled because the specified App was not found in the App catalog. For assistance, please "
    "contact the IT Helpdesk";
inline constexpr auto notEnabled =
    R"({appName} installs have not been enabled\n\nPlease contact your administrator and request approval for this )"
    R"(App)";
inline constexpr auto alreadyInstalled =
    "The installation was cancelled because {appName} is already installed. To reinstall, first quit {appName} and "
    "move "
    "it to trash";
inline constexpr auto installFailedTitle = "Error: Install Failed";
inline constexpr auto installFailed = "The {appName} install failed. For assistance, please contact the IT helpdesk";

// Work in progress.
inline constexpr auto checkingTitle = "Application Updates";
inline constexpr auto checking = "Checking for Application Updates...";
inline constexpr auto pleaseWait = "Please Wait";
inline constexpr auto updatingTitle = "Updating {appName}";
inline constexpr auto updating = "Please wait. {appName} can be relaunched when complete";
inline constexpr auto installingTitle = "Installing {appName}";
inline constexpr auto installing = "{appName} is currently being installed and can be launched when complete";

}  // namespace vorlu::texts
