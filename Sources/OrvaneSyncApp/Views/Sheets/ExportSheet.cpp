#include "OrvaneSyncApp/Views/Sheets/ExportSheet.h"

#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/ViewModels/Results/Questions.h"
#include "OrvaneSyncApp/ViewModels/Results/WarningWords.h"
#include "OrvaneSyncApp/ViewModels/Settings/SettingRows.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPointer>
#include <QResizeEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTime>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace orvane::views {

using namespace design;

namespace {

constexpr int exportWidth = 760; // the line of counts fits

/// The versions of the document, the newest first, and the programs that read each of them.
struct Reader {
    const char* version;
    const char* who;
};
constexpr Reader readers[] = {
    {"1.14", "read by the newest Final Cut Pro; nothing is left out"},
    {"1.13", "read by Final Cut Pro 11 and later"},
    {"1.10", "read by Final Cut Pro 10.6 and later, and by most other programs"},
    {"1.9", "for older programs; what this version has no word for is left out"},
};

const Declared<bool>* const switches[] = {&settings::generateRawMediaEvent, &settings::splitEventsByScene,
                                          &settings::wrapMOSInSyncClip, &settings::volumeKeyframes};

const QString versionKey = QStringLiteral("exportVersion");
const QString placeKey = QStringLiteral("exportFolder");

/// The texts of all warnings. A warning about several files is shown once, with the files' names below it, at
/// most `mostNames` of them. `inWords`: texts that replace some warnings.
QString grouped(const std::vector<std::string>& warnings, const std::map<std::string, std::string>& inWords,
                std::size_t mostNames) {
    QStringList lines;
    for (const WarningGroup& group : warningGroups(warnings)) {
        const auto words = inWords.find(group.text);
        lines << QStringLiteral("• ") +
                     translatedSentence(words == inWords.end() ? group.text : words->second);
        if (group.others.empty()) continue;
        QStringList names;
        for (std::size_t i = 0; i < std::min(group.others.size(), mostNames); ++i)
            names << text(group.others[i]);
        if (group.others.size() > mostNames)
            names << QObject::tr("and %1 more").arg(group.others.size() - mostNames);
        lines << QStringLiteral("   ") + QObject::tr("Likewise: %1").arg(names.join(QStringLiteral(", ")))
              << QString(); // an empty line before the next warning
    }
    return lines.join(QLatin1Char('\n')).trimmed();
}

/// The number of clips that are left out, then each reason with the first of its clips.
QString leftOutNote(const ImportController& controller) {
    std::map<std::string, std::vector<std::string>> files; // by reason
    std::size_t count = 0;
    for (const SyncGroup& clip : controller.work().syncGroups()) {
        const bool isSettled = clip.matchStatus.isSettled();
        if (isSettled && !clip.isExcludedFromExport) continue;
        ++count;
        std::string why = isSettled ? "excluded" : controller.derivedDoubts().whyUnmatched(clip.id);
        if (why.empty()) why = clip.matchStatus.label();
        files[std::move(why)].push_back(controller.work().fileNames().of(clip.video));
    }
    if (files.empty()) return {};
    if (files.size() == 1) // all in one line
        return QObject::tr("Not in the document: %1 (%2)")
            .arg(translatedSentence(firstAndMore(files.begin()->second)),
                 translatedSentence(files.begin()->first));
    QStringList lines{
        QObject::tr("Not in the document: %1").arg(translatedSentence(counted(count, "clip", "clips")))};
    for (const auto& [why, names] : files)
        lines << QStringLiteral("• %1: %2")
                     .arg(translatedSentence(why), translatedSentence(firstAndMore(names)));
    return lines.join(QLatin1Char('\n'));
}

/// An area that is as high as its contents, and scrolls if the screen is lower.
class Scrolled : public QScrollArea {
  public:
    explicit Scrolled(QWidget* contents) {
        setWidget(contents);
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return widget()->layout()->totalHeightForWidth(width); }
    QSize minimumSizeHint() const override { return {widget()->minimumSizeHint().width(), leastHeight}; }

  private:
    static constexpr int leastHeight = 160;
};

} // namespace

