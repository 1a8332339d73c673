#include "OrvaneSyncApp/Views/Settings/SettingRowView.h"

#include "OrvaneDesignKit/IgnoresWheel.h"
#include "OrvaneSyncApp/Views/Settings/PatternEditorView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SmartAudioConfig.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QPointer>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>
#include <cmath>
#include <limits>

namespace orvane::views {

using namespace design;
using platform::readAs;

namespace {

constexpr int controlWidth = 370;
constexpr int percentWidth = 86;
constexpr int hundred = 100;

/// The number of decimals that show the value without rounding, 6 at most.
int decimalsOf(double number) {
    constexpr int most = 6;
    int decimals = 0;
    for (double unit = 1; decimals < most && std::abs(std::round(number * unit) / unit - number) > 1e-9;
         unit *= 10)
        ++decimals;
    return decimals;
}

Signal signalOf(SettingRemark::Kind kind) {
    switch (kind) {
    case SettingRemark::Kind::doubt:
        return Signal::doubtful;
    case SettingRemark::Kind::mistake:
        return Signal::missing;
    default:
        return Signal::none;
    }
}

} // namespace

SettingRowView::SettingRowView(Desktop& desktop, const SettingsModel& model, const SettingRow& row,
                               QWidget* parent)
    : QWidget(parent), desktop_(desktop), model_(model), row_(row), control_(makeControl()),
      reset_(button({}, Glyph::undo, Weight::quiet)), remark_(new Remark) {
    const QString name = translated(row.label);
    setObjectName(text(row.setting.get().key));
    reset_->setToolTip(tr("Reset to default"));
    reset_->setAccessibleName(tr("Reset “%1” to default").arg(name));
    QSizePolicy keepsPlace = reset_->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    reset_->setSizePolicy(keepsPlace);
    connect(reset_, &QPushButton::clicked, this, [this] { store(JSON()); });
    auto* grid = new QGridLayout(this);
    place(*grid);
    refresh();
}

void SettingRowView::place(QGridLayout& grid) {
    grid.setContentsMargins(0, 0, 0, 0);
    grid.setVerticalSpacing(2);
    grid.setHorizontalSpacing(space::medium);
    grid.setColumnStretch(0, 1);
    QLabel* name = label(translated(row_.label));
    name->setBuddy(control_);
    const bool isWide = row_.control == SettingRow::Control::pattern;
    if (!isWide && row_.control != SettingRow::Control::toggle) control_->setFixedWidth(controlWidth);
    auto* side = new QWidget; // the same width in every row, so that the controls are aligned
    if (!isWide) side->setFixedWidth(controlWidth);
    auto* sideRow = new QHBoxLayout(side);
    sideRow->setContentsMargins(0, 0, 0, 0);
    sideRow->addWidget(control_, isWide ? 1 : 0, Qt::AlignLeft);
    if (isWide) sideRow->setAlignment(control_, {});
    int line = 0;
    grid.addWidget(name, line, 0, row_.hint.empty() ? 2 : 1, 1, Qt::AlignVCenter);
    if (!isWide) grid.addWidget(side, line, 1, 2, 1, Qt::AlignVCenter);
    grid.addWidget(reset_, line, 2, 2, 1, Qt::AlignVCenter);
    ++line;
    if (!row_.hint.empty()) grid.addWidget(facts(translated(row_.hint)), line, 0);
    ++line;
    if (isWide) grid.addWidget(side, line++, 0, 1, 3);
    grid.addWidget(remark_, line, 0, 1, 3);
}

QWidget* SettingRowView::makeControl() {
    QWidget* made = nullptr;
    switch (row_.control) {
    case SettingRow::Control::toggle:
        made = makeToggle();
        break;
    case SettingRow::Control::choice:
        made = makeChoice();
        break;
    case SettingRow::Control::number:
        made = makeNumber();
        break;
    case SettingRow::Control::amount:
        made = makeAmount();
        break;
    case SettingRow::Control::line:
        made = makeLine();
        break;
    case SettingRow::Control::pattern:
        made = makePattern();
        break;
    case SettingRow::Control::file:
        made = makeFile();
        break;
    }
    made->setAccessibleName(translated(row_.label));
    made->setAccessibleDescription(translated(row_.hint));
    made->setToolTip(text(row_.setting.get().key));
    return made;
}

QWidget* SettingRowView::makeToggle() {
    auto* box = new QCheckBox;
    put_ = [box](const JSON& value) { box->setChecked(readAs<bool>(value).value_or(false)); };
    connect(box, &QCheckBox::toggled, this, [this](bool isOn) { store(isOn); });
    return box;
}

QWidget* SettingRowView::makeChoice() {
    auto* choice = new Choice;
    choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    put_ = [this, choice](const JSON&) {
        const auto choices = model_.choices(row_);
        choice->clear();
        for (std::size_t i = 0; i < choices.size(); ++i) {
            const std::string& said = choices[i].text;
            // A text that names the open work, or is not one of those offered, is not in the catalogue as a
            // whole.
            const bool isFixed = i < row_.choices.size() && row_.choices[i].text == said;
            choice->addItem(isFixed ? translated(said) : translatedSentence(said));
        }
        choice->setCurrentIndex(static_cast<int>(model_.chosen(row_, choices)));
    };
    connect(choice, &QComboBox::activated, this, [this](int index) {
        const auto choices = model_.choices(row_);
        if (index >= 0 && index < std::ssize(choices)) store(choices[static_cast<std::size_t>(index)].value);
    });
    return choice;
}

QWidget* SettingRowView::makeNumber() {
    const SettingDescription& setting = row_.setting;
    const bool isWhole = setting.kind == SettingDescription::Kind::integer;
    using Int = std::numeric_limits<int>;
    const auto range = setting.details.range.value_or(SettingDescription::Range{Int::min(), Int::max()});
    auto* number = new IgnoresWheel<QDoubleSpinBox>;
    number->setButtonSymbols(QAbstractSpinBox::NoButtons);
    number->setRange(range.lowest, range.highest);
    number->setSuffix(translatedSentence(row_.unit));
    number->setKeyboardTracking(false);
    put_ = [number, atLeast = row_.decimals](const JSON& value) {
        const double stored = readAs<double>(value).value_or(0);
        number->setDecimals(
            std::max(atLeast, decimalsOf(stored))); // before the value, which is rounded to them
        number->setValue(stored);
    };
    connect(number, &QDoubleSpinBox::valueChanged, this, [this, isWhole](double chosen) {
        store(isWhole ? JSON(static_cast<std::int64_t>(std::llround(chosen))) : JSON(chosen));
    });
    return number;
}

QWidget* SettingRowView::makeAmount() {
    auto* both = new QWidget;
    auto* line = new QHBoxLayout(both);
    line->setContentsMargins(0, 0, 0, 0);
    auto* slider = new IgnoresWheel<QSlider>;
    slider->setOrientation(Qt::Horizontal);
    slider->setRange(0, hundred);
    slider->setAccessibleName(translated(row_.label));
    auto* number = new IgnoresWheel<QDoubleSpinBox>;
    number->setButtonSymbols(QAbstractSpinBox::NoButtons);
    number->setRange(0, hundred);
    number->setSuffix(QStringLiteral(" %"));
    number->setFixedWidth(percentWidth);
    number->setKeyboardTracking(false);
    number->setAccessibleName(tr("%1 in percent").arg(translated(row_.label)));
    line->addWidget(slider, 1);
    line->addWidget(number);
    put_ = [slider, number](const JSON& value) {
        const double percent = readAs<double>(value).value_or(0) * hundred;
        const QSignalBlocker quietSlider(slider), quietNumber(number);
        slider->setValue(static_cast<int>(std::lround(percent)));
        number->setDecimals(decimalsOf(percent));
        number->setValue(percent);
    };
    const auto storePercent = [this](double percent) { store(percent / hundred); };
    // While the slider is dragged, only the number follows; the value is stored when the drag ends.
    connect(slider, &QSlider::valueChanged, this, [slider, number, storePercent](int percent) {
        const QSignalBlocker quiet(number);
        number->setDecimals(0);
        number->setValue(percent);
        if (!slider->isSliderDown()) storePercent(percent);
    });
    connect(slider, &QSlider::sliderReleased, this,
            [slider, storePercent] { storePercent(slider->value()); });
    connect(number, &QDoubleSpinBox::valueChanged, this, storePercent);
    return both;
}

QWidget* SettingRowView::makeLine() {
    QLineEdit* line = field({});
    put_ = [line](const JSON& value) {
        const QString now = text(settingText(value));
        if (line->text() != now && !(line->hasFocus() && line->isModified())) line->setText(now);
    };
    connect(line, &QLineEdit::editingFinished, this, [this, line] {
        line->setModified(false);
        store(utf8(line->text()));
    });
    return line;
}

QWidget* SettingRowView::makePattern() {
    auto* editor = new PatternEditorView(desktop_, [this](const std::string& pattern) { store(pattern); });
    put_ = [editor](const JSON& value) { editor->show(settingText(value)); };
    return editor;
}

QWidget* SettingRowView::makeFile() {
    auto* both = new QWidget;
    auto* row = new QHBoxLayout(both);
    row->setContentsMargins(0, 0, 0, 0);
    QWidget* line = makeLine();
    line->setAccessibleName(translated(row_.label));
    auto* choose = button(tr("Choose…"), Glyph::folder);
    choose->setAccessibleName(tr("Choose a recording"));
    row->addWidget(line, 1);
    row->addWidget(choose);
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getOpenFileName(
            this, tr("Choose a recording"), QFileInfo(text(settingText(model_.value(row_)))).absolutePath(),
            tr("Sound (*.wav *.aif *.aiff *.flac *.mp3 *.m4a);;All files (*)"));
        if (!chosen.isEmpty()) store(utf8(chosen));
    });
    return both;
}

