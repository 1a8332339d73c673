#include "OrvaneSyncApp/Views/WorkBar.h"

#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"
#include "OrvaneSyncApp/ViewModels/Results/TimeLeft.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QProgressBar>
#include <QTimer>
#include <QToolButton>

#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int workTextWidth = 420, workBarWidth = 160; ///< points
constexpr int partsOfWork = 1000;

} // namespace

WorkBar::WorkBar(Desktop& desktop, std::chrono::milliseconds shownAfter)
    : desktop_(desktop), text_(facts({})), bar_(new QProgressBar), cancel_(new QToolButton),
      delay_(new QTimer(this)) {
    setObjectName(QStringLiteral("work"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, space::small, 0);
    row->setSpacing(space::small);
    text_->setWordWrap(false);
    bar_->setFixedWidth(workBarWidth);
    bar_->setTextVisible(false);
    bar_->setAccessibleName(tr("Progress of the work"));
    cancel_->setText(tr("Cancel"));
    cancel_->setFont(factsFont());
    cancel_->setFocusPolicy(Qt::TabFocus);
    row->addWidget(text_);
    row->addWidget(bar_);
    row->addWidget(cancel_);
    connect(cancel_, &QToolButton::clicked, this, [this] { cancel(); });
    delay_->setSingleShot(true);
    delay_->setInterval(shownAfter);
    connect(delay_, &QTimer::timeout, this, [this] {
        isShown_ = true;
        follow();
    });
    observation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::smartAudio || field == ImportField::smartAudioProgress ||
            (field == ImportField::progress && isShown_))
            follow();
    });
    hide();
}

bool WorkBar::isAnalysing() const { return desktop_.controller().smartAudio().state().isAnalyzing; }

void WorkBar::run(std::string_view command, const QString& title, std::function<void()> done,
                  JSON arguments) {
    const QPointer self(this);
    const platform::Task task =
        desktop_.run(command, std::move(arguments), [self, done = std::move(done)](const JSON&) {
            if (self && done) done();
        });
    if (task.isDone()) return;
    const auto place = running_.insert(running_.end(), {title, task});
    follow();
    task.whenDone([self, place](const std::exception_ptr&) {
        if (!self) return;
        self->running_.erase(place);
        self->follow();
        if (self->whenChanged) self->whenChanged();
    });
}

void WorkBar::follow() {
    const bool analyses = isAnalysing();
    if (analyses && !std::exchange(wasAnalysing_, analyses)) analysisBegan_ = platform::systemClock()->now();
    wasAnalysing_ = analyses;
    if (!analyses && running_.empty()) {
        delay_->stop();
        isShown_ = false;
        cancel_->setEnabled(true);
        hide();
    } else if (isShown_ || delay_->interval() == 0) {
        isShown_ = true;
        showWork();
        show();
    } else if (!delay_->isActive()) {
        delay_->start();
    }
}

void WorkBar::showWork() {
    QString sentence;
    if (isAnalysing()) {
        const SmartAudioProgress& now = desktop_.controller().smartAudio().state().progress;
        sentence = translatedSentence(now.phase);
        if (now.total > 1) sentence += tr(", %1 of %2").arg(now.current).arg(now.total);
        const double passed =
            std::chrono::duration<double>(platform::systemClock()->now() - analysisBegan_).count();
        if (const auto left = secondsLeft(now.fraction, passed))
            sentence += tr(", %1 to go").arg(text(clockText(*left)));
        bar_->setRange(0, partsOfWork);
        bar_->setValue(static_cast<int>(now.fraction * partsOfWork));
    } else if (!running_.empty()) {
        sentence = running_.front().title;
        bar_->setRange(0, 0); // only shows that the work is running
        const auto& heard = desktop_.controller().derivedDoubts().listening();
        if (heard && heard->done < heard->total) {
            sentence = translatedSentence(listeningText(*heard));
            bar_->setRange(0, static_cast<int>(heard->total));
            bar_->setValue(static_cast<int>(heard->done));
        } else if (const auto& compared = desktop_.controller().soundComparison().progress();
                   compared && compared->total > 0) {
            sentence = translatedSentence(comparingText(*compared));
            bar_->setRange(0, static_cast<int>(compared->total));
            bar_->setValue(static_cast<int>(compared->done));
        }
    }
    text_->setText(text_->fontMetrics().elidedText(sentence, Qt::ElideMiddle, workTextWidth));
    text_->setToolTip(sentence);
    cancel_->setAccessibleName(tr("Cancel: %1").arg(sentence));
    cancel_->setToolTip(tr("Ends this work; what it has done until now stays"));
}

void WorkBar::cancel() {
    cancel_->setEnabled(false); // until the work has ended
    if (isAnalysing())
        desktop_.run("stopSmartAudio");
    else if (!running_.empty())
        running_.front().task.requestStop();
}

} // namespace orvane::views
