#include "OrvaneSyncApp/Views/StartView.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/Views/DemoShoot.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int widestForm = 720;

} // namespace

QString decisionsText(const ClipDecisions& decisions) {
    QStringList parts;
    const auto add = [&](int count, const QString& what) {
        if (count > 0) parts << what.arg(count);
    };
    add(decisions.locked, QObject::tr("%1 locked"));
    add(decisions.approved, QObject::tr("%1 approved"));
    add(decisions.otherwise, QObject::tr("%1 changed by hand"));
    add(decisions.claps, QObject::tr("%1 with only a clap point"));
    add(decisions.removed, QObject::tr("%1 removed"));
    add(decisions.described, QObject::tr("%1 with metadata"));
    return parts.join(QStringLiteral(", "));
}

QString lastCardSetting() { return QStringLiteral("lastCard"); }

StartView::StartView(Desktop& desktop, std::function<void()> scan, std::function<void()> back,
                     QWidget* parent)
    : QWidget(parent), desktop_(desktop), scan_(std::move(scan)), back_(std::move(back)) {
    auto* outer = new QVBoxLayout(this);
    outer->addStretch(1);
    auto* column = column_ = new QWidget;
    column->setMaximumWidth(widestForm);
    auto* rows = new QVBoxLayout(column);
    rows->setSpacing(space::medium);
    rows->addWidget(title(tr("Sound under every clip")));
    rows->addWidget(welcome_ = makeWelcome());

    rows->addWidget(makeFolders());
    rows->addWidget(lost_ = new Remark);
    lost_->setObjectName(QStringLiteral("lost"));
    rows->addLayout(makeButtons());
    rows->addWidget(makeRecent());
    outer->addWidget(column, 0, Qt::AlignHCenter);
    column->setMinimumWidth(std::min(widestForm, 600));
    outer->addStretch(2);

    connectFields();
    observation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::videoFolderURL || field == ImportField::audioFolderURL ||
            field == ImportField::scanScope)
            showWhatIsSet();
        if (field == ImportField::syncGroups) showWayBack();
    });
    sessionObservation_ = desktop_.sessions().onChange([this](SessionField) { showRecent(); });
    showRecent();
    showWhatIsSet();
}

QWidget* StartView::makeFolders() {
    auto* section = new Section(tr("Folders"));
    mode_ = new SegmentedChoice(tr("Folders of the shoot"),
                                {tr("One folder with both"), tr("Picture and sound apart")}, [this](int) {
                                    showMode();
                                    applyFields();
                                });
    section->add(mode_);
    combined_ = field(tr("Folder with picture and sound"), tr("Folder with picture and sound"));
    video_ = field(tr("Video folder"), tr("Video folder"));
    audio_ = field(tr("Audio folder"), tr("Audio folder"));
    section->add(combinedRow_ = folderRow(combined_, tr("Folder with picture and sound")));
    section->add(videoRow_ = folderRow(video_, tr("Video folder")));
    section->add(audioRow_ = folderRow(audio_, tr("Audio folder")));
    section->add(refused_ = new Remark);
    refused_->setObjectName(QStringLiteral("refused"));
    moreRow_ = new QWidget;
    auto* moreLine = new QHBoxLayout(moreRow_);
    moreLine->setContentsMargins(0, 0, 0, 0);
    moreLine->addWidget(more_ = facts({}), 1);
    auto* leaveOut = button({}, Glyph::cross, Weight::quiet);
    leaveOut->setAccessibleName(tr("Leave the further folders out"));
    leaveOut->setToolTip(tr("Leave the further folders out"));
    connect(leaveOut, &QPushButton::clicked, this, [this] {
        moreFolders_.clear();
        applyFields();
    });
    moreLine->addWidget(leaveOut);
    section->add(moreRow_);
    return section;
}

