#include "OrvaneSyncApp/Views/Sheets/ExportSheet.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPointer>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

constexpr int sheetWidth = 640;
constexpr int mostLinesShown = 12;

struct Switch {
    const char* title;
    const Declared<bool>* setting;
};
const Switch switches[] = {
    {"Add an event with every source file", &settings::generateRawMediaEvent},
    {"One event a scene", &settings::splitEventsByScene},
    {"Clips without sound become synchronized clips too", &settings::wrapMOSInSyncClip},
    {"Volumes follow Smart Audio over time", &settings::volumeKeyframes},
};

QString listed(const std::vector<std::string>& lines) {
    QStringList shown;
    for (const std::string& line : lines) {
        if (shown.size() == mostLinesShown) {
            shown << QObject::tr("and %1 more").arg(lines.size() - mostLinesShown);
            break;
        }
        shown << QStringLiteral("• ") + text(line);
    }
    return shown.join(QLatin1Char('\n'));
}

} // namespace

ExportSheet::ExportSheet(Desktop& desktop, QWidget* parent) : QDialog(parent), desktop_(desktop) {
    setWindowTitle(tr("Export FCPXML"));
    setMinimumWidth(sheetWidth);
    setModal(true);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(space::medium, space::medium, space::medium, space::medium);
    rows->setSpacing(space::medium);
    rows->addWidget(title(tr("Export for Final Cut Pro")));

    auto* what = new Section(tr("Event"));
    event_ = field(tr("Event name"), tr("Event name"));
    auto* eventRow = new QHBoxLayout;
    eventRow->addWidget(event_, 1);
    suggestion_ = button({}, Weight::quiet);
    suggestion_->setToolTip(tr("Take this name"));
    eventRow->addWidget(suggestion_);
    what->add(eventRow);
    what->add(forecast_ = label(QString()));
    what->add(leftOut_ = facts({}));
    rows->addWidget(what);
    rows->addWidget(makeOptions());
    rows->addWidget(makeDestination());
    rows->addWidget(outcome_ = new Banner);
    outcome_->setObjectName(QStringLiteral("outcome"));
    rows->addWidget(warnings_ = facts({}));
    warnings_->hide();

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(close_ = button(tr("Cancel")));
    buttons->addWidget(write_ = button(tr("Export"), Glyph::exportDocument, Weight::primary));
    write_->setDefault(true);
    rows->addLayout(buttons);
    connect(close_, &QPushButton::clicked, this, [this] { accept(); });
    connect(write_, &QPushButton::clicked, this, [this] { write(); });
    connect(suggestion_, &QPushButton::clicked, this, [this] { event_->setText(suggestion_->text()); });

    event_->setText(text(desktop_.controller().exporting().exportSettings({}).eventName));
    showForecast();
}

QWidget* ExportSheet::makeOptions() {
    auto* section = new Section(tr("Options"));
    auto* length = new Choice;
    length->setAccessibleName(tr("Length of the clips"));
    const ExportSettings now = desktop_.controller().exporting().exportSettings({});
    for (std::size_t i = 0; i < RawValues<TrimMode>::texts.size(); ++i)
        length->addItem(text(displayText(static_cast<TrimMode>(i))), text(RawValues<TrimMode>::texts[i]));
    length->setCurrentIndex(static_cast<int>(now.trimMode));
    connect(length, &QComboBox::activated, this, [this, length](int) {
        setOption(settings::trimMode.key, JSON(utf8(length->currentData().toString())));
    });
    auto* lengthRow = new QHBoxLayout;
    lengthRow->addWidget(label(tr("Trim clips to")));
    lengthRow->addWidget(length, 1);
    section->add(lengthRow);
    for (const Switch& one : switches) {
        auto* box = new QCheckBox(tr(one.title));
        box->setChecked(desktop_.settings().get(*one.setting));
        connect(box, &QCheckBox::toggled, this,
                [this, setting = one.setting](bool isOn) { setOption(setting->key, JSON(isOn)); });
        section->add(box);
    }
    return section;
}

