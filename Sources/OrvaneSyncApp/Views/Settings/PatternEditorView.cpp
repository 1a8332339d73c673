#include "OrvaneSyncApp/Views/Settings/PatternEditorView.h"

#include "OrvaneDesignKit/IgnoresWheel.h"
#include "OrvaneSyncApp/ViewModels/Settings/NamingPreview.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "Platform/Text.h"

#include <QGridLayout>
#include <QSpinBox>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

namespace {

/// The position of the caret in visible characters, as the editor counts.
std::size_t caretOf(const QLineEdit& line) {
    return platform::text::characters(utf8(line.text().left(line.cursorPosition()))).size();
}

QSpinBox* number(const QString& name, int highest) {
    auto* made = new IgnoresWheel<QSpinBox>;
    made->setButtonSymbols(QAbstractSpinBox::NoButtons);
    made->setRange(1, highest);
    made->setAccessibleName(name);
    made->setToolTip(name);
    return made;
}

} // namespace

PatternEditorView::PatternEditorView(Desktop& desktop, std::function<void(const std::string&)> changed,
                                     QWidget* parent)
    : QWidget(parent), desktop_(desktop), changed_(std::move(changed)), line_(field(tr("Pattern"))),
      preview_(label(QString())) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, space::tight, 0, 0);
    rows->addWidget(line_);
    preview_->setObjectName(QStringLiteral("namingPreview"));
    preview_->setTextFormat(Qt::PlainText);
    rows->addWidget(preview_);
    rows->addWidget(makeTokens());
    setFocusProxy(line_);
    connect(line_, &QLineEdit::textEdited, this, [this] {
        editor_.pattern = utf8(line_->text());
        showPreview();
    });
    connect(line_, &QLineEdit::editingFinished, this, [this] {
        line_->setModified(false);
        changed_(utf8(line_->text()));
    });
    observation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::syncGroups) showPreview();
    });
}

QWidget* PatternEditorView::makeTokens() {
    auto* tokens = new QWidget;
    auto* grid = new QGridLayout(tokens);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(space::tight);
    int line = 0;
    for (const auto category : GroupNaming::allTokenCategories) {
        grid->addWidget(facts(translated(GroupNaming::label(category))), line, 0);
        auto* row = new QHBoxLayout;
        row->setSpacing(space::tight);
        for (const GroupNaming::TokenInfo& token : GroupNaming::tokenCatalogue) {
            if (token.category != category) continue;
            QPushButton* insertToken = button(translated(token.label));
            insertToken->setObjectName(text(token.token));
            insertToken->setToolTip(tr("%1 – %2, such as %3")
                                        .arg(text(token.token), translated(token.hint), text(token.example)));
            connect(insertToken, &QPushButton::clicked, this, [this, &token] { insert(token.token); });
            row->addWidget(insertToken);
        }
        row->addStretch(1);
        grid->addLayout(row, line++, 1);
    }
    grid->addWidget(facts(tr("Counter")), line, 0);
    grid->addWidget(makeCounter(), line, 1);
    grid->setColumnStretch(1, 1);
    return tokens;
}

QWidget* PatternEditorView::makeCounter() {
    auto* counter = new QWidget;
    auto* row = new QHBoxLayout(counter);
    row->setContentsMargins(0, 0, 0, 0);
    auto* digits = number(tr("Digits of the counter"), PatternEditor::mostCounterDigits);
    auto* value = number(tr("Value of the counter in the preview"), PatternEditor::highestCounterValue);
    digits->setValue(editor_.counterDigits);
    value->setValue(editor_.counterValue);
    QPushButton* insertCounter = button({}, Glyph::plus);
    insertCounter->setObjectName(QStringLiteral("insertCounter"));
    const auto showToken = [this, insertCounter] { insertCounter->setText(text(editor_.counterToken())); };
    showToken();
    insertCounter->setToolTip(tr("Insert the counter with so many digits"));
    row->addWidget(facts(tr("Digits")));
    row->addWidget(digits);
    row->addWidget(insertCounter);
    QLabel* valueLabel = facts(tr("Value in the preview"));
    valueLabel->setWordWrap(false);
    row->addWidget(valueLabel);
    row->addWidget(value);
    row->addStretch(1);
    connect(digits, &QSpinBox::valueChanged, this, [this, showToken](int chosen) {
        editor_.counterDigits = chosen;
        showToken();
        showPreview();
    });
    connect(value, &QSpinBox::valueChanged, this, [this](int chosen) {
        editor_.counterValue = chosen;
        showPreview();
    });
    connect(insertCounter, &QPushButton::clicked, this, [this] { insert(editor_.counterToken()); });
    return counter;
}

void PatternEditorView::show(const std::string& pattern) {
    if (!(line_->hasFocus() && line_->isModified()) && utf8(line_->text()) != pattern)
        line_->setText(text(pattern));
    editor_.pattern = utf8(line_->text());
    showPreview();
}

void PatternEditorView::insert(std::string_view token) {
    editor_.pattern = utf8(line_->text());
    editor_.caretPosition = caretOf(*line_);
    editor_.insert(token);
    const auto caret = line_->cursorPosition() + static_cast<int>(text(token).size());
    line_->setText(text(editor_.pattern));
    line_->setCursorPosition(caret);
    showPreview();
    changed_(editor_.pattern);
}

void PatternEditorView::showPreview() {
    const NamingPreview preview = namingPreview(editor_, desktop_.controller().work().syncGroups());
    preview_->setText(tr("Preview: %1  (%2)").arg(text(preview.name), text(preview.clip)));
}

} // namespace orvane::views
