#include "OrvaneDesignKit/EntryField.h"

#include "OrvaneDesignKit/Controls.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <utility>

namespace orvane::design {

namespace {

constexpr int narrowestEntry = 56;

} // namespace

EntryField::EntryField(const QString& accessibleName, Commit commit, QWidget* parent)
    : QWidget(parent), commit_(std::move(commit)), row_(new QHBoxLayout), line_(field(accessibleName)),
      problem_(facts({})) {
    line_->setMinimumWidth(narrowestEntry);
    line_->installEventFilter(this);
    QPalette red = problem_->palette();
    red.setColor(QPalette::WindowText, colour(Signal::missing));
    problem_->setPalette(red);
    problem_->setProperty("facts", QVariant());
    problem_->setVisible(false);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::tight);
    row_->setSpacing(2);
    row_->addWidget(line_, 1);
    column->addLayout(row_);
    column->addWidget(problem_);
    setFocusProxy(line_);
    connect(line_, &QLineEdit::textEdited, this, [this] { setProblem({}); });
    connect(line_, &QLineEdit::editingFinished, this, [this] { this->commit(); });
}

void EntryField::setSteps(const QString& what, std::function<void(int direction)> step) {
    step_ = std::move(step);
    for (const int direction : {-1, 1}) {
        QPushButton* one = button(direction < 0 ? QStringLiteral("−") : QStringLiteral("+"));
        one->setAutoRepeat(true);
        one->setAccessibleName(direction < 0 ? tr("%1: %2 less").arg(line_->accessibleName(), what)
                                             : tr("%1: %2 more").arg(line_->accessibleName(), what));
        one->setToolTip(direction < 0 ? tr("%1 less").arg(what) : tr("%1 more").arg(what));
        one->setFixedWidth(line_->sizeHint().height() + space::tight);
        one->setStyleSheet(QStringLiteral("padding: 6px 0;"));
        row_->addWidget(one);
        connect(one, &QPushButton::clicked, this, [this, direction] {
            setProblem({});
            step_(direction);
        });
    }
}

void EntryField::setProposal(const QString& proposal) {
    const bool isInView = isProposing();
    proposal_ = proposal;
    line_->setPlaceholderText(proposal);
    if (isInView) propose();
}

bool EntryField::isProposing() const {
    return line_->hasFocus() && !line_->isModified() && !proposal_.isEmpty() && line_->text() == proposal_;
}

void EntryField::propose() {
    line_->setText(proposal_);
    // Queued after the click that gave the focus, which places the cursor.
    QMetaObject::invokeMethod(line_, &QLineEdit::selectAll, Qt::QueuedConnection);
}

void EntryField::show(const QString& value) {
    shown_ = value;
    if (value.isEmpty() && isProposing()) return;
    if (line_->isModified() && (line_->hasFocus() || !problem_->isHidden())) return;
    if (line_->text() != value) line_->setText(value);
}

void EntryField::setProblem(const QString& problem) {
    problem_->setText(problem);
    problem_->setVisible(!problem.isEmpty());
    line_->setAccessibleDescription(problem);
}

QString EntryField::problem() const { return problem_->text(); }

void EntryField::commit() {
    if (!line_->isModified()) return;
    const QString text = line_->text();
    if (text == shown_ || (shown_.isEmpty() && text == proposal_)) return restore();
    const QString problem = commit_(text);
    setProblem(problem);
    if (!problem.isEmpty()) return;
    line_->setModified(false);
    // The owner shows the value in the same turn of the loop. It may be written differently, such as "3" as
    // "+3".
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!line_->isModified() && line_->text() != shown_) line_->setText(shown_);
        },
        Qt::QueuedConnection);
}

void EntryField::restore() {
    setProblem({});
    line_->setText(shown_);
    line_->setModified(false);
}

bool EntryField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn && line_->text().isEmpty() && !proposal_.isEmpty()) propose();
    const bool isUntouched = !line_->isModified() && shown_.isEmpty() && line_->text() == proposal_;
    if (event->type() == QEvent::FocusOut && isUntouched) restore();
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool isEscape = key->key() == Qt::Key_Escape;
        const int direction = key->key() == Qt::Key_Up ? 1 : key->key() == Qt::Key_Down ? -1 : 0;
        const bool isStep = direction != 0 && step_ && key->modifiers() == Qt::NoModifier;
        if (event->type() == QEvent::ShortcutOverride) {
            if (isEscape || isStep) event->accept();
        } else if (isEscape) {
            restore();
            line_->clearFocus();
            return true;
        } else if (isStep) {
            restore();
            step_(direction);
            return true;
        } else if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            commit();
            // On success the keys of the window work again; after an error the cursor stays.
            if (problem_->isHidden()) line_->clearFocus();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace orvane::design