QWidget* ExportSheet::makeDestination() {
    auto* section = new Section(tr("Where"));
    place_ = field(tr("Document"), tr("Document"));
    const auto& folder = desktop_.controller().work().videoFolderURL();
    const QString day = folder ? QFileInfo(text(folder->pathText())).fileName() : tr("Synced");
    place_->setText(QDir::home().filePath(day + QStringLiteral(".fcpxml")));
    auto* choose = button(tr("Choose…"), Glyph::folder);
    choose->setAccessibleName(tr("Choose where the document goes"));
    connect(choose, &QPushButton::clicked, this, [this] { choosePlace(); });
    connect(place_, &QLineEdit::textEdited, this, [this] { mayReplace_ = false; });
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
    QString sentence = tr("%1 with sound, %2 without, %3")
                           .arg(text(counted(work.syncClipCount(), "clip", "clips")))
                           .arg(work.mosCount())
                           .arg(text(counted(controller.exporting().projectedMulticamCount(), "multicam clip",
                                             "multicam clips")));
    if (now.splitEventsByScene)
        sentence += tr(", in %1").arg(
            text(counted(ExportPreview::projectedEventCount(work.syncGroups(), now), "event", "events")));
    const int tracks = static_cast<int>(std::ranges::count_if(work.wildTracks(), &WildTrack::isApproved));
    if (tracks > 0)
        sentence +=
            tr(", %1").arg(text(counted(tracks, "recording without picture", "recordings without picture")));
    forecast_->setText(sentence + tr("."));
    QStringList notes;
    if (const auto coverage =
            ExportPreview::smartAudioCoverage(work.syncGroups(), now.smartAudioResults).text())
        notes << text(*coverage);
    if (const auto out = leftOutWarnings(controller); !out.empty()) notes << listed(out);
    leftOut_->setText(notes.join(QLatin1Char('\n')));
    leftOut_->setVisible(!notes.isEmpty());
    const auto suggested = ExportPreview::suggestedEventName(work.syncGroups());
    suggestion_->setVisible(suggested && text(*suggested) != event_->text());
    if (suggested) suggestion_->setText(text(*suggested));
}

void ExportSheet::choosePlace() {
    const QString chosen =
        QFileDialog::getSaveFileName(this, tr("Export FCPXML"), place_->text(), tr("FCPXML (*.fcpxml)"));
    if (chosen.isEmpty()) return;
    place_->setText(chosen.endsWith(QStringLiteral(".fcpxml")) ? chosen : chosen + QStringLiteral(".fcpxml"));
    mayReplace_ = true; // the dialog has asked
}

void ExportSheet::write() {
    const QString place = QDir::cleanPath(place_->text().trimmed());
    if (QFileInfo::exists(place) && !mayReplace_) {
        outcome_->show(Signal::doubtful, tr("There is a file of this name already: %1").arg(place),
                       tr("Replace It"), [this] {
                           mayReplace_ = true;
                           outcome_->clear();
                           write();
                       });
        return;
    }
    JSON arguments = JSON::object();
    arguments.set("output", utf8(place));
    arguments.set("eventName", utf8(event_->text().trimmed()));
    if (mayReplace_) arguments.set("overwrite", true);
    write_->setEnabled(false);
    const QPointer self(this); // the sheet may be closed meanwhile
    desktop_.run(
        "exportFCPXML", std::move(arguments),
        [self](const JSON& answer) {
            if (self) self->written(answer);
        },
        [self](const QString& why) {
            if (!self) return;
            self->outcome_->show(Signal::missing, why);
            self->write_->setEnabled(true);
        });
}

void ExportSheet::written(const JSON& answer) {
    const auto count = [&](const char* key) {
        const JSON* value = answer.find(key);
        return value == nullptr ? 0 : static_cast<int>(value->number().value_or(0));
    };
    const QString place = QDir::cleanPath(place_->text().trimmed());
    outcome_->show(Signal::matched,
                   tr("Written: %1 clips and %2 multicam clips in %3")
                       .arg(count("syncClipCount"))
                       .arg(count("multicamCount"))
                       .arg(place),
                   tr("Show Folder"), [place] {
                       QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(place).absolutePath()));
                   });
    std::vector<std::string> lines;
    if (const JSON* warnings = answer.find("warnings"); warnings != nullptr && warnings->isArray())
        for (const JSON& one : *warnings->elements())
            if (one.string() != nullptr) lines.push_back(*one.string());
    warnings_->setText(listed(lines));
    warnings_->setVisible(!lines.empty());
    close_->setText(tr("Done"));
    write_->setEnabled(true);
    mayReplace_ = true; // what was just written
    if (openWhenDone_->isChecked()) QDesktopServices::openUrl(QUrl::fromLocalFile(place));
}

} // namespace orvane::views
