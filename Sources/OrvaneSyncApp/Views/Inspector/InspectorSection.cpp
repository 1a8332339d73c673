#include "OrvaneSyncApp/Views/Inspector/InspectorSection.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QGridLayout>
#include <QPointer>
#include <QVBoxLayout>

#include <memory>

namespace orvane::views {

using namespace design;

InspectorSection::InspectorSection(Desktop& desktop, const QString& name, const QString& title)
    : FoldableSection(QStringLiteral("inspector-") + name, title), desktop_(desktop), problem_(facts({})) {
    QPalette red = problem_->palette();
    red.setColor(QPalette::WindowText, colour(Signal::missing));
    problem_->setProperty("facts", QVariant());
    problem_->setPalette(red);
    problem_->setVisible(false);
    body()->addWidget(problem_);
}

void InspectorSection::showClip(const SyncGroup& clip) {
    if (clip.id != clipID_) problem_->setVisible(false);
    clipID_ = clip.id;
    for (const auto& [control, id] : controls_) control->setEnabled(desktop_.isEnabled(id, &clip));
    show(clip);
}

void InspectorSection::add(QWidget* control) { body()->insertWidget(body()->count() - 1, control); }
void InspectorSection::add(QLayout* controls) { body()->insertLayout(body()->count() - 1, controls); }

const SyncGroup* InspectorSection::clip() const {
    return desktop_.controller().work().syncGroups().find(clipID_);
}

JSON InspectorSection::forClip() const {
    JSON arguments = JSON::object();
    arguments.set("groupID", clipID_.text());
    return arguments;
}

platform::Task InspectorSection::run(std::string_view id, JSON arguments, Desktop::Done done) {
    problem_->setVisible(false);
    return desktop_.run(id, std::move(arguments), std::move(done),
                        [this, alive = QPointer<QWidget>(this), of = clipID_](const QString& why) {
                            if (alive == nullptr || of != clipID_) return;
                            problem_->setText(why);
                            problem_->setVisible(true);
                            // The click has already changed its box.
                            if (const SyncGroup* now = clip()) showClip(*now);
                        });
}

QString InspectorSection::runFromField(std::string_view id, JSON arguments) {
    // Commands that change a clip answer before `run` returns.
    const auto why = std::make_shared<QString>();
    desktop_.run(id, std::move(arguments), {}, [why](const QString& text) { *why = text; });
    return *why;
}

QPushButton* InspectorSection::commandButton(std::string_view id, const QString& text,
                                             std::function<void()> act) {
    const commands::Command& row = desktop_.command(id);
    QPushButton* made = button(text.isEmpty() ? translated(row.title) : text);
    made->setToolTip(translated(row.help));
    made->setFocusPolicy(Qt::TabFocus); // see `SyncSection::makeAnchor`
    connect(made, &QPushButton::clicked, this, [this, id, act = std::move(act)] { act ? act() : run(id); });
    controls_.emplace_back(made, id);
    return made;
}

QCheckBox* InspectorSection::commandBox(std::string_view id, const QString& text) {
    auto* made = new QCheckBox(text);
    made->setToolTip(translated(desktop_.command(id).help));
    connect(made, &QCheckBox::clicked, this, [this, id] { run(id); });
    controls_.emplace_back(made, id);
    return made;
}

namespace {

void addRow(QGridLayout* grid, const std::string& name, const std::string& value,
            const QString& brokenValue) {
    const int row = grid->rowCount();
    const QString shown = translatedSentence(name);
    QLabel* left = facts(breakable(utf8(shown)));
    QLabel* right = label(brokenValue);
    right->setAccessibleName(QStringLiteral("%1: %2").arg(shown, text(value)));
    grid->addWidget(left, row, 0, Qt::AlignTop);
    grid->addWidget(right, row, 1, Qt::AlignTop);
    grid->setColumnStretch(1, 1);
}

} // namespace

void addFact(QGridLayout* grid, const std::string& name, const std::string& value) {
    addRow(grid, name, value, breakable(value));
}

void addFileFact(QGridLayout* grid, const std::string& name, const std::string& file) {
    addRow(grid, name, file, breakableFile(file));
}

QString breakableFile(std::string_view utf8) {
    const std::size_t name = utf8.rfind('/') + 1; // 0 without a folder
    return name == 0 ? breakable(utf8)
                     : breakable(utf8.substr(0, name)) + QLatin1Char('\n') + breakable(utf8.substr(name));
}

QString breakable(std::string_view utf8) {
    const QString whole = text(utf8);
    const auto isDigit = [&](qsizetype at) { return at >= 0 && at < whole.size() && whole[at].isDigit(); };
    QString shown;
    for (qsizetype i = 0; i < whole.size(); ++i) {
        const QChar one = whole[i];
        // A number is not broken, and stays together with its unit.
        const bool isInNumber = one == QLatin1Char('.') && isDigit(i - 1) && isDigit(i + 1);
        const bool isBeforeUnit = one == QLatin1Char(' ') && isDigit(i - 1) && !isDigit(i + 1);
        shown += isBeforeUnit ? QChar(QChar::Nbsp) : one;
        if (QStringLiteral("_-./").contains(one) && !isInNumber)
            shown += QChar(0x200b); // a zero-width space, where the line may break
    }
    return shown;
}

void clear(QLayout* layout) {
    while (QLayoutItem* item = layout->takeAt(0)) {
        if (QWidget* widget = item->widget()) {
            widget->hide();
            // Not deleted at once: this may be called from the widget's own click.
            widget->deleteLater();
        } else if (QLayout* inner = item->layout()) {
            clear(inner);
        }
        delete item;
    }
}

} // namespace orvane::views
