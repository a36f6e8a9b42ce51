#pragma once

#include <QListWidget>

/// The navigation list of a sidebar: rows with an icon and a text, and a rounded selection that is inset from
/// the edge of the window.
///
/// A click selects a row; Ctrl and Shift select several rows or none. A click beside the rows, a drag and
/// "Select All" change nothing. If a text is too wide for the list, all texts get smaller.
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
