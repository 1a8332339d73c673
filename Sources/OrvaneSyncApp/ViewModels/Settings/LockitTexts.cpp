#include "OrvaneSyncApp/ViewModels/Settings/LockitTexts.h"

#include <algorithm>

namespace orvane {

AccountPanel accountPanel(const LockitOAuthService& account) {
    AccountPanel panel;
    panel.isSignedIn = account.state().isSignedIn;
    panel.canCancel = account.state().isAuthenticating;
    panel.canSignIn = !panel.isSignedIn && !panel.canCancel && account.configuration().hasLockit();
    if (panel.canCancel)
        panel.state = "Opening browser…";
    else if (panel.isSignedIn)
        panel.state = account.state().accountEmail.value_or("Signed in");
    else
        panel.state = account.state().isKeyStoreLocked ? "Key store locked" : "Not signed in";
    if (const auto& problem = account.configuration().problem)
        panel.problem = *problem;
    else if (!account.configuration().hasLockit())
        panel.problem = "No LockitNetwork service is configured. Its address and client go into " +
                        ServiceConfiguration::path() + ".";
    else if (account.state().lastError)
        panel.problem = *account.state().lastError;
    else if (account.state().isKeyStoreLocked)
        panel.problem = OAuthError(OAuthError::Kind::keyStoreLocked).what();
    else if (account.state().isRefreshRefused)
        panel.problem = "The service no longer takes this sign-in. Sign out, and sign in again.";
    return panel;
}

std::string folderBadge(const std::optional<std::string>& projectID, bool isSignedIn,
                        const std::vector<LockitProject>& projects) {
    if (!isSignedIn || !projectID || projectID->empty()) return "Lockit";
    const auto known = std::ranges::find(projects, *projectID, &LockitProject::uuid);
    return known == projects.end() ? "Lockit ✓" : known->name;
}

namespace projectPicker {
const char* const notSignedIn = "Not signed in to LockitNetwork.\n\nSettings → Metadata → “Sign In with "
                                "LockitNetwork”, then pick a project here.";
const char* const noProjects = "No projects on this Lockit account.";
} // namespace projectPicker

} // namespace orvane
