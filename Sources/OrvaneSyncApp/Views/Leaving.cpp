#include "OrvaneSyncApp/Views/Leaving.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace orvane::views {

namespace {

constexpr int looksOfStall = 10;

/// Holds the number of clips with changes that were not saved, and the time of the last change, in
/// milliseconds since 1970.
QString leftUnsavedKey(const UUID& session) { return QStringLiteral("unsaved/") + text(session.text()); }

qlonglong milliseconds(Date date) { return date.time_since_epoch().count(); }

/// The path in a message of the form "groups.json: can't write PATH: why".
std::string pathIn(std::string_view failure) {
    const std::size_t begin = failure.find('/');
    const std::size_t end = begin == std::string_view::npos ? begin : failure.find(": ", begin);
    return end == std::string_view::npos ? std::string() : std::string(failure.substr(begin, end - begin));
}

} // namespace

QString whyNotSaved(const std::string& failure) {
    // Shows only the folder of all sessions, because the folders in it have ids as names.
    std::string place = pathIn(failure);
    if (const std::size_t own = place.find(".orvanesync"); own != std::string::npos)
        place = place.substr(0, place.rfind('/', own));
    const QString disk = text(platform::text::printable(place));
    const auto says = [&](std::string_view words) { return failure.find(words) != std::string::npos; };
    if (!place.empty() && (says("No space left on device") || says("Disk quota exceeded")))
        return QObject::tr("the disk with %1 is full. Free space there").arg(disk);
    if (!place.empty() && says("Read-only file system"))
        return QObject::tr("the disk with %1 can only be read. Make it writable").arg(disk);
    return translatedSentence(failure);
}

int takeLeftUnsaved(const SessionInfo& session) {
    const QString key = leftUnsavedKey(session.id);
    const QVariantList left = design::keptState::value(key).toList();
    if (left.size() != 2) return 0;
    design::keptState::remove(key);
    const bool isSavedSince = milliseconds(session.modified) >= left[1].toLongLong();
    return isSavedSince ? 0 : left[0].toInt();
}

Leaving::Leaving(Desktop& desktop, QWidget& window, std::function<void()> end,
                 std::chrono::milliseconds checkInterval)
    : desktop_(desktop), window_(window), end_(std::move(end)) {
    look_.setInterval(checkInterval);
    QObject::connect(&look_, &QTimer::timeout, &window_, [this] {
        const std::string path = writes_.look(looksOfStall);
        if (path.empty()) return;
        look_.stop();
        ask(text(platform::text::printable(path)));
    });
    observation_ = desktop_.sessions().onChange([this](SessionField field) {
        if (field != SessionField::lastSaveError || desktop_.sessions().lastSaveError() || !box_) return;
        closeBox();
        begin();
    });
}

void Leaving::begin() {
    isAsked_ = true;
    writes_ = {};
    look_.start();
    desktop_.sessions().flush().whenDone([this, window = QPointer(&window_)](const std::exception_ptr&) {
        if (!window || !isAsked_) return;
        const bool isSaved = !desktop_.sessions().lastSaveError();
        if (box_ && !isSaved) return; // the user is asked already
        look_.stop();
        if (!isSaved) return ask({});
        closeBox(); // a write without progress has ended after all
        isAsked_ = false;
        end_();
    });
}

void Leaving::closeBox() {
    QMessageBox* const box = box_;
    box_.clear();
    if (box != nullptr) box->close();
}

void Leaving::ask(const QString& stalled) {
    if (box_) return;
    const auto unsaved = desktop_.sessions().unsaved();
    const std::string failure = desktop_.sessions().lastSaveError().value_or("");
    std::size_t clips = 0;
    QStringList names;
    for (const auto& one : unsaved) {
        clips += one.clips;
        names << QStringLiteral("“%1”").arg(text(one.name));
    }
    const QString why = stalled.isEmpty()
                            ? whyNotSaved(failure)
                            : QObject::tr("the disk or share with %1 does not answer").arg(stalled);
    const QString what =
        clips > 0 ? QObject::tr("What was decided of %1 in the session %2 is not on the disk yet")
                        .arg(translatedSentence(counted(static_cast<long long>(clips), "clip", "clips")),
                             names.join(QStringLiteral(", ")))
        : !names.isEmpty()
            ? QObject::tr("The session %1 is not on the disk yet").arg(names.join(QStringLiteral(", ")))
            : QObject::tr("The list of folders is not on the disk yet");
    window_.show();
    box_ = new QMessageBox(QMessageBox::NoIcon, QObject::tr("Not everything could be saved"),
                           QObject::tr("Not everything could be saved"), QMessageBox::NoButton, &window_);
    box_->setAttribute(Qt::WA_DeleteOnClose);
    box_->setInformativeText(what + QStringLiteral(": ") + why + QStringLiteral("."));
    QPushButton* again = box_->addButton(QObject::tr("Try Again"), QMessageBox::AcceptRole);
    const QPushButton* elsewhere =
        clips > 0 ? box_->addButton(QObject::tr("Save Elsewhere…"), QMessageBox::ActionRole) : nullptr;
    const QPushButton* quit = box_->addButton(QObject::tr("Quit Anyway"), QMessageBox::DestructiveRole);
    QPushButton* stay = box_->addButton(QObject::tr("Keep Working"), QMessageBox::RejectRole);
    box_->setDefaultButton(again);
    box_->setEscapeButton(stay);
    QObject::connect(
        box_, &QMessageBox::buttonClicked, &window_,
        [this, again, elsewhere, quit](const QAbstractButton* answer) {
            box_.clear();
            if (answer == again) return begin();
            if (elsewhere != nullptr && answer == elsewhere) return saveElsewhere();
            isAsked_ = false;
            if (answer != quit) return;
            for (const auto& one : desktop_.sessions().unsaved()) // what was saved meanwhile is not in it
                if (const SessionInfo* session = desktop_.sessions().session(one.id))
                    design::keptState::set(
                        leftUnsavedKey(one.id),
                        QVariantList{static_cast<int>(one.clips), milliseconds(session->modified)});
            end_();
        },
        Qt::QueuedConnection);
    // The window frame closes the box without a button: the user keeps working. `box_` is null if the program
    // itself closes it.
    QObject::connect(box_, &QMessageBox::finished, &window_, [this, box = box_.data()] {
        if (box_ != box || box->clickedButton() != nullptr) return;
        box_.clear();
        isAsked_ = false;
    });
    box_->open();
}

void Leaving::saveElsewhere() {
    isAsked_ = false; // a save that succeeds while the folder is chosen must not end the program
    const QString folder =
        QFileDialog::getExistingDirectory(&window_, QObject::tr("Choose a folder on another disk"), QString(),
                                          QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
    if (folder.isEmpty() || desktop_.sessions().unsaved().empty()) return begin();
    desktop_.sessions()
        .saveCopies(utf8(folder))
        .whenDone([this, folder, window = QPointer(&window_)](const std::exception_ptr& raised) {
            if (!window) return;
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const std::exception& why) {
                tell(&window_, QObject::tr("The session could not be saved there"), whyNotSaved(why.what()));
                return;
            }
            if (isAgreed(&window_, QObject::tr("The session was saved in %1").arg(folder),
                         QObject::tr("Once there is room again, drop its folder (its name ends with "
                                     ".orvanesync) on the window: it is open then as it is now."),
                         QObject::tr("Quit"), QObject::tr("Keep Working")))
                end_();
        });
}

} // namespace orvane::views
