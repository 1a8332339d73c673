#include "OrvaneSyncApp/Views/Inspector/OutlineListModel.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/ResultsModel.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QPainter>

namespace orvane::views {

using namespace design;

namespace {

constexpr int outlineRowHeight = 44;
constexpr int outlineGlyphSide = 14;
constexpr int outlineFoldWidth = 24;

QString spokenRow(const OutlineModel::Row& row) {
    QStringList all{text(row.label)};
    if (!row.facts.empty()) all << translatedSentence(row.facts);
    if (row.isLocked) all << QObject::tr("locked");
    if (row.isApproved) all << QObject::tr("approved");
    if (row.isExcluded) all << QObject::tr("not exported");
    return all.join(QStringLiteral(", "));
}

} // namespace

OutlineListModel::OutlineListModel(OutlineModel& rows, QObject* parent) : RowsModel(parent), rows_(rows) {
    observation_ = rows.onChange([this](const ResultsViewModel::Change& change) { follow(change); });
}

int OutlineListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.rowCount());
}

QVariant OutlineListModel::data(const QModelIndex& index, int role) const {
    const OutlineModel::Row& shown = row(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(shown.label);
    case Qt::AccessibleTextRole:
        return spokenRow(shown);
    case Qt::AccessibleDescriptionRole:
        return translatedSentence(shown.status);
    case Qt::ToolTipRole: {
        QStringList lines{text(shown.label), translatedSentence(shown.facts),
                          translatedSentence(shown.status)};
        lines.removeAll(QString());
        lines.removeDuplicates();
        return lines.join(QLatin1Char('\n'));
    }
    default:
        return {};
    }
}

void OutlineDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const OutlineModel::Row& row = static_cast<const OutlineListModel*>(index.model())->row(index.row());
    const Colours& all = colours();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->fillRect(option.rect, isSelected                                       ? all.selected
                                   : option.state.testFlag(QStyle::State_MouseOver) ? all.panel
                                                                                    : all.window);
    const QColor strong = isSelected ? all.onSelected : row.isExcluded ? all.disabled : all.text;
    const QColor weak = isSelected ? all.onSelected : row.isExcluded ? all.disabled : all.facts;
    QRect inner = option.rect.adjusted(space::tight, 0, -space::small, 0);
    if (row.isTake)
        draw(*painter, row.isFolded ? Glyph::folded : Glyph::unfolded,
             QRectF(inner.left() + 2, inner.center().y() - outlineGlyphSide / 2.0, outlineGlyphSide,
                    outlineGlyphSide),
             weak);
    inner.setLeft(inner.left() + outlineFoldWidth + (row.isInTake ? space::small : 0));

    // The shape of the glyph also shows the certainty, not only its colour.
    const Signal sign = signal(row.certainty);
    if (sign != Signal::none)
        draw(*painter, glyph(sign),
             QRectF(inner.left(), inner.center().y() - outlineGlyphSide / 2.0, outlineGlyphSide,
                    outlineGlyphSide),
             isSelected ? all.onSelected : colour(sign));
    inner.setLeft(inner.left() + outlineGlyphSide + space::small);

    // The marks are in the lower line, beside the facts if there are any; so the name has the whole width.
    const int half = row.facts.empty() ? 0 : inner.height() / 2;
    const int marksMiddle = inner.center().y() + half / 2;
    int right = inner.right();
    for (const auto& [isSet, mark] :
         {std::pair(row.isExcluded, Glyph::excluded), std::pair(row.isLocked, Glyph::lock),
          std::pair(row.isApproved, Glyph::approve)}) {
        if (!isSet) continue;
        right -= outlineGlyphSide;
        const bool isWarning = mark == Glyph::lock && row.isMovedSinceLock && !isSelected;
        draw(*painter, mark,
             QRectF(right, marksMiddle - outlineGlyphSide / 2.0, outlineGlyphSide, outlineGlyphSide),
             isWarning ? colour(Signal::doubtful) : strong);
        right -= space::tight;
    }
    const int factsWidth = right - inner.left();
    const auto line = [&](const QRect& place, const QFont& font, const QColor& colour, const QString& shown,
                          bool isFile = false) {
        painter->setFont(font);
        painter->setPen(colour);
        painter->drawText(place, Qt::AlignVCenter | Qt::AlignLeft,
                          isFile ? elidedFile(QFontMetrics(font), shown, place.width())
                                 : QFontMetrics(font).elidedText(shown, Qt::ElideMiddle, place.width()));
    };
    if (row.facts.empty()) {
        inner.setRight(right);
        line(inner, textFont(), strong, text(row.label));
    } else {
        const QString name = inPartOrder(text(row.label));
        // In the name of a file the number is at the beginning; in the name of a clip the camera is at the
        // end.
        line({inner.left(), inner.top() + 2, inner.width(), half}, textFont(), strong, name,
             !name.contains(QLatin1Char(' ')));
        line({inner.left(), inner.top() + half, factsWidth, half - 2}, factsFont(), weak,
             inPartOrder(translatedSentence(row.facts)), true);
    }
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        painter->setRenderHint(QPainter::Antialiasing, false);
        painter->setPen(all.focus);
        painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
    }
    painter->restore();
}

QSize OutlineDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {1, outlineRowHeight};
}

bool OutlineDelegate::isFold(const QRect& row, const QPoint& at) {
    return at.x() < row.left() + space::tight + outlineFoldWidth;
}

} // namespace orvane::views