ExportSheet::ExportSheet(Desktop& desktop, QWidget* parent) : QDialog(parent), desktop_(desktop) {
    setWindowTitle(tr("Export FCPXML"));
    setMinimumWidth(exportWidth);
    setModal(true);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(space::medium, space::medium, space::medium, space::medium);
    rows->setSpacing(space::medium);
    rows->addWidget(title(tr("Export for Final Cut Pro")));

    auto* what = new Section(tr("Event"));
    event_ = field(tr("Event name"), tr("Event name"));
    auto* eventRow = new QHBoxLayout;
    eventRow->addWidget(event_, 1);
    suggestion_ = button({});
    suggestion_->setToolTip(tr("Fill Event Name from the scene numbers in this export"));
    eventRow->addWidget(suggestion_);
    what->add(eventRow);
    what->add(forecast_ = label(QString()));
    what->add(leftOut_ = facts({}));
    auto* contents = new QWidget;
    auto* sections = new QVBoxLayout(contents);
    sections->setContentsMargins(0, 0, 0, 0);
    sections->setSpacing(space::medium);
    sections->addWidget(what);
    sections->addWidget(makeOptions());
    sections->addWidget(warnings_ = facts({}));
    warnings_->hide();
    sections->addWidget(copy_ = button(tr("Copy All Warnings"), Weight::quiet), 0, Qt::AlignLeft);
    copy_->setToolTip(tr("Copies the warnings with the names of all files"));
    copy_->hide();
    connect(copy_, &QPushButton::clicked, this, [this] {
        QGuiApplication::clipboard()->setText(allWarnings_);
        showToast(this, tr("The warnings were copied."));
    });
    rows->addWidget(sections_ = new Scrolled(contents), 1);
    rows->addWidget(makeDestination()); // always in view, whatever the height
    rows->addWidget(outcome_ = new Banner);
    outcome_->setObjectName(QStringLiteral("outcome"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(close_ = button(tr("Cancel")));
    buttons->addWidget(write_ = button(tr("Export"), Glyph::exportDocument, Weight::primary));
    answerWith(write_);
    rows->addLayout(buttons);
    // Input after a document was written is for another document, so Return exports again.
    connect(event_, &QLineEdit::textEdited, this, [this] { answerWith(write_); });
    connect(place_, &QLineEdit::textEdited, this, [this] { answerWith(write_); });
    connect(close_, &QPushButton::clicked, this, [this] { stopOrClose(); });
    connect(write_, &QPushButton::clicked, this, [this] { write(); });
    connect(suggestion_, &QPushButton::clicked, this, [this] { event_->setText(suggestion_->text()); });

    event_->setText(text(desktop_.controller().exporting().exportSettings({}).get(settings::eventName)));
    showForecast();
    inBackground(
        this,
        [work = std::make_shared<const WorkSnapshot>(desktop_.controller())] {
            return missingMediaWarning(*work);
        },
        [this](const std::optional<std::string>& missing) {
            if (!missing) return;
            missing_ = translatedSentence(*missing);
            showForecast();
        });
    observation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::doubts) showForecast();
    });
    if (const std::size_t clips = desktop_.controller().smartAudio().outdatedCount(); clips > 0)
        outcome_->show(
            Signal::doubtful,
            tr("The settings of Smart Audio have changed. Made with other settings: the analysis of %1.")
                .arg(translatedSentence(counted(static_cast<long long>(clips), "clip", "clips"))),
            tr("Run Again"), [this] {
                desktop_.controller().smartAudio().reanalyseOutdated();
                reject();
            });
}

QWidget* ExportSheet::makeOptions() {
    auto* section = new Section(tr("Options"));
    // With the labels that the settings window uses.
    const SettingRow& trimming = settingRow(settings::trimMode.key);
    auto* length = new Choice;
    length->setAccessibleName(translated(trimming.label));
    const ExportSettings now = desktop_.controller().exporting().exportSettings({});
    for (const SettingChoice& one : trimming.choices)
        length->addItem(translated(one.text), text(*one.value.string()));
    length->setCurrentIndex(static_cast<int>(now.get(settings::trimMode)));
    connect(length, &QComboBox::activated, this, [this, length](int) {
        setOption(settings::trimMode.key, JSON(utf8(length->currentData().toString())));
    });
    auto* choices = new QFormLayout;
    choices->setHorizontalSpacing(space::medium);
    choices->setVerticalSpacing(space::small);
    choices->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    choices->addRow(translated(trimming.label), length);
    length->setToolTip(tr("Common begins with the picture and ends with the shorter of picture and sound; "
                          "overlap is what both have. The media files stay whole."));
    section->add(choices);
    version_ = new Choice;
    version_->setAccessibleName(tr("Version of the document"));
    version_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon); // texts may be cut
    for (const Reader& one : readers)
        version_->addItem(QStringLiteral("FCPXML %1: %2").arg(QLatin1String(one.version), tr(one.who)));
    version_->setCurrentIndex(std::clamp(design::keptState::value(versionKey, 0).toInt(), 0,
                                         static_cast<int>(std::size(readers)) - 1));
    connect(version_, &QComboBox::activated, this,
            [](int chosen) { design::keptState::set(versionKey, chosen); });
    choices->addRow(tr("Version"), version_);
    for (const Declared<bool>* setting : switches) {
        const SettingRow& row = settingRow(setting->key);
        auto* box = new QCheckBox(translated(row.label));
        box->setToolTip(translated(row.hint));
        box->setChecked(desktop_.settings().get(*setting));
        connect(box, &QCheckBox::toggled, this,
                [this, setting](bool isOn) { setOption(setting->key, JSON(isOn)); });
        section->add(box);
    }
    return section;
}

