#pragma once

#include <QWidget>

#include <functional>

class QHBoxLayout;
class QLabel;
class QLineEdit;

namespace orvane::design {

/// One value to type. Return and leaving it commit what was typed, Escape brings the shown value back. What
/// is wrong with the text stands below it, until the text is changed.
class EntryField : public QWidget {
  public:
    /// Gives what is wrong with the text; empty: it was taken.
    using Commit = std::function<QString(const QString& text)>;
    EntryField(const QString& accessibleName, Commit commit, QWidget* parent = nullptr);

    /// Adds buttons for one step less and one more; the arrow keys up and down do the same. `what` is one
    /// step, such as "1 frame".
    void setSteps(const QString& what, std::function<void(int direction)> step);
    /// What an empty field begins with when it takes the keyboard, selected. Left as it is the field stays
    /// empty.
    void setProposal(const QString& proposal);
    /// The value that is in force. Leaves a text alone that is being typed.
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
    /// Whether it shows the proposal as nobody has touched it.
    bool isProposing() const;

    const Commit commit_;
    std::function<void(int)> step_;
    QString shown_, proposal_;
    QHBoxLayout* row_;
    QLineEdit* line_;
    QLabel* problem_;
};

} // namespace orvane::design
