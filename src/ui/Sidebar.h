#pragma once

#include "ui/Environment.h"

#include <QWidget>

class NavigationList;
class QLabel;
class QStackedWidget;
class Scheduler;

/// The content of the main window: the navigation list over the running clock, and beside them the screen
/// that is selected. It owns the timer that drives the scheduler, so that the timetable runs for as long as
/// the window is there, whatever it shows.
class Sidebar final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Sidebar)

public:
    explicit Sidebar(const Environment &environment, QWidget *parent = nullptr);

    /// Hides the column with the list and the clock, or shows it again.
    void toggleSidebar();

private:
    QWidget *makeColumn();
    void addScreen(const QString &text, const QString &symbol, QWidget *screen);
    void publishSelection();
    void applySelection();
    void updateColors();
    void changeEvent(QEvent *event) override;

    AppStore &appStore;
    Scheduler *scheduler;
    NavigationList *list;
    QLabel *clockLine;
    QStackedWidget *screens;
    QWidget *column;
    QWidget *separator;
};
