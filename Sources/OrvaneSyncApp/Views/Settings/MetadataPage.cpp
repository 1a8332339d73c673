#include "OrvaneSyncApp/Views/Settings/MetadataPage.h"

#include "OrvaneSyncApp/ViewModels/Settings/FieldRows.h"
#include "OrvaneSyncApp/ViewModels/Settings/LockitTexts.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QGridLayout>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>

namespace orvane::views {

using namespace design;

namespace {
constexpr int nameWidth = 190;
constexpr int targetWidth = 180;
constexpr std::chrono::milliseconds betweenCancels{100};
} // namespace

MetadataPage::MetadataPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab)
    : SettingsPage(desktop, model, tab) {
    QString searched = tr("LockitNetwork field mapping target key Final Cut Pro");
    for (const FieldRow& row : fieldRows(LockitFieldMapping()))
        searched += QLatin1Char(' ') + translated(row.name);
    add(makeAccount(), tr("LockitNetwork sign in sign out account"));
    add(makeFields(), searched);
    MetadataPage::refresh();
}

QWidget* MetadataPage::makeAccount() {
    auto* section = new Section(tr("LockitNetwork"));
    auto* row = new QHBoxLayout;
    row->addWidget(pill_ = new Badge);
    pill_->setObjectName(QStringLiteral("account"));
    row->addStretch(1);
    row->addWidget(signIn_ = button(tr("Sign In with LockitNetwork"), Weight::primary));
    row->addWidget(cancel_ = button(tr("Cancel")));
    row->addWidget(signOut_ = button(tr("Sign Out")));
    for (QPushButton* one : {signIn_, cancel_, signOut_}) one->hide();
    section->add(row);
    paste_ = new QWidget;
    auto* paste = new QVBoxLayout(paste_);
    paste->setContentsMargins(0, 0, 0, 0);
    paste->addWidget(
        facts(tr("Sign in on the page in the browser. Where the browser does not lead back here, "
                 "paste the address that it ends at.")));
    auto* pasteRow = new QHBoxLayout;
    callback_ = field(tr("Address that the browser ends at"),
                      QStringLiteral("%1://…").arg(QLatin1String(LockitOAuthService::callbackURLScheme)));
    QPushButton* complete = button(tr("Paste the Callback"));
    pasteRow->addWidget(callback_, 1);
    pasteRow->addWidget(complete);
    paste->addLayout(pasteRow);
    paste_->hide();
    section->add(paste_);
    section->add(problem_ = new Remark);
    connect(signIn_, &QPushButton::clicked, this, [this] { run("signIn"); });
    connect(signOut_, &QPushButton::clicked, this, [this] { run("signOut"); });
    connect(cancel_, &QPushButton::clicked, this, [this] { cancelSignIn(); });
    connect(complete, &QPushButton::clicked, this, [this] { completeSignIn(); });
    connect(callback_, &QLineEdit::returnPressed, this, [this] { completeSignIn(); });
    return section;
}

QWidget* MetadataPage::makeFields() {
    auto* section = new Section(tr("Fields"));
    section->add(
        facts(tr("Where each field goes when a document is written. “Off” leaves it out; “Custom…” takes "
                 "a metadata key of your own.")));
    auto* grid = new QGridLayout;
    grid->setColumnMinimumWidth(0, nameWidth);
    grid->setColumnStretch(2, 1);
    grid->setVerticalSpacing(space::tight);
    for (const FieldRow& row : fieldRows(LockitFieldMapping())) {
        const QString name = translated(row.name);
        Line line{row.field, new Choice, field(tr("Metadata key of “%1”").arg(name), tr("Metadata key")),
                  button({}, Glyph::undo, Weight::quiet), new Remark};
        line.target->setAccessibleName(tr("Target of “%1”").arg(name));
        line.target->setObjectName(text(rawValue(row.field)));
        line.target->setFixedWidth(targetWidth);
        for (std::size_t i = 0; i < RawValues<FCPMetaTarget>::texts.size(); ++i)
            line.target->addItem(translated(displayName(static_cast<FCPMetaTarget>(i))));
        line.reset->setToolTip(tr("Reset to default"));
        line.reset->setAccessibleName(tr("Reset “%1” to default").arg(name));
        for (QWidget* one : std::initializer_list<QWidget*>{line.key, line.reset}) {
            QSizePolicy keepsPlace = one->sizePolicy();
            keepsPlace.setRetainSizeWhenHidden(true);
            one->setSizePolicy(keepsPlace);
        }
        const int at = grid->rowCount();
        grid->addWidget(label(name), at, 0);
        grid->addWidget(line.target, at, 1);
        grid->addWidget(line.key, at, 2);
        grid->addWidget(line.reset, at, 3);
        grid->addWidget(line.remark, at + 1, 0, 1, 4);
        const LockitField which = row.field;
        connect(line.target, &QComboBox::activated, this,
                [this, which](int index) { setTarget(which, static_cast<FCPMetaTarget>(index)); });
        connect(line.key, &QLineEdit::editingFinished, this, [this, which, key = line.key] {
            const LockitFieldMapping now = LockitFieldMapping::current(desktop().settings());
            const std::string typed = utf8(key->text());
            key->setModified(false);
            if (typed != now.customKey(which).value_or("")) setTarget(which, now.target(which), typed);
        });
        connect(line.reset, &QPushButton::clicked, this,
                [this, which] { setTarget(which, LockitFieldMapping().target(which)); });
        lines_.push_back(line);
    }
    section->add(grid);
    section->add(fieldProblem_ = new Remark);
    auto* row = new QHBoxLayout;
    QPushButton* reset = button(tr("Reset All Fields"), Glyph::undo);
    connect(reset, &QPushButton::clicked, this, [this] {
        desktop().run("resetFieldMapping", {}, {}, [self = QPointer(this)](const QString& why) {
            if (self) self->fieldProblem_->show(Signal::missing, why);
        });
    });
    row->addWidget(reset);
    row->addStretch(1);
    section->add(row);
    return section;
}

