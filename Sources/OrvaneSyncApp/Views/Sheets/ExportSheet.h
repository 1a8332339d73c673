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

/// Shows what will be exported, what will not and why, the options that are changed most often, and the file.
/// Stays open after the export, with the warnings.
class ExportSheet : public QDialog {
  public:
    explicit ExportSheet(Desktop& desktop, QWidget* parent = nullptr);
    /// Also stops an export that is running.
    void reject() override;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    /// Sets the height to what the texts need, which depends on how they wrap; limited by the screen.
    void fitHeight();
    void moveIntoWindow();
    /// Shows why nothing was written; `answer` is the text of a button that calls `action`.
    void refuse(design::Signal signal, const QString& why, const QString& answer = {},
                std::function<void()> action = {});
    QWidget* makeOptions();
    QWidget* makeDestination();
    void showForecast();
    void choosePlace();
    void write();
    void writeTo(const QString& place);
    /// The button beside "Export": stops the export while it is running, otherwise closes the sheet.
    void stopOrClose();
    void written(const JSON& answer);
    /// Makes this button the one that Return presses; it is shown in colour.
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
    QPushButton* write_;
    QPushButton* close_;
    design::Banner* outcome_;
    QScrollArea* sections_;
    QLabel* warnings_;
    QPushButton* copy_;
    QString allWarnings_; ///< with the names of all files
    QString missing_;     ///< media of the document that do not exist; empty until they were checked
    std::optional<platform::Task> writing_;
    bool isPlaceGiven_ = false; ///< by the user
    bool mayReplace_ = false;   ///< the user has agreed to replace this file
    platform::Subscription observation_;
};

} // namespace orvane::views
