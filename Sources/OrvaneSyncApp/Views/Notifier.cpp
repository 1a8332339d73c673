#include "OrvaneSyncApp/Views/Notifier.h"

#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>
#include <QWidget>

#include <utility>

namespace orvane::views {

Notifier::Notifier(Desktop& desktop, QWidget& window, Send send)
    : desktop_(desktop), window_(window), send_(std::move(send)) {
    observation_ = desktop.controller().onChange([this](ImportField field) { follow(field); });
}

void Notifier::follow(ImportField field) {
    if (field == ImportField::scanState) {
        const ScanState state = desktop_.controller().scan().scanState();
        const bool wasScanning =
            std::exchange(isScanning_, state != ScanState::idle && state != ScanState::done);
        if (wasScanning && state == ScanState::done) {
            const OpenWork& work = desktop_.controller().work();
            show(QObject::tr("The scan is done: %1, %2 of them with sound")
                     .arg(translatedSentence(counted(work.syncGroups().size(), "clip", "clips")))
                     .arg(work.syncClipCount()));
        }
    }
    if (field == ImportField::smartAudio) {
        const bool isAnalysing = desktop_.controller().smartAudio().state().isAnalyzing;
        if (std::exchange(isAnalysing_, isAnalysing) && !isAnalysing)
            show(QObject::tr("The analysis of the sound has ended"));
    }
}

void Notifier::show(const QString& text) {
    if (!window_.isActiveWindow()) send_(QStringLiteral("OrvaneSync"), text);
}

void Notifier::sendToDesktop(const QString& title, const QString& text) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    constexpr int desktopDefaultTimeout = -1;
    call << title << 0U << QStringLiteral("orvanesync") << title << text << QStringList()
         << QVariantMap{{QStringLiteral("desktop-entry"), QStringLiteral("orvanesync")}}
         << desktopDefaultTimeout;
    bus.send(call); // without waiting for the answer
}

} // namespace orvane::views
