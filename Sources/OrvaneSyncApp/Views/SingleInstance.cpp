#include "OrvaneSyncApp/Views/SingleInstance.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QLocalSocket>
#include <QStandardPaths>

#include <unistd.h>

namespace orvane::views {

namespace {

constexpr int patience = 500;                 // milliseconds
constexpr qint64 mostBytes = qint64{1} << 20; // that a later program may say

} // namespace

SingleInstance::SingleInstance(QString name) : name_(std::move(name)) {}

QString SingleInstance::ownName() {
    const QString where =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QString::number(::getuid());
    return QStringLiteral("orvanesync-") +
           QString::fromLatin1(
               QCryptographicHash::hash(where.toUtf8(), QCryptographicHash::Sha256).toHex().left(16));
}

bool SingleInstance::handOver(const QStringList& words) {
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(patience)) return false;
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream << words;
    socket.write(message);
    if (!socket.waitForBytesWritten(patience)) return false;
    // The first one answers when it has them: it may be one that hangs.
    return socket.waitForReadyRead(patience);
}

bool SingleInstance::listen(std::function<void(const QStringList& words)> taken) {
    server_ = std::make_unique<QLocalServer>();
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(name_)) {
        // Left by a program that was killed: nobody answered there.
        QLocalServer::removeServer(name_);
        if (!server_->listen(name_)) return false;
    }
    QObject::connect(server_.get(), &QLocalServer::newConnection, server_.get(),
                     [server = server_.get(), taken = std::move(taken)] {
                         while (QLocalSocket* socket = server->nextPendingConnection()) {
                             QObject::connect(socket, &QLocalSocket::disconnected, socket,
                                              &QObject::deleteLater);
                             QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket, taken] {
                                 if (socket->bytesAvailable() > mostBytes) return socket->abort();
                                 QDataStream stream(socket);
                                 stream.startTransaction();
                                 QStringList words;
                                 stream >> words;
                                 if (!stream.commitTransaction()) return; // more is on its way
                                 socket->write("1");
                                 socket->flush();
                                 taken(words);
                             });
                         }
                     });
    return true;
}

} // namespace orvane::views
