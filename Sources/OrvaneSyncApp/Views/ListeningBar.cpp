#include "OrvaneSyncApp/Views/ListeningBar.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QProgressBar>

namespace orvane::views {

ListeningBar::ListeningBar(Desktop& desktop, QWidget* parent)
    : QFrame(parent), desktop_(desktop), text_(design::label({})), bar_(new QProgressBar) {
    setProperty("banner", true);
    setObjectName(QStringLiteral("listening"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(design::space::medium, design::space::small, design::space::small,
                            design::space::small);
    row->setSpacing(design::space::medium);
    text_->setWordWrap(false);
    row->addWidget(text_);
    bar_->setTextVisible(false);
    bar_->setAccessibleName(tr("Progress of the listening"));
    row->addWidget(bar_, 1);
    auto* stop = design::button(tr("Stop"));
    stop->setToolTip(tr("Stops listening; what was heard before stays"));
    connect(stop, &QPushButton::clicked, this, [this] { desktop_.controller().stopListeningForDoubts(); });
    row->addWidget(stop);
    setVisible(false);
    observation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::progress) showProgress();
    });
}

bool ListeningBar::isListening() const {
    return desktop_.controller().derivedDoubts().listening().has_value();
}

void ListeningBar::listen() {
    total_ = 0;
    desktop_.run("diagnose", {}, [self = QPointer(this)](const JSON& answer) {
        if (!self || !self->whenHeard) return;
        const JSON* doubts = answer.find("doubts");
        self->whenHeard(translatedSentence(heardText(
            self->total_ > 0 ? self->desktop_.controller().derivedDoubts().heardCount() : 0, self->total_,
            doubts != nullptr && doubts->elements() && !doubts->elements()->empty())));
    });
}

void ListeningBar::showProgress() {
    const auto& listening = desktop_.controller().derivedDoubts().listening();
    if (listening) {
        total_ = listening->total;
        text_->setText(translatedSentence(listeningText(listening->done, listening->total)));
        setAccessibleName(text_->text());
        bar_->setRange(0, static_cast<int>(listening->total));
        bar_->setValue(static_cast<int>(listening->done));
    }
    if (isVisibleTo(parentWidget()) == listening.has_value()) return;
    setVisible(listening.has_value());
    if (whenChanged) whenChanged();
}

} // namespace orvane::views
