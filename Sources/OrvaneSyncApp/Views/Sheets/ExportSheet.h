#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QDialog>

#include <functional>
#include <optional>

class QCheckBox;
class QComboBox;
class QScrollArea;

namespace orvane::views {

/// What will be written, what will not and why, the options that people change most, and where to. Stays open
/// with the warnings after the export.
class ExportSheet : public QDialog {
  public:
    explicit ExportSheet(Desktop& desktop, QWidget* parent = nullptr);
    /// Ends an export that is under way.
    void reject() override;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    /// A window is no smaller than its texts need, which depends on how they wrap, unless the screen is.
    void fitHeight();
    /// Why nothing was written.
    void refuse(design::Signal signal, const QString& why, const QString& answer = {},
                std::function<void()> action = {});
    QWidget* makeOptions();
    QWidget* makeDestination();
    void showForecast();
    void showVersion();
    void choosePlace();
    void write();
    void writeTo(const QString& place);
    /// The button beside "Export": while the document is written, it stops that.
    void stopOrClose();
    void written(const JSON& answer);
    /// The button that Return presses, which is the coloured one.
    void answerWith(QPushButton* chosen);
    void setOption(std::string_view key, JSON value);

    Desktop& desktop_;
    QLineEdit* event_;
    QPushButton* suggestion_;
    QLabel* forecast_;
    QLabel* leftOut_;
    QLineEdit* place_;
    QCheckBox* openWhenDone_;
    QComboBox* version_;
    QLabel* versionNote_;
    QPushButton* write_;
    QPushButton* close_;
    design::Banner* outcome_;
    QScrollArea* sections_;
    QLabel* warnings_;
    QString missing_; ///< media of the document that are not there; empty until that was looked at
    std::optional<platform::Task> writing_;
    bool isPlaceGiven_ = false; ///< by hand
    bool mayReplace_ = false;   ///< the user has agreed to replace this file
    platform::Subscription observation_;
};

} // namespace orvane::views
