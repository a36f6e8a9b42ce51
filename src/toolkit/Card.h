#pragma once

#include <QWidget>

class ElidedLabel;
class Group;
class IconButton;
class QHBoxLayout;
class QVBoxLayout;
class SymbolLabel;

/// One record in a CardGrid: a rounded rectangle with a title row, icons at its end, and lines below it.
///
/// A screen derives its kind of card from it, builds the lines in its constructor and fills them from a
/// record. Every setter does nothing when nothing changes, so a card may be filled again at any time. Texts
/// are elided and never change the size. Assistive technology sees one group named by the title; it lies in a
/// box of its own, so that whatever is near the title there belongs to this card.
class Card : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Card)

public:
    /// A card between `leastHeight` and `mostHeight` high, except where a large font needs more.
    Card(int leastHeight, int mostHeight, QWidget *parent = nullptr);

    QString title() const;

    /// The controls that can have the focus now, in tab order.
    QList<QWidget *> controls() const;

    /// The width that a card has at least and the height of its present lines.
    QSize sizeHint() const override;

    void setTitle(const QString &title);
    void setColor(const QColor &color);

protected:
    /// Adds a button at the end of the title row. The window's tab chain passes it by: the grid leads the
    /// focus through its cards in the order of the list.
    IconButton *addButton();

    /// Adds an icon at the end of the title row that takes no clicks.
    SymbolLabel *addSymbol(const QString &symbol, const QString &name);

    /// Adds space below the lines so far that takes up what height is left over.
    void addSpace();

    /// Adds a line. Hidden, it takes no height.
    void addLine(QWidget *line);

    /// Adds a line of text in `color`.
    ElidedLabel *addText(const QColor &color);

    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void addToTitleRow(QWidget *widget);
    void updateTitleFont();

    int leastHeight;
    int mostHeight;
    QColor color;
    Group *group;
    ElidedLabel *titleLabel;
    QHBoxLayout *titleRow;
    QVBoxLayout *column;
};
