#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QString>

class QWidget;

namespace orvane::views {

/// Tells the desktop when long work has ended while nobody looked at the window: a scan, an analysis. Through
/// the desktop's own notifications (org.freedesktop.Notifications); without them nothing. Interface thread.
class Notifier {
  public:
    /// Sends one; another one in tests.
    using Send = std::function<void(const QString& title, const QString& text)>;
    Notifier(Desktop& desktop, QWidget& window, Send send = sendToDesktop);

    static void sendToDesktop(const QString& title, const QString& text);

  private:
    void follow(ImportField field);
    void tell(const QString& text);

    Desktop& desktop_;
    QWidget& window_;
    const Send send_;
    bool isScanning_ = false;
    bool isAnalysing_ = false;
    platform::Subscription observation_;
};

} // namespace orvane::views
