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
/// record. Setting what is already shown costs nothing, so a card may be filled again at any time. Texts are
/// elided and never change the size. Assistive technology sees one group named by the title.
class Card : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Card)

public:
    /// A card between `minHeight` and `maxHeight` high, except where a large font needs more.
    Card(int minHeight, int maxHeight, QWidget *parent = nullptr);

    QString title() const;

    /// The controls that can have the focus now, in tab order.
    QList<QWidget *> controls() const;

    /// The minimum width of a card, and the height that its visible lines need.
    QSize sizeHint() const override;

    void setTitle(const QString &title);
    void setColor(const QColor &color);

protected:
    /// Adds a button at the end of the title row. It is not in the window's tab chain: the grid leads the
    /// focus through its cards in list order.
    IconButton *addButton();

    /// Adds an icon that takes no clicks at the end of the title row.
    SymbolLabel *addSymbol(const QString &symbol, const QString &name);

    /// Adds empty space below the lines so far, which gets the height that is left over.
    void addStretch();

    /// Adds a line. While hidden it takes no height.
    void addLine(QWidget *line);

    ElidedLabel *addText(const QColor &color);

    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void addToTitleRow(QWidget *widget);
    void updateTitleFont();

    int minHeight;
    int maxHeight;
    QColor color;
    Group *group;
    ElidedLabel *titleLabel;
    QHBoxLayout *titleRow;
    QVBoxLayout *column;
};