QWidget* ExportSheet::makeDestination() {
    auto* section = new Section(tr("Where"));
    place_ = field(tr("Document"), tr("Document"));
    // Proposes the session's name, or the event's name once the user types one, until the user chooses a
    // file.
    const QString folder = design::keptState::value(placeKey, QDir::homePath()).toString();
    const auto propose = [this, folder](const QString& name) {
        if (isPlaceGiven_) return;
        mayReplace_ = false;
        place_->setText(
            QDir(folder).filePath((name.isEmpty() ? tr("Synced") : name) + QStringLiteral(".fcpxml")));
    };
    propose(text(proposedDocumentName(
        desktop_.sessions(), desktop_.controller().exporting().exportSettings({}).get(settings::eventName))));
    connect(event_, &QLineEdit::textChanged, this, [this, propose](const QString& event) {
        if (event_->isModified() || event == suggestion_->text()) propose(text(asFileName(utf8(event))));
    });
    auto* choose = button(tr("Choose…"), Glyph::folder);
    choose->setAccessibleName(tr("Choose where the document goes"));
    connect(choose, &QPushButton::clicked, this, [this] { choosePlace(); });
    connect(place_, &QLineEdit::textEdited, this, [this] {
        mayReplace_ = false;
        isPlaceGiven_ = true;
    });
    auto* row = new QHBoxLayout;
    row->addWidget(place_, 1);
    row->addWidget(choose);
    section->add(row);
    openWhenDone_ = new QCheckBox(tr("Open with the default program when done"));
    section->add(openWhenDone_);
    return section;
}

void ExportSheet::setOption(std::string_view key, JSON value) {
    JSON arguments = JSON::object();
    arguments.set("key", key);
    arguments.set("value", std::move(value));
    desktop_.run("setSetting", std::move(arguments), [self = QPointer(this)](const JSON&) {
        if (self) self->showForecast();
    });
}