void SettingRowView::refresh() {
    const JSON now = model_.value(row_);
    {
        const QSignalBlocker quiet(control_);
        put_(now);
    }
    const bool isEnabled = model_.isEnabled(row_);
    control_->setEnabled(isEnabled);
    reset_->setVisible(model_.isChanged(row_));
    showRemark();
}

void SettingRowView::showRemark() {
    if (!refusal_.isEmpty()) return remark_->show(Signal::missing, refusal_);
    const SettingRemark remark = model_.remark(row_);
    remark_->show(signalOf(remark.kind), translatedSentence(remark.text));
}

void SettingRowView::store(JSON value) {
    const SettingDescription& setting = row_.setting;
    if (!value.isNull() && value == model_.value(row_) && refusal_.isEmpty()) return;
    refusal_.clear();
    if (setting.key == settings::smartAudioMode.key)
        if (const auto mode = settings::smartAudioMode.read(value))
            SmartAudioConfig::moveSliders(desktop_.settings(), *mode);
    JSON arguments = JSON::object();
    arguments.set("key", setting.key);
    arguments.set("value", std::move(value));
    desktop_.run("setSetting", std::move(arguments), {}, [self = QPointer(this)](const QString& why) {
        if (!self) return;
        self->refusal_ = why;
        self->refresh();
    });
    showRemark();
}

} // namespace orvane::views
