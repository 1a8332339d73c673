#pragma once

#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"
#include "OrvaneSyncCore/Models/LockitField.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::views {

/// The sign-in to LockitNetwork, and the table of the metadata keys of its fields in Final Cut Pro.
class MetadataPage : public SettingsPage {
  public:
    MetadataPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    void refresh() override;
    /// Reads which account is signed in.
    void open() override;

  private:
    struct Line {
        LockitField field;
        design::Choice* target;
        QLineEdit* key;
        QPushButton* reset;
        Remark* remark;
    };
    QWidget* makeAccount();
    QWidget* makeFields();
    void showAccount();
    void setTarget(LockitField field, FCPMetaTarget target, const std::optional<std::string>& customKey = {});
    void cancelSignIn();
    void completeSignIn();
    /// Runs a command; if it is refused, the reason is shown below the account.
    void run(std::string_view id, JSON arguments = {});

    std::shared_ptr<LockitOAuthService> account_; ///< null until the page is opened
    design::Badge* pill_;
    QPushButton* signIn_;
    QPushButton* cancel_;
    QPushButton* signOut_;
    QWidget* paste_;
    QLineEdit* callback_;
    Remark* problem_;
    QString refusal_;
    std::vector<Line> lines_;
    Remark* fieldProblem_;
    platform::Subscription observation_;
};

} // namespace orvane::views
