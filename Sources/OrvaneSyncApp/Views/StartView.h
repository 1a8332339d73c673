#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace orvane::views {

class Remark;

/// Such as "1 locked, 2 approved"; empty for none.
QString decisionsText(const ClipDecisions& decisions);

/// The folders of the next scan: two fields, or one for both, filled by hand, by a choice or by a drop.
/// Beside them the newest sessions; where there are none, what the program is for and a shoot to try it with.
class StartView : public QWidget {
  public:
    /// `scan` is asked for when the button is pressed, with the folders set; `back` to the clips that there
    /// are.
    StartView(Desktop& desktop, std::function<void()> scan, std::function<void()> back,
              QWidget* parent = nullptr);

    /// The first folder is that of the picture, a second one that of the sound; more are read for both.
    /// Once they are known to be readable, `then` is called; where they are not, or others are chosen first,
    /// it is not.
    void takeFolders(const QStringList& paths, std::function<void()> then = {});
    /// When it is known that the folders can be read.
    bool isAboutToScan() const { return isApplying() && whenApplied_; }
    /// What the program is for and the demo shoot, also where there are sessions; until the page is left.
    void showWelcome();
    /// Return scans from there.
    void focusScan() { start_->setFocus(); }
    /// Those in the fields, whether they are the work's by now or not.
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
    /// With the folders in the fields, as soon as these are the work's.
    void scanWhenApplied();
    /// Says at the fields why the folders are not taken.
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
    QPushButton* toClips_; ///< hidden where there are none
    Remark* lost_;         ///< what a scan would take from the open clips
    QWidget* welcome_;
    bool isWelcomeWanted_ = false; ///< although there are sessions
    QPushButton* demo_ = nullptr;  ///< absent where its maker is
    QLabel* demoState_;
    design::Section* recent_;
    QWidget* recentRows_ = nullptr;
    QStringList moreFolders_;
    std::optional<platform::Task> applying_; ///< looks at the folders, which a share may make long
    std::function<void()> whenApplied_;      ///< by that one
    int applications_ = 0;                   ///< that were begun: what an earlier one answers is old
    platform::Subscription observation_;
    platform::Subscription sessionObservation_;
};

} // namespace orvane::views
