#include "ui/NavigationList.h"

#include "toolkit/FocusRing.h"
#include "toolkit/Style.h"
#include "toolkit/Symbol.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QStyledItemDelegate>

namespace {

constexpr int symbolRole = Qt::UserRole;
// From the edge of the list to a row, from there to its icon, and on to its text.
constexpr int padding = Style::inset / 2;
constexpr int verticalPadding = Style::lineGap;
constexpr qreal cornerRadius = 6;
constexpr float hoverOpacity = 0.08F;

class RowDelegate final : public QStyledItemDelegate
{
public:
    explicit RowDelegate(QListWidget *list) : QStyledItemDelegate(list), list(list) {}

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        const int content = qMax(option.fontMetrics.height(), Style::iconSizeBeside(option.font).height());
        return {0, content + 2 * verticalPadding + 2};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const QRect row = option.rect.adjusted(padding, 1, -padding, -1);
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        const QColor color = option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(background(option));
        painter->drawRoundedRect(row, cornerRadius, cornerRadius);
        paintContent(painter, row.adjusted(padding, 0, -padding, 0), color, index);
        if (option.state.testFlag(QStyle::State_HasFocus) && FocusRing::isShownBy(list))
            Style::paintFocus(painter, row.adjusted(2, 2, -2, -2), color);
        painter->restore();
    }

private:
    static QColor background(const QStyleOptionViewItem &option)
    {
        if (option.state.testFlag(QStyle::State_Selected))
            return option.palette.color(QPalette::Highlight);
        QColor color = option.palette.color(QPalette::Text);
        color.setAlphaF(option.state.testFlag(QStyle::State_MouseOver) ? hoverOpacity : 0);
        return color;
    }

    // The largest font up to that of the list in which all texts fit.
    QFont fittingFont(int width) const
    {
        const auto fits = [this, width](qreal scale) {
            const QFont font = Style::scaled(list->font(), scale);
            const int forText = width - Style::iconSizeBeside(font).width() - padding;
            int needed = 0;
            for (int row = 0; row < list->count(); ++row)
                needed = qMax(needed, QFontMetrics(font).horizontalAdvance(list->item(row)->text()));
            return needed <= forText;
        };
        return Style::scaled(list->font(), Style::fittingScale(0.5, fits));
    }

    void paintContent(QPainter *painter, const QRect &rect, const QColor &color,
                      const QModelIndex &index) const
    {
        const QFont font = fittingFont(rect.width());
        const QSize iconSize = Style::iconSizeBeside(font);
        const Qt::LayoutDirection direction = list->layoutDirection();
        const QRect icon =
            QStyle::alignedRect(direction, Qt::AlignLeading | Qt::AlignVCenter, iconSize, rect);
        Symbol::paint(painter, icon, index.data(symbolRole).toString(), color);
        const QRect text =
            QStyle::visualRect(direction, rect, rect.adjusted(iconSize.width() + padding, 0, 0, 0));
        painter->setFont(font);
        painter->setPen(color);
        const QString elided =
            QFontMetrics(font).elidedText(index.data().toString(), Qt::ElideRight, text.width());
        painter->drawText(text, int(QStyle::visualAlignment(direction, Qt::AlignLeading | Qt::AlignVCenter)),
                          elided);
    }

    QListWidget *list;
};

} // namespace

NavigationList::NavigationList(QWidget *parent) : QListWidget(parent)
{
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setItemDelegate(new RowDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    viewport()->setAttribute(Qt::WA_Hover);
}

void NavigationList::addRow(const QString &text, const QString &symbol)
{
    auto *row = new QListWidgetItem(text, this);
    row->setData(symbolRole, symbol);
}

void NavigationList::selectAll() {}

QItemSelectionModel::SelectionFlags NavigationList::selectionCommand(const QModelIndex &index,
                                                                     const QEvent *event) const
{
    const bool isDrag = event && event->type() == QEvent::MouseMove;
    if (isDrag || !index.isValid())
        return QItemSelectionModel::NoUpdate;
    return QListWidget::selectionCommand(index, event);
}
