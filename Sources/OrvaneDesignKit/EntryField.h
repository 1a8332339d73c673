#pragma once

#include <QWidget>

#include <functional>

class QHBoxLayout;
class QLabel;
class QLineEdit;

namespace orvane::design {

/// A field for one value. Return and leaving the field commit the typed text; Escape restores the shown
/// value. An error in the text is shown below it until the text is changed.
class EntryField : public QWidget {
  public:
    /// Returns what is wrong with the text; empty if it was accepted.
    using Commit = std::function<QString(const QString& text)>;
    EntryField(const QString& accessibleName, Commit commit, QWidget* parent = nullptr);

    /// Adds buttons for one step less and one more; the up and down arrow keys do the same. `what` is one
    /// step, such as "1 frame".
    void setSteps(const QString& what, std::function<void(int direction)> step);
    /// The text that an empty field shows, selected, when it gets the keyboard focus. If it is not changed,
    /// the field stays empty.
    void setProposal(const QString& proposal);
    /// Shows the current value. Does not change a text that is being typed.
    void show(const QString& value);
    void setProblem(const QString& problem);
    QString problem() const;
    QLineEdit* line() const { return line_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void commit();
    void restore();
    void propose();
    /// Whether it shows the proposal unchanged.
    bool isProposing() const;

    const Commit commit_;
    std::function<void(int)> step_;
    QString shown_, proposal_;
    QHBoxLayout* row_;
    QLineEdit* line_;
    QLabel* problem_;
};

} // namespace orvane::design
