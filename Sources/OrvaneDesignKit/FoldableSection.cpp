#include "OrvaneDesignKit/FoldableSection.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/KeptState.h"

#include <QVBoxLayout>

namespace orvane::design {

FoldableSection::FoldableSection(const QString& name, const QString& title, QWidget* parent)
    : QFrame(parent), name_(QStringLiteral("folded/") + name), title_(title),
      header_(button(title, Weight::quiet)), body_(new QWidget), bodyLayout_(new QVBoxLayout(body_)) {
    setObjectName(name);
    QFont bold = textFont();
    bold.setWeight(QFont::DemiBold);
    header_->setFont(bold);
    // A long summary must not widen the panel.
    header_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header_);
    column->addWidget(body_);
    bodyLayout_->setContentsMargins(space::medium, space::tight, space::small, space::medium);
    bodyLayout_->setSpacing(space::small);
    connect(header_, &QPushButton::clicked, this, [this] {
        setFolded(!isFolded());
        keptState::set(name_, isFolded());
    });
    setFolded(keptState::value(name_, false).toBool());
}

bool FoldableSection::isFolded() const { return body_->isHidden(); }

void FoldableSection::setFolded(bool isFolded) {
    body_->setVisible(!isFolded);
    header_->setIcon(icon(isFolded ? Glyph::folded : Glyph::unfolded));
    showTitle();
}

void FoldableSection::setSummary(const QString& summary) {
    if (summary == summary_) return;
    summary_ = summary;
    showTitle();
}

void FoldableSection::showTitle() {
    header_->setText(summary_.isEmpty() ? title_ : tr("%1   %2").arg(title_, summary_));
    header_->setToolTip(isFolded() ? tr("Unfold") : tr("Fold"));
    header_->setAccessibleName(isFolded() ? tr("%1, folded").arg(header_->text()) : header_->text());
}

} // namespace orvane::design
