#pragma once

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneDesignKit/IgnoresWheel.h"

#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolBar>

#include <functional>
#include <map>
#include <vector>

class QHBoxLayout;
class QVBoxLayout;

/// The controls of the windows. All texts passed to them are ready for people. A callback runs on the
/// interface thread.
namespace orvane::design {

enum class Weight { normal, primary, quiet };
QPushButton* button(const QString& text, Weight weight = Weight::normal);
QPushButton* button(const QString& text, Glyph glyph, Weight weight = Weight::normal);
/// Gives a button the weight of a primary one, or normal weight again.
void setPrimary(QPushButton* button, bool isPrimary);

QLabel* title(const QString& text);
QLabel* label(const QString& text);
/// Smaller and less prominent text.
QLabel* facts(const QString& text);

/// One line to type into.
QLineEdit* field(const QString& accessibleName, const QString& placeholder = {});
/// With a magnifying glass, and a cross that clears it.
QLineEdit* searchField(const QString& accessibleName, const QString& placeholder);

/// A choice from a list. The wheel scrolls its open list, and does nothing while the list is closed.
class Choice : public IgnoresWheel<QComboBox> {
  public:
    explicit Choice(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

/// The tools of a window. If it is too narrow for every text, tools of the lowest rank lose theirs first;
/// tooltips and accessible names stay.
class ToolRow : public QToolBar {
  public:
    explicit ToolRow(const QString& name, QWidget* parent = nullptr);
    void add(QAction* action, const QString& word, int rank);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void fit();

    std::multimap<int, QAction*> byRank_;
};

/// A signal's glyph and text in its colour.
class Badge : public QWidget {
  public:
    explicit Badge(Signal signal = Signal::none, const QString& text = {}, QWidget* parent = nullptr);
    void show(Signal signal, const QString& text);
    QSize sizeHint() const override;

    /// For lists without a widget for each row. Returns the width of the painted badge.
    static int paint(QPainter& painter, const QRect& within, Signal signal, const QString& text,
                     const QColor& textColour);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Signal signal_;
    QString text_;
};

/// Shows what happened and what to do, with a button for that. Hidden without a message. A new message
/// replaces the one that is shown, except one that is kept: that one is shown again after the new one.
class Banner : public QFrame {
  public:
    explicit Banner(QWidget* parent = nullptr);
    /// A button without a text is not shown.
    void show(Signal signal, const QString& text, const QString& buttonText = {},
              std::function<void()> action = {}, const QString& otherText = {},
              std::function<void()> otherAction = {});
    /// Keeps the message that is shown until the user closes it, or `remove` or `clearAll` is called: for a
    /// message that the user cannot call up again.
    void keep();
    /// Removes the message that is shown, unless it is kept.
    void clear();
    /// Removes the message with this text, also if it is not shown at the moment.
    void remove(const QString& text);
    void clearAll();
    /// Moves the keyboard focus to the button, if there is one.
    void focusButton();
    // Those of the message that is shown.
    QString text() const { return text_->text(); }
    Signal signal() const { return shown_.signal; } ///< none: requires no action
    bool isKept() const { return shown_.isKept; }

  private:
    struct Message {
        Signal signal = Signal::none;
        QString text, actionText, otherText;
        std::function<void()> action, otherAction;
        bool isKept = false;
    };
    void present(Message message);
    void showEarlier();

    Message shown_;
    std::vector<Message> earlier_; ///< kept messages below the one that is shown, the newest last
    QLabel* glyph_;
    QLabel* text_;
    QPushButton *action_, *other_;
};

/// What an empty area shows: what it is for, and what to do next.
class EmptyState : public QWidget {
  public:
    EmptyState(Glyph glyph, const QString& title, const QString& text, QWidget* parent = nullptr);
    void setTexts(const QString& title, const QString& text);
    /// Below the text.
    void add(QWidget* control);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    /// Hides the glyph before a text would be cut.
    void fit();

    QLabel* picture_;
    QLabel* title_;
    QLabel* text_;
    QVBoxLayout* layout_;
};

/// A choice of a few, side by side.
class SegmentedChoice : public QWidget {
  public:
    SegmentedChoice(const QString& accessibleName, const std::vector<QString>& choices,
                    std::function<void(int)> chosen, QWidget* parent = nullptr);
    void setText(int index, const QString& text);
    /// An explanation of a choice, as its tooltip and for screen readers.
    void setHint(int index, const QString& hint);
    void choose(int index);
    int chosen() const;

  private:
    std::vector<QPushButton*> buttons_;
};

/// A titled part of a screen, with its controls below each other.
class Section : public QFrame {
  public:
    explicit Section(const QString& title, QWidget* parent = nullptr);
    void add(QWidget* control);
    void add(QLayout* controls);

  private:
    QVBoxLayout* layout_;
};

} // namespace orvane::design
