#pragma once

#include <QListWidget>

/// The list at the side of a window that leads to its screens: rows with an icon and a text, inset from the
/// window's edge, with a rounded selection.
///
/// A click selects a row; Ctrl and Shift select several rows or none. A click beside the rows, a drag and
/// "Select All" change nothing. Where a text is too wide for the list, all texts get smaller.
class NavigationList final : public QListWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NavigationList)

public:
    explicit NavigationList(QWidget *parent = nullptr);

    /// Adds a row below those so far; `symbol` is the name of its icon.
    void addRow(const QString &text, const QString &symbol);

    void selectAll() override;

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event) const override;
};