QLayout* StartView::makeButtons() {
    auto* buttons = new QHBoxLayout;
    toClips_ = button(tr("Back to the Clips"), Glyph::back);
    toClips_->setToolTip(tr("Leaves the open clips as they are"));
    connect(toClips_, &QPushButton::clicked, this, [this] { back_(); });
    buttons->addWidget(toClips_);
    buttons->addStretch(1);
    start_ = button(tr("Scan && Match"), Weight::primary);
    start_->setToolTip(tr("Scan and match media files"));
    start_->setAutoDefault(true); // so that Return presses it
    buttons->addWidget(start_);
    connect(start_, &QPushButton::clicked, this, [this] { scanWhenApplied(); });
    return buttons;
}

void StartView::connectFields() {
    for (QLineEdit* one : {combined_, video_, audio_}) {
        connect(one, &QLineEdit::textEdited, this, [this] {
            refused_->show(Signal::missing, {});
            fitHeight();
            showStart();
        });
        // A field also loses the focus when a scan begins; only a field that was edited is applied.
        connect(one, &QLineEdit::editingFinished, this, [this, one] {
            if (!one->isModified()) return;
            one->setModified(false);
            applyFields();
        });
        connect(one, &QLineEdit::returnPressed, this, [this, one] {
            one->setModified(false); // afterwards the field also emits that its editing has ended
            applyFields(scan_);
        });
    }
}

QWidget* StartView::makeWelcome() {
    auto* part = new QWidget;
    auto* rows = new QVBoxLayout(part);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(facts(
        tr("Choose the camera and sound folders of a shooting day, or drop them anywhere in this window.\n"
           "Every clip gets its recording by timecode; nothing is changed on the cards.\n"
           "Look at what is in doubt, correct it, and export one document for Final Cut Pro.")));
    auto* row = new QHBoxLayout;
    row->addWidget(demo_ = button(tr("Try It with a Demo Shoot"), Glyph::film));
    demo_->setToolTip(tr("Makes two cameras and a recorder of a small shooting day, and scans them"));
    connect(demo_, &QPushButton::clicked, this, [this] { makeDemo(); });
    demo_->hide();
    DemoShoot::whenAvailable(this, [this] { demo_->show(); });
    row->addWidget(cancelDemo_ = button(tr("Cancel")));
    cancelDemo_->hide();
    connect(cancelDemo_, &QPushButton::clicked, this, [this] { DemoShoot::cancel(this); });
    row->addWidget(demoState_ = facts({}), 1);
    rows->addLayout(row);
    return part;
}

void StartView::showWelcome() {
    isWelcomeWanted_ = true;
    welcome_->show();
    demo_->setFocus();
}

void StartView::makeDemo() {
    demo_->setEnabled(false);
    cancelDemo_->show();
    demoState_->setText(tr("Making the demo shoot…"));
    DemoShoot::make(
        this, [this](const QString& step) { demoState_->setText(tr("Making the demo shoot: %1").arg(step)); },
        [this](const QString& folder, const QString& failure) {
            demo_->setEnabled(true);
            cancelDemo_->hide();
            demoState_->setText(failure);
            if (folder.isEmpty()) return;
            takeFolders({folder}, scan_);
        });
}

QWidget* StartView::makeRecent() {
    recent_ = new Section(tr("Recent sessions"));
    recent_->setObjectName(QStringLiteral("recent"));
    return recent_;
}

void StartView::showRecent() {
    constexpr std::size_t most = 5;
    const auto& sessions = desktop_.sessions().sessions();
    welcome_->setVisible(sessions.empty() || isWelcomeWanted_);
    recent_->setVisible(!sessions.empty());
    // Not deleted at once, because this may be called from one of its buttons.
    if (recentRows_ != nullptr) {
        recentRows_->hide();
        recentRows_->deleteLater();
    }
    recentRows_ = new QWidget;
    auto* rows = new QVBoxLayout(recentRows_);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    for (std::size_t i = 0; i < std::min(most, sessions.size()); ++i) {
        const SessionInfo& session = sessions[i];
        auto* row = new QHBoxLayout;
        const QString name = text(session.name);
        auto* open = button(fontMetrics()
                                .elidedText(name, Qt::ElideMiddle, widestForm / 2)
                                .replace(QLatin1Char('&'), QStringLiteral("&&")),
                            Glyph::session, Weight::quiet);
        open->setToolTip(tr("Opens the session “%1”").arg(name));
        open->setAccessibleName(tr("Opens the session “%1”").arg(name));
        row->addWidget(open, 1);
        QLabel* about = facts(tr("%1, %2 clips, %3 locked")
                                  .arg(dayText(session.modified))
                                  .arg(session.groupCount)
                                  .arg(session.lockedCount));
        if (session.folder) about->setText(text(*session.folder) + QStringLiteral("  ·  ") + about->text());
        about->setWordWrap(false);
        row->addWidget(about);
        rows->addLayout(row);
        connect(open, &QPushButton::clicked, this, [this, id = session.id] {
            JSON arguments = JSON::object();
            arguments.set("sessionId", id.text());
            desktop_.run("loadSession", std::move(arguments));
        });
    }
    recent_->add(recentRows_);
}

