#include "OrvaneDesignKit/FlowLayout.h"

#include "OrvaneDesignKit/Theme.h"

#include <QWidget>

#include <algorithm>
#include <utility>
#include <vector>

namespace orvane::design {

FlowLayout::FlowLayout(QWidget* parent) : QLayout(parent) {
    setContentsMargins(0, 0, 0, 0);
    setSpacing(space::tight);
}

FlowLayout::~FlowLayout() { qDeleteAll(items_); }

void FlowLayout::addItem(QLayoutItem* item) { items_.append(item); }
int FlowLayout::count() const { return static_cast<int>(items_.size()); }
QLayoutItem* FlowLayout::itemAt(int index) const { return items_.value(index); }
QLayoutItem* FlowLayout::takeAt(int index) {
    return index >= 0 && index < count() ? items_.takeAt(index) : nullptr;
}

int FlowLayout::heightForWidth(int width) const { return place({0, 0, width, 0}, false); }
QSize FlowLayout::sizeHint() const { return minimumSize(); }

QSize FlowLayout::minimumSize() const {
    QSize size;
    for (const QLayoutItem* item : items_)
        if (!item->isEmpty()) size = size.expandedTo(item->minimumSize());
    return size;
}

void FlowLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    place(rect, true);
}

int FlowLayout::place(const QRect& within, bool isMeant) const {
    int x = within.x(), y = within.y(), lineHeight = 0;
    std::vector<std::pair<QLayoutItem*, QRect>> line;
    const auto endLine = [&] {
        const int spare = within.x() + within.width() - (x - spacing());
        int passed = 0;
        for (std::size_t i = 0; fillsLines_ && i < line.size(); ++i) {
            const int wider = (spare - passed) / static_cast<int>(line.size() - i);
            line[i].second.translate(passed, 0);
            line[i].second.setWidth(line[i].second.width() + wider);
            passed += wider;
        }
        for (auto& [item, rect] : line) {
            rect.moveTop(y + (lineHeight - rect.height()) / 2);
            if (isMeant) item->setGeometry(rect);
        }
        line.clear();
    };
    for (QLayoutItem* item : items_) {
        if (item->isEmpty()) continue;
        const QSize size(std::min(item->sizeHint().width(), within.width()), item->sizeHint().height());
        if (x > within.x() && x + size.width() > within.x() + within.width()) {
            endLine();
            x = within.x();
            y += lineHeight + spacing();
            lineHeight = 0;
        }
        line.emplace_back(item, QRect({x, y}, size));
        x += size.width() + spacing();
        lineHeight = std::max(lineHeight, size.height());
    }
    endLine();
    return y + lineHeight - within.y();
}

} // namespace orvane::design
