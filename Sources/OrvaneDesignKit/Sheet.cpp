#include "OrvaneDesignKit/Sheet.h"

#include "OrvaneDesignKit/IgnoresWheel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>
#include <vector>

namespace orvane::design {

Sheet::Sheet(const QString& title, QWidget* parent) : QDialog(parent) {
    setWindowTitle(title);
    setModal(true);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(space::medium, space::medium, space::medium, space::medium);
    rows->setSpacing(space::medium);
    rows->addWidget(design::title(title));
    contents_ = new QVBoxLayout;
    contents_->setSpacing(space::medium);
    rows->addLayout(contents_, 1);
    rows->addWidget(outcome_ = new Banner);
    outcome_->setObjectName(QStringLiteral("outcome"));
    buttons_ = new QHBoxLayout;
    buttons_->addStretch(1);
    rows->addLayout(buttons_);
}

void Sheet::add(QWidget* control, int stretch) { contents_->addWidget(control, stretch); }
void Sheet::add(QLayout* controls) { contents_->addLayout(controls); }
void Sheet::addAside(QWidget* control) { buttons_->insertWidget(0, control); }

void Sheet::addCopyableList(const QStringList& lines, const QString& name) {
    const QString all = lines.join(QLatin1Char('\n'));
    auto* list = new QPlainTextEdit(all);
    list->setReadOnly(true);
    list->setTabChangesFocus(true);
    list->setAccessibleName(name);
    add(list, 1);
    QPushButton* copy = button(tr("Copy List"));
    connect(copy, &QPushButton::clicked, this, [this, all] {
        QGuiApplication::clipboard()->setText(all);
        outcome().show(Signal::matched, tr("The list is in the clipboard."));
    });
    addAside(copy);
}

QPushButton* Sheet::addButton(const QString& text, Weight weight) {
    QPushButton* made = button(text, weight);
    if (weight == Weight::primary) made->setDefault(true);
    buttons_->addWidget(made);
    return made;
}

QPushButton* Sheet::addClose(const QString& text) {
    QPushButton* made = addButton(text);
    connect(made, &QPushButton::clicked, this, [this] { accept(); });
    return made;
}

void Sheet::present() {
    setAttribute(Qt::WA_DeleteOnClose);
    open();
}

SliderField::SliderField(const QString& accessibleName, Range range, const QString& unit,
                         std::function<void(int)> changed, QWidget* parent)
    : QWidget(parent), slider_(new IgnoresWheel<QSlider>(Qt::Horizontal)), field_(new IgnoresWheel<QSpinBox>),
      range_(range) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    slider_->setRange(range.lowest, range.highest);
    slider_->setSingleStep(range.step);
    slider_->setPageStep(range.step);
    slider_->setAccessibleName(accessibleName);
    field_->setRange(range.lowest, range.highest);
    field_->setSingleStep(range.step);
    field_->setSuffix(unit.isEmpty() ? unit : QLatin1Char(' ') + unit);
    field_->setAccessibleName(accessibleName);
    field_->setKeyboardTracking(false);
    field_->setButtonSymbols(QAbstractSpinBox::NoButtons);
    row->addWidget(slider_, 1);
    row->addWidget(field_);
    const auto take = [this, call = std::move(changed)](int wanted) {
        setValue(wanted);
        call(value());
    };
    connect(slider_, &QSlider::valueChanged, this, take);
    connect(field_, &QSpinBox::valueChanged, this, take);
}

void SliderField::setValue(int value) {
    const QSignalBlocker slider(slider_);
    const QSignalBlocker field(field_);
    const int steps = static_cast<int>(std::lround(double(value - range_.lowest) / range_.step));
    const int whole = std::clamp(range_.lowest + steps * range_.step, range_.lowest, range_.highest);
    slider_->setValue(whole);
    field_->setValue(whole);
}

int SliderField::value() const { return field_->value(); }

namespace {

QString toastName() { return QStringLiteral("toast"); }
QString toastPlaceName() { return QStringLiteral("toastPlace"); }

/// In coordinates of the window. A part within another one comes after it.
QRect toastPlaceIn(const QWidget& window) {
    QRect place = window.rect();
    for (const QWidget* part : window.findChildren<QWidget*>(toastPlaceName()))
        if (part->isVisible()) place = {part->mapTo(&window, QPoint()), part->size()};
    return place;
}

/// Shows a text until it is replaced or its time is over. It stays above the bars of its window, also above
/// those that appear later.
class Toast : public QFrame {
  public:
    Toast(QWidget* window, const QString& text) : QFrame(window), label_(new QLabel(text)) {
        setObjectName(toastName());
        setProperty(barProperty, true);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAccessibleName(text);
        auto* row = new QHBoxLayout(this);
        row->addWidget(label_);
        for (auto* bar : bars()) bar->installEventFilter(this);
        place();
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto type = event->type();
        if (type == QEvent::Show || type == QEvent::Move || type == QEvent::Resize)
            QMetaObject::invokeMethod(
                this, [this] { place(); }, Qt::QueuedConnection); // after the layout
        return QFrame::eventFilter(watched, event);
    }

  private:
    static constexpr const char* barProperty = "banner";

    std::vector<QFrame*> bars() const {
        std::vector<QFrame*> found;
        for (auto* frame : parentWidget()->findChildren<QFrame*>())
            if (frame != this && frame->property(barProperty).toBool()) found.push_back(frame);
        return found;
    }
    void place() {
        adjustSize();
        const QRect within = toastPlaceIn(*parentWidget());
        if (const int widest = within.width() - 2 * space::large; width() > widest) {
            label_->setWordWrap(true);
            resize(widest, layout()->heightForWidth(widest));
        }
        QRect place(rect());
        place.moveCenter({within.center().x(), 0});
        place.moveBottom(within.bottom() - space::large);
        for (const auto* bar : bars()) {
            if (!bar->isVisible()) continue;
            const QRect shown(bar->mapTo(parentWidget(), QPoint()), bar->size());
            if (shown.intersects(place)) place.moveBottom(shown.top() - space::small);
        }
        move(place.topLeft());
    }

    QLabel* label_;
};

} // namespace

void setToastPlace(QWidget* part) { part->setObjectName(toastPlaceName()); }

void hideToast(QWidget* window, const QString& text) {
    for (QWidget* shown : window->findChildren<QWidget*>(toastName(), Qt::FindDirectChildrenOnly)) {
        if (shown->accessibleName() != text) continue;
        shown->hide();
        shown->deleteLater();
    }
}

void showToast(QWidget* window, const QString& text) {
    constexpr int shownFor = 3000; // milliseconds
    // One at a time: a new one would cover the others.
    for (const QWidget* shown : window->findChildren<QWidget*>(toastName(), Qt::FindDirectChildrenOnly))
        hideToast(window, shown->accessibleName());
    if (text.isEmpty()) return;
    auto* toast = new Toast(window, text);
    toast->show();
    QTimer::singleShot(shownFor, toast, [toast] { toast->deleteLater(); });
}

} // namespace orvane::design
