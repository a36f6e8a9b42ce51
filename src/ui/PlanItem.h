#pragma once

#include "store/Plan.h"
#include "toolkit/Card.h"
#include "ui/Environment.h"

class LinearProgress;
class TextRow;

/// The card of a plan: its times, weekdays and file and, while it plays, the position on a green background.
/// Its buttons start, stop, edit and select the plan.
class PlanItem final : public Card
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlanItem)

public:
    explicit PlanItem(const Environment &environment);

    /// Shows `record` in the current edit mode, and the position of the player while the plan plays.
    void setRecord(const Plan &record);

private:
    QWidget *makePlaybackRow();
    void togglePlaying();
    void showPlanEdit();

    Environment environment;
    Plan plan;
    SymbolLabel *repeatSymbol;
    IconButton *editButton;
    IconButton *playButton;
    IconButton *selectButton;
    ElidedLabel *timeSpan;
    TextRow *weekdays;
    ElidedLabel *music;
    ElidedLabel *currentTime;
    LinearProgress *progress;
    ElidedLabel *durationTime;
    QWidget *playbackRow;
};