QWidget* StartView::folderRow(QLineEdit* field, const QString& caption) {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field, 1);
    auto* choose = button(tr("Choose…"), Glyph::folder);
    choose->setAccessibleName(tr("Choose: %1").arg(caption));
    layout->addWidget(choose);
    connect(choose, &QPushButton::clicked, this, [this, field, caption] { chooseInto(field, caption); });
    return row;
}

void StartView::chooseInto(QLineEdit* field, const QString& caption) {
    const QString key = lastCardSetting();
    const QString from =
        field->text().isEmpty() ? design::keptState::value(key, QDir::homePath()).toString() : field->text();
    const QString chosen = QFileDialog::getExistingDirectory(this, caption, from);
    if (chosen.isEmpty()) return;
    design::keptState::set(key, chosen);
    field->setText(chosen);
    applyFields([this] { start_->setFocus(); }); // so that Return scans
}

void StartView::takeFolders(const QStringList& paths, std::function<void()> then) {
    if (paths.isEmpty()) return;
    moreFolders_ = paths.mid(2);
    if (paths.size() == 1) {
        mode_->choose(0);
        combined_->setText(paths.first());
    } else {
        mode_->choose(1);
        video_->setText(paths[0]);
        audio_->setText(paths[1]);
    }
    showMode();
    applyFields(std::move(then));
}

QStringList StartView::named() const {
    QStringList all;
    for (const QLineEdit* one : mode_->chosen() == 0 ? QList{combined_} : QList{video_, audio_})
        if (!one->text().trimmed().isEmpty()) all << one->text().trimmed();
    return all + moreFolders_;
}

void StartView::showMode() {
    const bool isCombined = mode_->chosen() == 0;
    combinedRow_->setVisible(isCombined);
    setFocusProxy(isCombined ? combined_ : video_);
    videoRow_->setVisible(!isCombined);
    audioRow_->setVisible(!isCombined);
}

void StartView::applyFields(std::function<void()> then) {
    if (applying_) applying_->requestStop(); // the fields have changed
    whenApplied_ = std::move(then);
    const bool isCombined = mode_->chosen() == 0;
    const QString video = (isCombined ? combined_ : video_)->text().trimmed();
    const QString audio = (isCombined ? combined_ : audio_)->text().trimmed();
    JSON arguments = JSON::object();
    const auto path = [](const QString& text) {
        return text.isEmpty() ? JSON() : JSON(utf8(QDir::cleanPath(text)));
    };
    arguments.set("videoFolder", path(video));
    arguments.set("audioFolder", path(audio));
    JSON::Array more;
    for (const QString& one : moreFolders_) more.emplace_back(utf8(one));
    arguments.set("moreFolders", JSON(std::move(more)));
    const auto areTaken = std::make_shared<bool>(false);
    refused_->show(Signal::missing, {});
    fitHeight();
    applying_ = desktop_.run(
        "setFolders", std::move(arguments), [areTaken](const JSON&) { *areTaken = true; },
        [self = QPointer(this)](const QString& why) {
            if (self) self->refuse(why);
        });
    applying_->whenDone([self = QPointer(this), own = ++applications_, areTaken](const std::exception_ptr&) {
        if (!self || self->applications_ != own) return;
        self->showStart();
        const auto after = std::exchange(self->whenApplied_, nullptr);
        if (*areTaken && after && self->desktop_.isEnabled("startScan")) after();
    });
}

