#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"

#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QPointer>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <limits>

namespace orvane::views {

using namespace design;
using platform::SettingDescription;

namespace {

constexpr QSize usual{860, 640};
constexpr int controlWidth = 240;
constexpr double widest = 1e6; ///< of a number without a range

struct Tab {
    const char* title;
    std::vector<std::string_view> headings;
};

const std::vector<Tab>& tabs() {
    namespace family = settings::family;
    static const std::vector<Tab> all{
        {"Output", {family::exporting, family::frameSize, family::multicam, family::globalAudioOffset}},
        {"Naming", {family::projectAndNaming, family::notes}},
        {"Audio roles", {family::roles}},
        {"Smart Audio", {family::smartAudio}},
        {"Off-speed", {family::offspeed}},
        {"Reports and timecode", {family::matching, family::reports, family::linearTimecode}},
        {"Playback", {family::playback, family::atmo}},
    };
    return all;
}

/// As a sentence begins; a unit such as dB stays.
QString sentence(std::string_view meaning) {
    QString shown = text(meaning);
    if (shown.size() > 1 && !shown[1].isUpper()) shown[0] = shown[0].toUpper();
    return shown;
}

/// A wheel over a page scrolls the page, and changes no value below the pointer.
template <class Control>
class Calm : public Control {
  public:
    Calm() { this->setFocusPolicy(Qt::StrongFocus); }

  protected:
    void wheelEvent(QWheelEvent* event) override {
        if (this->hasFocus())
            Control::wheelEvent(event);
        else
            event->ignore();
    }
};

} // namespace

SettingsWindow::SettingsWindow(Desktop& desktop, QWidget* parent) : QDialog(parent), desktop_(desktop) {
    setWindowTitle(tr("Settings"));
    resize(usual);
    auto* column = new QVBoxLayout(this);
    column->addWidget(refusal_ = new Banner);
    auto* pages = new QTabWidget;
    pages->setAccessibleName(tr("Groups of settings"));
    for (const Tab& tab : tabs()) pages->addTab(page(tab.headings), tr(tab.title));
    column->addWidget(pages, 1);
    auto* close = button(tr("Done"), Weight::primary);
    connect(close, &QPushButton::clicked, this, [this] { accept(); });
    column->addWidget(close, 0, Qt::AlignRight);
}

QWidget* SettingsWindow::page(const std::vector<std::string_view>& headings) {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setSpacing(space::medium);
    for (const std::string_view heading : headings) {
        auto* section = new Section(text(heading));
        auto* rows = new QGridLayout;
        rows->setColumnStretch(0, 1);
        rows->setVerticalSpacing(space::small);
        for (const SettingDescription& setting : SettingsCatalogue::all()) {
            // A map has a table of its own.
            if (setting.family != heading || setting.kind == SettingDescription::Kind::map) continue;
            const int row = rows->rowCount();
            QWidget* made = control(setting);
            made->setToolTip(text(setting.key));
            made->setAccessibleName(sentence(setting.meaning));
            rows->addWidget(label(sentence(setting.meaning)), row, 0);
            rows->addWidget(made, row, 1);
        }
        section->add(rows);
        column->addWidget(section);
    }
    column->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return scroll;
}

JSON SettingsWindow::valueOf(const SettingDescription& setting) const {
    if (auto value = desktop_.settings().value(std::string(setting.key));
        value && setting.understands(*value))
        return std::move(*value);
    return setting.defaultValue();
}

QWidget* SettingsWindow::control(const SettingDescription& setting) {
    const JSON value = valueOf(setting);
    const double lowest = setting.details.range ? setting.details.range->lowest : -widest;
    const double highest = setting.details.range ? setting.details.range->highest : widest;
    switch (setting.kind) {
    case SettingDescription::Kind::boolean: {
        auto* box = new QCheckBox;
        box->setChecked(platform::readAs<bool>(value).value_or(false));
        connect(box, &QCheckBox::toggled, this, [this, &setting](bool isOn) { store(setting, isOn); });
        return box;
    }
    case SettingDescription::Kind::integer: {
        auto* number = new Calm<QSpinBox>;
        number->setButtonSymbols(QAbstractSpinBox::NoButtons);
        number->setRange(static_cast<int>(lowest), static_cast<int>(highest));
        number->setValue(platform::readAs<int>(value).value_or(0));
        number->setFixedWidth(controlWidth);
        connect(number, &QSpinBox::valueChanged, this,
                [this, &setting](int chosen) { store(setting, chosen); });
        return number;
    }
    case SettingDescription::Kind::number: {
        auto* number = new Calm<QDoubleSpinBox>;
        number->setButtonSymbols(QAbstractSpinBox::NoButtons);
        number->setRange(lowest, highest);
        number->setDecimals(3);
        number->setValue(platform::readAs<double>(value).value_or(0));
        number->setFixedWidth(controlWidth);
        connect(number, &QDoubleSpinBox::valueChanged, this,
                [this, &setting](double chosen) { store(setting, chosen); });
        return number;
    }
    default:
        break;
    }
    const QString now = text(platform::readAs<std::string>(value).value_or(""));
    if (!setting.choices.empty()) {
        auto* choice = new Choice;
        for (const std::string_view one : setting.choices) choice->addItem(text(one));
        const auto index = setting.choiceIndex(utf8(now));
        choice->setCurrentIndex(index ? static_cast<int>(*index) : 0);
        choice->setFixedWidth(controlWidth);
        connect(choice, &QComboBox::textActivated, this,
                [this, &setting](const QString& chosen) { store(setting, utf8(chosen)); });
        return choice;
    }
    QLineEdit* line = field({});
    line->setText(now);
    line->setFixedWidth(controlWidth);
    connect(line, &QLineEdit::editingFinished, this,
            [this, &setting, line] { store(setting, utf8(line->text())); });
    return line;
}

void SettingsWindow::store(const SettingDescription& setting, JSON value) {
    refusal_->clear();
    JSON arguments = JSON::object();
    arguments.set("key", setting.key);
    arguments.set("value", std::move(value));
    desktop_.run("setSetting", std::move(arguments), {}, [self = QPointer(this)](const QString& why) {
        if (self) self->refusal_->show(Signal::missing, why);
    });
}

} // namespace orvane::views
