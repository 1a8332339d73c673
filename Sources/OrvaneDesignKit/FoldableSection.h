#pragma once

#include <QFrame>

class QPushButton;
class QVBoxLayout;

namespace orvane::design {

/// A titled part of a panel that folds to its title, with a short summary beside the title. Whether it is
/// folded is kept for the user under its name (`keptState`).
class FoldableSection : public QFrame {
  public:
    /// `name`: the key in the kept state, such as "sync".
    FoldableSection(const QString& name, const QString& title, QWidget* parent = nullptr);

    bool isFolded() const;
    void setFolded(bool isFolded);
    /// Shown after the title; empty: none.
    void setSummary(const QString& summary);

  protected:
    /// The layout for the controls, below each other.
    QVBoxLayout* body() { return bodyLayout_; }

  private:
    void showTitle();

    const QString name_;
    const QString title_;
    QString summary_;
    QPushButton* header_;
    QWidget* body_;
    QVBoxLayout* bodyLayout_;
};

} // namespace orvane::design
