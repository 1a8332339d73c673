#pragma once

#include "OrvaneDesignKit/Controls.h"

#include <QLabel>

namespace orvane::design {

/// A wrapped text of which at most some lines are shown, until its button is pressed. An ellipsis is at the
/// end of the last line if more follow.
class FoldedText : public QLabel {
  public:
    explicit FoldedText(int mostLines, QWidget* parent = nullptr);
    /// A new text is folded again.
    void show(const QString& text);
    /// Shows all lines, or the first ones again; hidden if there are no more. The owner adds it to its
    /// layout.
    QPushButton* more() const { return more_; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void fold();

    const int mostLines_;
    QString whole_;
    QPushButton* more_;
    bool isWhole_ = false;
};

} // namespace orvane::design