void MetadataPage::refresh() {
    SettingsPage::refresh();
    const auto rows = fieldRows(LockitFieldMapping::current(desktop().settings()));
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        Line& line = lines_[i];
        const FieldRow& row = rows[i];
        line.target->setCurrentIndex(static_cast<int>(row.target));
        line.key->setVisible(row.target == FCPMetaTarget::custom);
        if (!(line.key->hasFocus() && line.key->isModified())) line.key->setText(text(row.customKey));
        line.reset->setVisible(!row.isDefault);
        line.remark->show(row.isLeftOut ? Signal::doubtful : Signal::none, translatedSentence(row.remark));
    }
}

void MetadataPage::open() {
    if (account_) return;
    account_ = desktop().context().account();
    observation_ = account_->onChange([this] { showAccount(); });
    account_->ready().whenDone([self = QPointer(this)](const std::exception_ptr&) {
        if (self) self->showAccount();
    });
    showAccount();
}

void MetadataPage::showAccount() {
    const AccountPanel panel = accountPanel(*account_);
    pill_->show(panel.isSignedIn ? Signal::matched : Signal::none, translatedSentence(panel.state));
    const bool wasPressed = signIn_->hasFocus();
    signIn_->setVisible(panel.canSignIn);
    cancel_->setVisible(panel.canCancel);
    if (!panel.canCancel) cancel_->setEnabled(true);
    paste_->setVisible(panel.canCancel);
    if (wasPressed && panel.canCancel) callback_->setFocus(); // the field that is needed next
    signOut_->setVisible(panel.isSignedIn && !panel.canCancel);
    if (panel.canCancel) refusal_.clear();
    const QString why = refusal_.isEmpty() ? translatedSentence(panel.problem) : refusal_;
    problem_->show(why.isEmpty() ? Signal::none : Signal::doubtful, why);
}

/// Repeated until the sign-in has ended, because it can be cancelled only once it waits for the browser.
void MetadataPage::cancelSignIn() {
    if (!account_->state().isAuthenticating) return;
    cancel_->setEnabled(false);
    account_->cancelSignIn();
    QTimer::singleShot(betweenCancels, this, [this] {
        if (!cancel_->isEnabled()) cancelSignIn();
    });
}

void MetadataPage::completeSignIn() {
    JSON arguments = JSON::object();
    arguments.set("callbackURL", utf8(callback_->text().trimmed()));
    callback_->clear();
    run("completeSignIn", std::move(arguments));
}

void MetadataPage::run(std::string_view id, JSON arguments) {
    desktop().run(id, std::move(arguments), {}, [self = QPointer(this)](const QString& why) {
        if (!self) return;
        self->showAccount();
        self->refusal_ = why;
        self->problem_->show(Signal::doubtful, why);
    });
}

void MetadataPage::setTarget(LockitField field, FCPMetaTarget target,
                             const std::optional<std::string>& customKey) {
    fieldProblem_->show(Signal::none, {});
    JSON arguments = JSON::object();
    arguments.set("field", rawValue(field));
    arguments.set("target", rawValue(target));
    arguments.setIfPresent("customKey", customKey);
    desktop().run("setFieldMapping", std::move(arguments), {}, [self = QPointer(this)](const QString& why) {
        if (self) self->fieldProblem_->show(Signal::missing, why);
    });
}

} // namespace orvane::views
