#include "OrvaneSyncApp/Views/ScanningView.h"

#include "OrvaneSyncApp/ViewModels/Results/TimeLeft.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QProgressBar>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

namespace {

constexpr int barWidth = 480;
constexpr int parts = 1000; ///< steps of the bar

QString phaseText(ScanState state) {
    switch (state) {
    case ScanState::discovering:
        return QObject::tr("Discovering files...");
    case ScanState::probing:
        return QObject::tr("Reading metadata...");
    case ScanState::matching:
        return QObject::tr("Matching timecodes...");
    case ScanState::done:
        return QObject::tr("Done");
    case ScanState::idle:
        break;
    }
    return {};
}

} // namespace

ScanningView::ScanningView(Desktop& desktop, QWidget* parent)
    : QWidget(parent), desktop_(desktop), phase_(title({})), counts_(facts({})), file_(facts({})),
      bar_(new QProgressBar) {
    auto* rows = new QVBoxLayout(this);
    rows->setSpacing(space::small);
    rows->addStretch(1);
    bar_->setRange(0, parts);
    bar_->setTextVisible(false);
    bar_->setAccessibleName(tr("Progress of the scan"));
    // All have the same width, so that nothing moves when texts change.
    for (QWidget* one : std::initializer_list<QWidget*>{phase_, bar_, counts_, file_}) {
        one->setFixedWidth(barWidth);
        rows->addWidget(one, 0, Qt::AlignHCenter);
        if (one == phase_ || one == bar_) rows->addSpacing(space::tight);
    }
    for (QLabel* one : {phase_, counts_, file_}) {
        one->setAlignment(Qt::AlignCenter);
        one->setWordWrap(false);
    }
    file_->setAccessibleName(tr("File being read"));
    auto* stop = button(tr("Cancel"));
    stop->setToolTip(tr("Stops the scan and leaves all as it was (Escape)"));
    stop->setShortcut(Qt::Key_Escape);
    connect(stop, &QPushButton::clicked, this, [this] { desktop_.run("stopScan"); });
    rows->addSpacing(space::small);
    rows->addWidget(stop, 0, Qt::AlignHCenter);
    rows->addStretch(2);
    observation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::scanState || field == ImportField::progress) showProgress();
    });
}

void ScanningView::begin() {
    began_ = platform::systemClock()->now();
    showProgress();
}

void ScanningView::showProgress() {
    const ScanController& scan = desktop_.controller().scan();
    const ScanProgress& progress = scan.progress();
    phase_->setText(phaseText(scan.scanState()));
    // Without a count, the bar only shows that the scan is running.
    bar_->setRange(0, progress.isActive() ? parts : 0);
    bar_->setValue(static_cast<int>(progress.fraction() * parts));
    QString counts;
    if (progress.isActive()) {
        counts = tr("%1: %2 of %3 files")
                     .arg(translated(progress.phase))
                     .arg(progress.current)
                     .arg(progress.total);
        const double passed = std::chrono::duration<double>(platform::systemClock()->now() - began_).count();
        if (const auto left = secondsLeft(progress.fraction(), passed))
            counts += tr(", %1 to go").arg(text(clockText(*left)));
    } else if (const auto& read = scan.scanResult(); read && scan.scanState() == ScanState::matching) {
        counts = translatedSentence(counted(read->videoAssets.size(), "clip", "clips")) +
                 QStringLiteral(", ") +
                 translatedSentence(counted(read->audioAssets.size(), "recording", "recordings"));
    }
    counts_->setText(counts);
    file_->setText(file_->fontMetrics().elidedText(text(progress.file), Qt::ElideMiddle, barWidth));
}

} // namespace orvane::views