void StartView::refuse(const QString& why) {
    if (!isVisible() && desktop_.whenRefused) return desktop_.whenRefused(why);
    refused_->show(Signal::missing, tr("%1. Check the name, and whether the card is connected.").arg(why));
    fitHeight();
    for (QLineEdit* one : {combined_, video_, audio_})
        if (const QString path = QDir::cleanPath(one->text().trimmed());
            one->isVisible() && path != QStringLiteral(".") && why.contains(path)) {
            one->setFocus();
            return one->selectAll();
        }
}

/// The layout does not ask a centred column for its height at its width, so it is set here.
void StartView::fitHeight() {
    column_->setMinimumHeight(
        refused_->isHidden() ? 0 : column_->layout()->totalHeightForWidth(column_->width()));
}

void StartView::scanWhenApplied() {
    if (!refused_->isHidden()) // the folders of the work differ from the fields
        applyFields(scan_);
    else if (isApplying())
        whenApplied_ = scan_;
    else
        scan_();
}

/// The button is also enabled while folders are typed or checked. If they cannot be read, this is said after
/// it is pressed.
void StartView::showStart() {
    const auto isTyped = [](const QLineEdit* one) {
        return one->isVisible() && one->isModified() && !one->text().trimmed().isEmpty();
    };
    start_->setEnabled(isApplying() || std::ranges::any_of(QList{combined_, video_, audio_}, isTyped) ||
                       desktop_.isEnabled("startScan"));
}

void StartView::showWhatIsSet() {
    const OpenWork& work = desktop_.controller().work();
    const auto path = [](const std::optional<FileURL>& url) {
        return url ? text(url->pathText()) : QString();
    };
    const QString video = path(work.videoFolderURL());
    const QString audio = path(work.audioFolderURL());
    if (!video.isEmpty() || !audio.isEmpty()) mode_->choose(video == audio ? 0 : 1);
    const auto put = [](QLineEdit* field, const QString& text) {
        // Not while the user is typing into it.
        if (!field->hasFocus() || !field->isModified()) field->setText(text);
    };
    if (video == audio) put(combined_, video);
    put(video_, video);
    put(audio_, audio);
    if (video.isEmpty() && audio.isEmpty()) combined_->clear();
    const auto count = static_cast<int>(work.folders().size()) - (video == audio ? 1 : 2);
    moreRow_->setVisible(count > 0);
    QStringList more, paths;
    for (const FileURL& folder : work.scanScope().moreFolders) {
        more << text(folder.lastPathComponent());
        paths << text(folder.pathText());
    }
    more_->setText(tr("and %n more folder(s)", nullptr, count) + QStringLiteral(": ") +
                   more.join(QStringLiteral(", ")));
    more_->setToolTip(paths.join(QLatin1Char('\n')));
    moreFolders_ = paths; // also those of a session that was opened
    showMode();
    showStart();
    showWayBack();
}

void StartView::showWayBack() {
    toClips_->setVisible(!desktop_.controller().work().syncGroups().empty());
    if (isVisible()) showWhatIsLost();
}

void StartView::showWhatIsLost() {
    const QString lost = decisionsText(ClipDecisions::of(desktop_.controller()));
    const QString said =
        desktop_.controller().work().keptMatchedBy()
            ? tr("A scan replaces the open clips. What was decided (%1) can be kept with “Keep the "
                 "Decisions” after it.")
            : tr("A scan replaces the open clips. What was decided (%1) is kept for each clip whose camera "
                 "file the scan finds again.");
    lost_->show(Signal::none, lost.isEmpty() ? QString() : said.arg(lost));
}

void StartView::showEvent(QShowEvent* event) {
    showWhatIsLost();
    welcome_->setVisible(isWelcomeWanted_ || desktop_.sessions().sessions().empty());
    QWidget::showEvent(event);
}

void StartView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (!event->spontaneous()) isWelcomeWanted_ = false;
}

void StartView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !toClips_->isHidden()) return back_();
    QWidget::keyPressEvent(event);
}

} // namespace orvane::views
