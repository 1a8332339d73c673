#include "OrvaneSyncApp/Views/Settings/CalibrationPage.h"

#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Calibration/SmartAudioCalibration.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QTableWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <array>

namespace orvane::views {

using namespace design;

namespace {

constexpr int resultsHeight = 240;
constexpr int amountColumns = 3; ///< the columns before those of the differences

Signal signalOf(CalibrationRow::Band band) {
    switch (band) {
    case CalibrationRow::Band::small:
        return Signal::matched;
    case CalibrationRow::Band::moderate:
        return Signal::doubtful;
    case CalibrationRow::Band::large:
        break;
    }
    return Signal::missing;
}

CalibrationMatrix matrixAt(int index) {
    return index == 0 ? CalibrationMatrix::sweetSpot : CalibrationMatrix::coarse;
}

} // namespace

CalibrationPage::CalibrationPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab)
    : SettingsPage(desktop, model, tab) {
    add(makeBuilding(), tr("build matrix document source"));
    add(makeMeasuring(), tr("measure Final Cut Pro bounce folder"));
    add(makeResults(), tr("results save"));
    observation_ = desktop.controller().onChange([this](ImportField field) {
        if (field == ImportField::calibration) show();
    });
    showSteps();
    show();
}

QWidget* CalibrationPage::makeBuilding() {
    auto* section = new Section(tr("1  Build the matrix"));
    auto* row = new QHBoxLayout;
    matrix_ = new Choice;
    matrix_->setAccessibleName(tr("Combinations of settings"));
    matrix_->setToolTip(tr("Combinations of settings"));
    for (const auto& [name, matrix] :
         {std::pair{tr("Around the usual settings"), CalibrationMatrix::sweetSpot},
          std::pair{tr("Coarse, the whole range"), CalibrationMatrix::coarse}})
        matrix_->addItem(tr("%1 (%2 clips)").arg(name).arg(permsOf(matrix).size()));
    matrix_->setMinimumWidth(matrix_->sizeHint().width() + space::large); // so that both can be read in full
    row->addWidget(matrix_);
    row->addStretch(1);
    row->addWidget(reveal_ = button(tr("Show Document"), Glyph::folder));
    row->addWidget(build_ = button({}, Weight::primary));
    build_->setObjectName(QStringLiteral("buildMatrix"));
    section->add(row);
    section->add(source_ = facts({}));
    section->add(progress_ = label(QString()));
    section->add(problem_ = new Remark);
    problem_->setObjectName(QStringLiteral("calibrationProblem"));
    connect(build_, &QPushButton::clicked, this, [this] { build(); });
    connect(reveal_, &QPushButton::clicked, this, [this] { reveal(); });
    connect(matrix_, &QComboBox::currentIndexChanged, this, [this] { showSteps(); });
    return section;
}

QWidget* CalibrationPage::makeMeasuring() {
    auto* section = new Section(tr("2  Bounce in Final Cut Pro, and measure"));
    section->add(steps_ = label(QString()));
    auto* row = new QHBoxLayout;
    folder_ = field(tr("Folder with the bounced files"), tr("Folder with the bounced files"));
    QPushButton* choose = button(tr("Choose…"), Glyph::folder);
    choose->setAccessibleName(tr("Choose the folder with the bounced files"));
    measure_ = button(tr("Measure"));
    measure_->setObjectName(QStringLiteral("measure"));
    row->addWidget(folder_, 1);
    row->addWidget(choose);
    row->addWidget(measure_);
    section->add(row);
    section->add(measureProblem_ = new Remark);
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getExistingDirectory(this, tr("Folder with the bounced files"));
        if (!chosen.isEmpty()) folder_->setText(chosen);
        show();
    });
    connect(folder_, &QLineEdit::textChanged, this, [this] { show(); });
    connect(measure_, &QPushButton::clicked, this, [this] { measure(); });
    return section;
}

QWidget* CalibrationPage::makeResults() {
    auto* section = new Section(tr("3  Results"));
    section->add(saved_ = label(QString()));
    const QStringList columns{tr("Voice Isolation"), tr("Loudness"), tr("Uniformity"),
                              tr("Peak, dB"),        tr("RMS, dB"),  tr("Loudness, LU")};
    results_ = new QTableWidget(0, static_cast<int>(columns.size()));
    results_->setHorizontalHeaderLabels(columns);
    results_->setAccessibleName(tr("Measured differences"));
    results_->verticalHeader()->hide();
    results_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    results_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    results_->setSelectionBehavior(QAbstractItemView::SelectRows);
    results_->setShowGrid(false);
    results_->setFixedHeight(resultsHeight);
    section->add(results_);
    section->add(gaps_ = new Remark);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(save_ = button(tr("Save Calibration"), Weight::primary));
    save_->setObjectName(QStringLiteral("saveCalibration"));
    connect(save_, &QPushButton::clicked, this, [this] { run("calibrationSave"); });
    section->add(row);
    return section;
}

