#pragma once

#include "OrvaneDesignKit/Controls.h"

#include <QDialog>

class QSlider;
class QSpinBox;

namespace orvane::design {

/// A dialog over the window: title, contents, a line that says what came of it, and its buttons at the bottom
/// right, the main one last. Escape closes it.
class Sheet : public QDialog {
  public:
    explicit Sheet(const QString& title, QWidget* parent = nullptr);

    void add(QWidget* control, int stretch = 0);
    void add(QLayout* controls);
    /// At the left of the row of buttons.
    void addAside(QWidget* control);
    /// Lines to read, which a button aside copies to the clipboard. `name`: for those who can't see it.
    void addCopyableList(const QStringList& lines, const QString& name);
    /// The last one that is added is the main one.
    QPushButton* addButton(const QString& text, Weight weight = Weight::normal);
    /// Closes the sheet.
    QPushButton* addClose(const QString& text);
    Banner& outcome() { return *outcome_; }
    /// Opens over its window and goes when it is closed.
    void present();

  private:
    QVBoxLayout* contents_;
    QHBoxLayout* buttons_;
    Banner* outcome_;
};

/// A slider with a field that shows and takes the number. Keys move it by a step.
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

/// Says at the foot of a window what was just done, for three seconds, in the place of what it said before.
void showToast(QWidget* window, const QString& text);

} // namespace orvane::design