void ExportSheet::showForecast() {
    ImportController& controller = desktop_.controller();
    const OpenWork& work = controller.work();
    const ExportSettings now = controller.exporting().exportSettings({});
    const ExportPreview::Forecast forecast = controller.exporting().forecast(now);
    QString sentence =
        tr("%1 with sound, %2 without (MOS), %3")
            .arg(translatedSentence(counted(forecast.withSound, "clip", "clips")))
            .arg(forecast.withoutSound)
            .arg(translatedSentence(counted(forecast.multicams, "multicam clip", "multicam clips")));
    if (now.get(settings::splitEventsByScene))
        sentence += tr(", in %1").arg(translatedSentence(
            counted(ExportPreview::projectedEventCount(work.syncGroups(), now), "event", "events")));
    const int tracks = static_cast<int>(std::ranges::count_if(work.wildTracks(), &WildTrack::isApproved));
    if (tracks > 0)
        sentence += tr(", %1").arg(
            translatedSentence(counted(tracks, "recording without picture", "recordings without picture")));
    const auto verified = [&work](auto holds) {
        return std::ranges::count_if(work.syncGroups(), [&](const SyncGroup& clip) {
            return clip.matchStatus.isSettled() && !clip.isExcludedFromExport && holds(clip);
        });
    };
    const auto locked = verified([](const SyncGroup& clip) { return clip.isLocked; });
    const auto marked = verified([](const SyncGroup& clip) { return clip.isApproved; });
    // Short, so that it stays in one line.
    forecast_->setText(sentence + (marked > 0 ? tr(". %1 locked, %2 marked.").arg(locked).arg(marked)
                                              : tr(". %1 locked.").arg(locked)));
    QStringList notes;
    if (const auto doubtful = verified([&](const SyncGroup& clip) {
            return !clip.isLocked && controller.doubts().byGroup.contains(clip.id);
        });
        doubtful > 0)
        notes << translatedSentence(counted(doubtful, "clip", "clips") +
                                    " of the document in doubt: the list shows why under “Doubtful”");
    if (const auto several =
            verified([](const SyncGroup& clip) { return !recordingCountText(clip).empty(); });
        several > 0)
        notes << translatedSentence(counted(several, "clip", "clips") +
                                    " with several recordings: all of them are in the document");
    const auto silent = std::ranges::count_if(work.syncGroups(), [](const SyncGroup& clip) {
        return clip.isLocked && !clip.matchStatus.isSettled() && !clip.isExcludedFromExport;
    });
    if (silent > 0)
        notes << translatedSentence(counted(silent, "clip", "clips") +
                                    " locked as without sound: not in the document");
    if (!missing_.isEmpty()) notes << missing_;
    const auto coverage = ExportPreview::smartAudioCoverage(work.syncGroups(), now.smartAudioResults);
    for (const auto& said :
         {coverage.text(), coverage.choiceText(), coverage.rangesText(now.get(settings::volumeKeyframes))})
        if (said) notes << translatedSentence(*said);
    if (const QString leftOut = leftOutNote(controller); !leftOut.isEmpty()) notes << leftOut;
    leftOut_->setText(notes.join(QLatin1Char('\n')));
    leftOut_->setVisible(!notes.isEmpty());
    const auto suggested = ExportPreview::suggestedEventName(work.syncGroups());
    const QString name = suggested ? translatedSentence(*suggested) : QString();
    suggestion_->setVisible(suggested && name != event_->text());
    if (suggested) suggestion_->setText(name);
    fitHeight();
}

void ExportSheet::fitHeight() {
    constexpr int frame = 60; // points, for the frame of the window and a margin
    sections_->updateGeometry();
    const int needed = layout()->totalHeightForWidth(width());
    const int ofScreen = screen()->availableGeometry().height() - frame;
    // Not below the lower edge of the window behind it.
    const int ofWindow = parentWidget() == nullptr ? ofScreen : parentWidget()->window()->height();
    setMinimumHeight(std::min({needed, ofScreen, ofWindow}));
}

/// A sheet that has grown moves up until all of it is over the window behind it.
void ExportSheet::moveIntoWindow() {
    if (parentWidget() == nullptr || !isVisible()) return;
    const QRect behind = parentWidget()->window()->frameGeometry();
    const int below = frameGeometry().bottom() - behind.bottom();
    if (below > 0) move(x(), std::max(y() - below, screen()->availableGeometry().top()));
}

void ExportSheet::refuse(Signal signal, const QString& why, const QString& answer,
                         std::function<void()> action) {
    outcome_->show(signal, why, answer, std::move(action));
    outcome_->focusButton(); // so that pressing Return again answers
    fitHeight();
}

void ExportSheet::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    if (event->oldSize().width() != width()) fitHeight();
    if (event->oldSize().height() < height()) moveIntoWindow();
}

void ExportSheet::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    fitHeight(); // from here on the controls have the theme's sizes
}

void ExportSheet::choosePlace() {
    const QString caption = openWhenDone_->isChecked()
                                ? tr("Save FCPXML — will open with its default program")
                                : tr("Save FCPXML");
    const QString chosen =
        QFileDialog::getSaveFileName(this, caption, place_->text(), tr("FCPXML (*.fcpxml)"));
    if (chosen.isEmpty()) return;
    isPlaceGiven_ = true;
    place_->setText(chosen.endsWith(QStringLiteral(".fcpxml")) ? chosen : chosen + QStringLiteral(".fcpxml"));
    mayReplace_ = true; // the dialog has asked the user
}

void ExportSheet::write() {
    const QString place = QDir::cleanPath(place_->text().trimmed());
    write_->setEnabled(false);
    if (mayReplace_) return writeTo(place);
    inBackground(
        this, [place] { return QFileInfo::exists(place); },
        [this, place](bool isTaken) {
            if (!isTaken) return writeTo(place);
            write_->setEnabled(true);
            refuse(Signal::doubtful, tr("There is a file of this name already: %1").arg(place),
                   tr("Replace It"), [this] {
                       mayReplace_ = true;
                       outcome_->clear();
                       write();
                   });
        });
}