void CalibrationPage::open() { run("calibration"); }

void CalibrationPage::showSteps() {
    QStringList lines;
    for (const std::string& step : calibrationSteps(permsOf(matrixAt(matrix_->currentIndex())).size()))
        lines << tr("%1.  %2").arg(lines.size() + 1).arg(translatedSentence(step));
    steps_->setText(lines.join(QLatin1Char('\n')));
}

void CalibrationPage::show() {
    const CalibrationPanel panel = calibrationPanel(desktop().controller().calibration().state());
    build_->setText(translated(panel.buildTitle));
    build_->setEnabled(panel.canBuild);
    matrix_->setEnabled(panel.canBuild);
    reveal_->setEnabled(panel.canShowDocument);
    measure_->setEnabled(panel.canMeasure && !folder_->text().trimmed().isEmpty());
    save_->setEnabled(panel.canSave);
    source_->setText(translatedSentence(panel.source));
    source_->setVisible(!panel.source.empty());
    progress_->setText(translatedSentence(panel.progress));
    progress_->setVisible(!panel.progress.empty());
    (isMeasureAsked_ ? problem_ : measureProblem_)->show(Signal::none, {});
    (isMeasureAsked_ ? measureProblem_ : problem_)->show(Signal::missing, translatedSentence(panel.problem));
    gaps_->show(Signal::doubtful, translatedSentence(panel.gaps));
    saved_->setText(translatedSentence(panel.saved));
    showRows(panel);
}

void CalibrationPage::showRows(const CalibrationPanel& panel) {
    results_->setVisible(!panel.rows.empty());
    results_->setRowCount(static_cast<int>(panel.rows.size()));
    for (int row = 0; row < results_->rowCount(); ++row) {
        const CalibrationRow& one = panel.rows[static_cast<std::size_t>(row)];
        const std::array<int, amountColumns> amounts{one.perm.voiceIsoAmount, one.perm.loudnessAmount,
                                                     one.perm.uniformity};
        const std::array<const CalibrationRow::Difference*, 3> differences{&one.peak, &one.rms, &one.lufs};
        for (int column = 0; column < results_->columnCount(); ++column) {
            auto* cell = new QTableWidgetItem;
            cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            if (column < amountColumns) {
                cell->setText(tr("%1 %").arg(amounts.at(static_cast<std::size_t>(column))));
            } else {
                const auto& difference = *differences.at(static_cast<std::size_t>(column - amountColumns));
                cell->setText(text(difference.text));
                const Signal signal = signalOf(difference.band);
                cell->setForeground(colour(signal));
                cell->setIcon(icon(glyph(signal)));
            }
            results_->setItem(row, column, cell);
        }
    }
}

void CalibrationPage::build() {
    isMeasureAsked_ = false;
    JSON arguments = JSON::object();
    arguments.set("matrix", matrix_->currentIndex() == 0 ? "sweet" : "coarse");
    run("calibrationBuild", std::move(arguments), [self = QPointer(this)](const JSON&) {
        if (self) self->reveal();
    });
}

void CalibrationPage::measure() {
    isMeasureAsked_ = true;
    JSON arguments = JSON::object();
    arguments.set("folder", utf8(folder_->text().trimmed()));
    run("calibrationMeasure", std::move(arguments));
}

void CalibrationPage::reveal() {
    const QFileInfo document(text(SmartAudioCalibration::documentFile().path));
    desktop().openOutside(this, QUrl::fromLocalFile(document.absolutePath()),
                          [this](const QString& why) { problem_->show(Signal::doubtful, why); });
}

void CalibrationPage::run(std::string_view id, JSON arguments, Desktop::Done done) {
    desktop().run(id, std::move(arguments), std::move(done), [self = QPointer(this)](const QString& why) {
        if (!self) return;
        self->show();
        (self->isMeasureAsked_ ? self->measureProblem_ : self->problem_)->show(Signal::missing, why);
    });
}

} // namespace orvane::views
