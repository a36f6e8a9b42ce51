#pragma once

#include "store/Plan.h"
#include "toolkit/Card.h"
#include "ui/Environment.h"

class LinearProgress;
class TextRow;

/// The card of a plan: its times, weekdays and file, green with the position while it plays, and the place
/// where the user starts, stops, selects and edits it.
class PlanItem final : public Card
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlanItem)

public:
    explicit PlanItem(const Environment &environment);

    /// Shows `plan` as it stands, with the edit mode and the player's readouts as they are now.
    void show(const Plan &plan);

private:
    QWidget *makePlaybackRow();
    void togglePlaying();
    void showPlanEdit();

    Environment environment;
    Plan plan;
    SymbolLabel *repeat;
    IconButton *edit;
    IconButton *play;
    IconButton *select;
    ElidedLabel *timeSpan;
    TextRow *weekdays;
    ElidedLabel *music;
    ElidedLabel *currentTime;
    LinearProgress *progress;
    ElidedLabel *durationTime;
    QWidget *playbackRow;
};
