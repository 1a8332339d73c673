#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QString>

class QWidget;

namespace orvane::views {

/// Notifies the user when long work (a scan, an analysis) has ended while the window was not in front. Uses
/// the notifications of the desktop (org.freedesktop.Notifications); without them nothing is shown. Interface
/// thread.
class Notifier {
  public:
    /// Sends one notification; replaced in tests.
    using Send = std::function<void(const QString& title, const QString& text)>;
    Notifier(Desktop& desktop, QWidget& window, Send send = sendToDesktop);

    static void sendToDesktop(const QString& title, const QString& text);

  private:
    void follow(ImportField field);
    void show(const QString& text);

    Desktop& desktop_;
    QWidget& window_;
    const Send send_;
    bool isScanning_ = false;
    bool isAnalysing_ = false;
    platform::Subscription observation_;
};

} // namespace orvane::views
