#pragma once

#include "ui/Environment.h"

#include <QWidget>

class NavigationList;
class QLabel;
class QStackedWidget;
class Scheduler;

/// The content of the main window: a column with the navigation list and the clock, and the selected screen.
/// It owns the timer that drives the scheduler: the timetable runs as long as the window exists, whatever it
/// shows.
class Sidebar final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Sidebar)

public:
    explicit Sidebar(const Environment &environment, QWidget *parent = nullptr);

    /// Hides the column with the list and the clock, or shows it again.
    void toggleSidebar();

private:
    QWidget *createColumn();
    void addScreen(const QString &text, const QString &symbol, QWidget *screen);
    void publishSelection();
    void applySelection();
    void updateColors();
    void updateClockSize();
    void changeEvent(QEvent *event) override;

    AppStore &appStore;
    Scheduler *scheduler;
    NavigationList *list;
    QLabel *clockLabel;
    QStackedWidget *screens;
    QWidget *column;
    QWidget *separator;
};
