#pragma once

#include "OrvaneDesignKit/Controls.h"

#include <QDialog>

class QSlider;
class QSpinBox;

namespace orvane::design {

/// A dialog over the window: title, contents, a line for the result, and its buttons at the bottom right, the
/// main one last. Escape closes it.
class Sheet : public QDialog {
  public:
    explicit Sheet(const QString& title, QWidget* parent = nullptr);

    void add(QWidget* control, int stretch = 0);
    void add(QLayout* controls);
    /// Adds a control at the left of the row of buttons.
    void addAside(QWidget* control);
    /// Lines to read, which a button at the side copies to the clipboard. `name`: the accessible name.
    void addCopyableList(const QStringList& lines, const QString& name);
    /// The last added button is the main one.
    QPushButton* addButton(const QString& text, Weight weight = Weight::normal);
    /// Closes the sheet.
    QPushButton* addClose(const QString& text);
    Banner& outcome() { return *outcome_; }
    /// Opens over its window and is destroyed when it is closed.
    void present();

  private:
    QVBoxLayout* contents_;
    QHBoxLayout* buttons_;
    Banner* outcome_;
};

/// A slider with a field that shows and accepts the number. Keys move it by a step.
class SliderField : public QWidget {
  public:
    struct Range {
        int lowest, highest, step;
    };
    SliderField(const QString& accessibleName, Range range, const QString& unit,
                std::function<void(int)> changed, QWidget* parent = nullptr);
    void setValue(int value);
    int value() const;

  private:
    QSlider* slider_;
    QSpinBox* field_;
    Range range_;
};

/// Shows for three seconds what was just done; it replaces an earlier text. An empty text only removes it.
/// The text is at the bottom of the window, or of the visible part of it that `setToastPlace` has named.
void showToast(QWidget* window, const QString& text);
/// Hides the toast before its time if it shows this text.
void hideToast(QWidget* window, const QString& text);
/// Names a part of a window that brief texts may cover, such as a picture, so that they cover no control.
void setToastPlace(QWidget* part);

} // namespace orvane::design
