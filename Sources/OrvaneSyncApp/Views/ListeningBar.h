#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QFrame>

#include <functional>

class QLabel;
class QProgressBar;

namespace orvane::views {

/// Shows how far the listening to the cards is, with a button that stops it. Hidden while nobody listens.
class ListeningBar : public QFrame {
  public:
    explicit ListeningBar(Desktop& desktop, QWidget* parent = nullptr);
    /// Has some clips of each card listened to.
    void listen();
    bool isListening() const;

    /// With what came of it.
    std::function<void(const QString& text)> whenHeard;
    std::function<void()> whenChanged; ///< begun or ended

  private:
    void showProgress();

    Desktop& desktop_;
    QLabel* text_;
    QProgressBar* bar_;
    std::size_t total_ = 0; ///< clips of the last listening
    platform::Subscription observation_;
};

} // namespace orvane::views
