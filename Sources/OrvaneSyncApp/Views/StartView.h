#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace orvane::views {

class Remark;

/// A text such as "1 locked, 2 approved"; empty if there are no decisions.
QString decisionsText(const ClipDecisions& decisions);

/// Where the folder that was chosen last for a scan is stored.
QString lastCardSetting();

/// The folders of the next scan: two fields, or one for both, that are typed, chosen or dropped. Beside them
/// are the newest sessions; if there are none, what the program does and a demo shoot to try it with.
class StartView : public QWidget {
  public:
    /// `scan` is called when the button is pressed and the folders are set; `back` returns to the clips of
    /// the open work.
    StartView(Desktop& desktop, std::function<void()> scan, std::function<void()> back,
              QWidget* parent = nullptr);

    /// The first folder is for the picture, the second for the sound; further ones are read for both. `then`
    /// is called when they are known to be readable; it is not called if they are not, or if others are
    /// chosen first.
    void takeFolders(const QStringList& paths, std::function<void()> then = {});
    /// Whether a scan begins as soon as the folders are known to be readable.
    bool isAboutToScan() const { return isApplying() && whenApplied_; }
    /// Shows what the program does and the demo shoot, even if there are sessions, until the page is left.
    void showWelcome();
    /// Moves the focus to the button, so that Return scans.
    void focusScan() { start_->setFocus(); }
    /// The folders in the fields, whether they have been set in the work or not.
    QStringList named() const;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    QWidget* folderRow(QLineEdit* field, const QString& caption);
    void chooseInto(QLineEdit* field, const QString& caption);
    QWidget* makeFolders();
    QLayout* makeButtons();
    void connectFields();
    QWidget* makeWelcome();
    QWidget* makeRecent();
    void showRecent();
    void makeDemo();
    void showMode();
    void showWhatIsSet();
    void showWayBack();
    void showWhatIsLost();
    void applyFields(std::function<void()> then = {});
    /// Scans the folders in the fields as soon as they are set in the work.
    void scanWhenApplied();
    /// Says at the fields why the folders are not accepted.
    void refuse(const QString& why);
    void fitHeight();
    bool isApplying() const { return applying_ && !applying_->isDone(); }
    void showStart();

    Desktop& desktop_;
    const std::function<void()> scan_;
    const std::function<void()> back_;
    QWidget* column_;
    design::SegmentedChoice* mode_;
    QLineEdit* combined_;
    QLineEdit* video_;
    QLineEdit* audio_;
    QWidget* combinedRow_;
    QWidget* videoRow_;
    QWidget* audioRow_;
    Remark* refused_;
    QWidget* moreRow_;
    QLabel* more_;
    QPushButton* start_;
    QPushButton* toClips_; ///< hidden if there are no clips
    Remark* lost_;         ///< what a scan would remove from the open clips
    QWidget* welcome_;
    bool isWelcomeWanted_ = false; ///< even if there are sessions
    QPushButton* demo_;            ///< shown once the program that makes the demo shoot was found
    QPushButton* cancelDemo_;      ///< shown while it is made
    QLabel* demoState_;
    design::Section* recent_;
    QWidget* recentRows_ = nullptr;
    QStringList moreFolders_;
    std::optional<platform::Task> applying_; ///< checks and sets the folders; may take long on a share
    std::function<void()> whenApplied_;      ///< called after `applying_`
    int applications_ = 0; ///< the number of checks begun; the answer of an earlier one is ignored
    platform::Subscription observation_;
    platform::Subscription sessionObservation_;
};

} // namespace orvane::views