void ExportSheet::writeTo(const QString& place) {
    JSON arguments = JSON::object();
    arguments.set("output", utf8(place));
    arguments.set("eventName", utf8(event_->text().trimmed()));
    arguments.set("version", readers[version_->currentIndex()].version);
    if (mayReplace_) arguments.set("overwrite", true);
    outcome_->show(Signal::none, tr("The document is being written: %1").arg(place));
    close_->setText(tr("Cancel"));
    fitHeight();
    const QPointer self(this); // the sheet may be closed in the meantime
    const platform::Task writing = desktop_.run(
        "exportFCPXML", std::move(arguments),
        [self](const JSON& answer) {
            if (self) self->written(answer);
        },
        [self](const QString& why) {
            if (!self) return;
            self->refuse(Signal::missing, why);
        });
    writing_ = writing;
    writing.whenDone([self](const std::exception_ptr& raised) {
        if (!self) return;
        self->writing_.reset();
        self->write_->setEnabled(true);
        try {
            if (raised) std::rethrow_exception(raised);
        } catch (const platform::Stopped&) {
            self->outcome_->show(Signal::none, tr("The export was cancelled; no document was written."));
        } catch (const std::exception&) {
            return; // the reason has been shown
        }
    });
}

void ExportSheet::answerWith(QPushButton* chosen) {
    for (QPushButton* one : {close_, write_}) setPrimary(one, one == chosen);
    chosen->setDefault(true);
}

void ExportSheet::stopOrClose() { writing_ ? writing_->requestStop() : reject(); }

/// An export that is running is stopped, also when the program is closed. The file is never half written.
void ExportSheet::reject() {
    if (writing_) writing_->requestStop();
    QDialog::reject();
}

void ExportSheet::written(const JSON& answer) {
    const auto count = [&](const char* key) {
        const JSON* value = answer.find(key);
        return value == nullptr ? 0 : static_cast<int>(value->number().value_or(0));
    };
    if (const QString event = event_->text().trimmed(); !event.isEmpty())
        setOption(settings::eventName.key, JSON(utf8(event)));
    const QString place = QDir::cleanPath(place_->text().trimmed());
    std::vector<std::string> lines;
    if (const JSON* warnings = answer.find("warnings"); warnings != nullptr && warnings->isArray())
        for (const JSON& one : *warnings->elements())
            if (one.string() != nullptr) lines.push_back(*one.string());
    outcome_->show(
        lines.empty() ? Signal::matched : Signal::doubtful,
        tr("Written at %4: %1 and %2 in %3")
            .arg(translatedSentence(counted(count("syncClipCount"), "clip", "clips")),
                 translatedSentence(counted(count("multicamCount"), "multicam clip", "multicam clips")))
            .arg(place, QTime::currentTime().toString(QStringLiteral("HH:mm:ss"))),
        tr("Show Folder"), [this, place] {
            desktop_.openOutside(this, QUrl::fromLocalFile(QFileInfo(place).absolutePath()),
                                 [this](const QString& why) { showToast(this, why); });
        });
    const ImportController& controller = desktop_.controller();
    const auto inWords = warningsInWords(controller.doubts().summary(controller.work().syncGroups()));
    const auto withTitle = [&](std::size_t mostNames) {
        return tr("Export finished with warnings") + QLatin1Char('\n') + grouped(lines, inWords, mostNames);
    };
    constexpr std::size_t mostNames = 4;
    warnings_->setText(withTitle(mostNames));
    allWarnings_ = withTitle(lines.size());
    design::keptState::set(placeKey, QFileInfo(place).absolutePath());
    warnings_->setVisible(!lines.empty());
    copy_->setVisible(!lines.empty());
    fitHeight();
    if (!lines.empty()) // scrolled to after the sheet has got its new height
        QMetaObject::invokeMethod(
            this,
            [this] {
                const int top = warnings_->mapTo(sections_->widget(), QPoint()).y();
                sections_->verticalScrollBar()->setValue(top - space::small);
            },
            Qt::QueuedConnection);
    close_->setText(tr("Done"));
    answerWith(close_);
    close_->setFocus();
    mayReplace_ = true; // the file was just written by this sheet
    if (openWhenDone_->isChecked())
        desktop_.openOutside(this, QUrl::fromLocalFile(place), [this, place](const QString&) {
            outcome_->show(Signal::doubtful,
                           tr("Written, but no program opens such documents here: %1").arg(place));
        });
}

void showExport(Desktop& desktop, QWidget* parent) {
    auto* sheet = new ExportSheet(desktop, parent);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

} // namespace orvane::views
