#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <functional>

namespace orvane::views {

/// The folders of the next scan: two fields, or one for both, filled by hand, by a choice or by a drop.
class StartView : public QWidget {
  public:
    /// `scan` is asked for when the button is pressed, with the folders set.
    StartView(Desktop& desktop, std::function<void()> scan, QWidget* parent = nullptr);

    /// The first folder is that of the picture, a second one that of the sound; more are read for both.
    void takeFolders(const QStringList& paths);

  private:
    QWidget* folderRow(QLineEdit* field, const QString& caption);
    void chooseInto(QLineEdit* field, const QString& caption);
    void showMode();
    void showWhatIsSet();
    void applyFields();

    Desktop& desktop_;
    const std::function<void()> scan_;
    design::SegmentedChoice* mode_;
    QLineEdit* combined_;
    QLineEdit* video_;
    QLineEdit* audio_;
    QWidget* combinedRow_;
    QWidget* videoRow_;
    QWidget* audioRow_;
    QLabel* more_;
    QPushButton* start_;
    QStringList moreFolders_;
    platform::Subscription observation_;
};

} // namespace orvane::views
