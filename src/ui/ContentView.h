#pragma once

#include "toolkit/Style.h"
#include "ui/Environment.h"

#include <QDialog>
#include <QMainWindow>
#include <QPointer>

#include <functional>

class QAction;
class QToolBar;
class Sidebar;
template<typename T>
class Published;

/// The main window: the sidebar with its screens, and the toolbar with the edit mode and the buttons that
/// delete, select and add.
///
/// "Delete" and "Select All" act on the current screen, the only one that is selected in the sidebar. If
/// several or none are selected, they do nothing.
class ContentView final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ContentView)

public:
    explicit ContentView(const Environment &environment, QWidget *parent = nullptr);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void createToolBar();
    QAction *addButton(const QString &text, const std::function<void()> &onTriggered,
                       const QKeySequence &shortcut = {});
    void updateToolBar();
    void fitToolBar();
    void setIcon(QAction *action, const QString &symbol, Style::Accent accent);
    QString selectAllSymbol() const;
    void selectAll();
    void confirmDelete();
    void deleteSelected();
    void showEditors();
    template<typename Editor, typename Store>
    void showEditor(QPointer<QDialog> &editor, Store &store, Published<bool> &isShown);

    Environment environment;
    Sidebar *sidebar;
    QToolBar *toolBar = nullptr;
    QAction *deleteAction = nullptr;
    QAction *selectAllAction = nullptr;
    QAction *addPlanAction = nullptr;
    QAction *addHolidayAction = nullptr;
    QAction *editModeAction = nullptr;

    QPointer<QDialog> planEdit;
    QPointer<QDialog> holidayEdit;

    // Whether "Select All" has last selected or deselected everything on that screen.
    bool isPlanChecked = false;
    bool isHolidayChecked = false;
    bool isHistoryChecked = false;
};
