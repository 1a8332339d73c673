#include "OrvaneSyncApp/Views/SingleInstance.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>
#include <QStandardPaths>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

// Uses the system's own sockets: only for this, the network library of Qt and its dependencies would be
// loaded at each start.
namespace orvane::views {

namespace {

constexpr timeval sendTimeLimit{0, 500000};
constexpr qint64 mostBytes = qint64{1} << 20; // of the message of a later program

/// A stream socket; -1 if the system could not make one.
class LocalSocket {
  public:
    explicit LocalSocket(int number) : number_(number) {}
    LocalSocket(LocalSocket&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    LocalSocket& operator=(LocalSocket&&) = delete;
    ~LocalSocket() {
        if (number_ >= 0) ::close(number_);
    }
    int get() const { return number_; }

    bool isOfThisUser() const {
        ucred other{};
        socklen_t size = sizeof other;
        return ::getsockopt(number_, SOL_SOCKET, SO_PEERCRED, &other, &size) == 0 && other.uid == ::getuid();
    }
    bool send(const QByteArray& message) const {
        for (qsizetype sent = 0; sent < message.size();) {
            const auto more = ::send(number_, message.constData() + sent,
                                     static_cast<std::size_t>(message.size() - sent), MSG_NOSIGNAL);
            if (more <= 0) return false;
            sent += more;
        }
        return true;
    }

  private:
    int number_;
};

/// An address on this machine that is not a file: it is released when its program ends, even after a crash.
class LocalAddress {
  public:
    explicit LocalAddress(const QString& name) {
        const QByteArray bytes = name.toUtf8().left(sizeof address_.sun_path - 1);
        address_.sun_family = AF_UNIX;
        std::memcpy(static_cast<char*>(address_.sun_path) + 1, bytes.constData(),
                    static_cast<std::size_t>(bytes.size()));
        size_ = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 +
                                       static_cast<std::size_t>(bytes.size()));
    }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address_); }
    socklen_t size() const { return size_; }

  private:
    sockaddr_un address_{};
    socklen_t size_ = 0;
};

/// The connection of a later program, until its message is complete.
class Caller : public QObject {
  public:
    Caller(LocalSocket socket, std::function<void(const QStringList&)> whenReceived, QObject* parent)
        : QObject(parent), socket_(std::move(socket)), whenReceived_(std::move(whenReceived)),
          ready_(socket_.get(), QSocketNotifier::Read) {
        connect(&ready_, &QSocketNotifier::activated, this, [this] { read(); });
    }

  private:
    void read() {
        std::array<char, 4096> part{};
        const auto size = ::recv(socket_.get(), part.data(), part.size(), MSG_DONTWAIT);
        if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
        if (size > 0) received_.append(part.data(), size);
        QDataStream stream(received_);
        stream.startTransaction();
        QStringList arguments;
        stream >> arguments;
        const bool isAll = size > 0 && stream.commitTransaction();
        if (!isAll && size > 0 && received_.size() <= mostBytes) return; // the rest has not arrived yet
        ready_.setEnabled(false);
        deleteLater();
        if (!isAll) return;
        socket_.send("1");
        whenReceived_(arguments);
    }

    const LocalSocket socket_;
    const std::function<void(const QStringList&)> whenReceived_;
    QSocketNotifier ready_;
    QByteArray received_;
};

} // namespace

SingleInstance::SingleInstance(QString name) : name_(std::move(name)) {}

QString SingleInstance::ownName() {
    const QString where =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QString::number(::getuid());
    return QStringLiteral("orvanesync-") +
           QString::fromLatin1(
               QCryptographicHash::hash(where.toUtf8(), QCryptographicHash::Sha256).toHex().left(16));
}

bool SingleInstance::sendToFirst(const QStringList& arguments) {
    const LocalSocket socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    for (const int direction : {SO_SNDTIMEO, SO_RCVTIMEO}) // the time limit also applies to connecting
        ::setsockopt(socket.get(), SOL_SOCKET, direction, &sendTimeLimit, sizeof sendTimeLimit);
    const LocalAddress address(name_);
    if (::connect(socket.get(), address.get(), address.size()) != 0 || !socket.isOfThisUser()) return false;
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream << arguments;
    // The first program answers after it has received the message, because it may hang.
    char answer = 0;
    return socket.send(message) && ::recv(socket.get(), &answer, 1, 0) == 1;
}

bool SingleInstance::listen(std::function<void(const QStringList& arguments)> whenReceived) {
    LocalSocket socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const LocalAddress address(name_);
    constexpr int mostWaiting = 8;
    if (::bind(socket.get(), address.get(), address.size()) != 0 || ::listen(socket.get(), mostWaiting) != 0)
        return false;
    callers_ = std::make_unique<QSocketNotifier>(socket.get(), QSocketNotifier::Read);
    const auto kept = std::make_shared<LocalSocket>(std::move(socket)); // kept as long as the notifier
    QObject::connect(callers_.get(), &QSocketNotifier::activated, callers_.get(),
                     [kept, whenReceived = std::move(whenReceived), parent = callers_.get()] {
                         LocalSocket caller(::accept4(kept->get(), nullptr, nullptr, SOCK_CLOEXEC));
                         if (caller.get() >= 0 && caller.isOfThisUser())
                             new Caller(std::move(caller), whenReceived, parent);
                     });
    return true;
}

} // namespace orvane::views
