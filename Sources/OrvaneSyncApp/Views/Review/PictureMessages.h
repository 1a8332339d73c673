#pragma once

#include <QFrame>

#include <functional>
#include <vector>

class QBoxLayout;
class QPushButton;

namespace orvane::views {

/// The messages over the top of a picture: one of them at a time, the newest first, so that little of the
/// picture is covered; with several, a button shows the next one. It has no height without a message.
class PictureMessages : public QWidget {
  public:
    /// `places`: how many widgets can show messages.
    explicit PictureMessages(int places, QWidget* parent = nullptr);

    /// The layout for the widget of one place, from 0. The widget shows and hides itself, and may be moved to
    /// another window's part.
    QBoxLayout* place(int index) const;
    std::function<void(int height)> whenHeightChanged;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    /// Notes whether the place has a message.
    void note(QWidget* place, bool isFilled);
    void showNext();
    void arrange();

    std::vector<QWidget*> places_;
    std::vector<QWidget*> filled_; ///< the places with a message, the newest last
    QWidget* shown_ = nullptr;
    QFrame* counter_;
    QPushButton* next_;
};

} // namespace orvane::views
