#include "ui/PlanItem.h"

#include "app/AppStore.h"
#include "core/AVPlayer.h"
#include "core/ManualPlayback.h"
#include "store/PlanStore.h"
#include "toolkit/ElidedLabel.h"
#include "toolkit/IconButton.h"
#include "toolkit/LinearProgress.h"
#include "toolkit/Style.h"
#include "toolkit/SymbolLabel.h"
#include "toolkit/TextRow.h"
#include "ui/PlanEdit.h"

#include <QHBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

PlanItem::PlanItem(const Environment &environment) : Card(100, 140), environment(environment)
{
    repeatSymbol = addSymbol(u"repeat"_s, tr("Repeat"));
    editButton = addButton();
    editButton->setSymbol(u"square.and.pencil"_s, tr("Edit"));
    playButton = addButton();
    selectButton = addButton();
    selectButton->setSymbols(u"square"_s, u"checkmark.square"_s, tr("Select"));
    addStretch();
    timeSpan = addText(Style::softWhite);
    weekdays = new TextRow({tr("Sun"), tr("Mon"), tr("Tue"), tr("Wed"), tr("Thu"), tr("Fri"), tr("Sat")});
    addLine(weekdays);
    music = addText(Style::softWhite);
    playbackRow = makePlaybackRow();
    addLine(playbackRow);

    connect(editButton, &IconButton::clicked, this, &PlanItem::showPlanEdit);
    connect(playButton, &IconButton::clicked, this, &PlanItem::togglePlaying);
    connect(selectButton, &IconButton::clicked, this,
            [this, &store = environment.planStore] { store.toggleChecked(plan); });
}

void PlanItem::setRecord(const Plan &record)
{
    plan = record;
    const bool isEditMode = environment.appStore.isEditMode;
    setTitle(plan.title);
    setColor(plan.isPlaying ? Style::green : Style::planColor);
    repeatSymbol->setVisible(plan.isLoop);
    editButton->setVisible(isEditMode);
    playButton->setVisible(isEditMode || plan.isPlaying);
    playButton->setSymbol(plan.isPlaying ? u"stop.fill"_s : u"play"_s,
                          plan.isPlaying ? tr("Stop") : tr("Play"));
    selectButton->setVisible(isEditMode);
    selectButton->setChecked(plan.isChecked);
    timeSpan->setText(plan.begin + u" - "_s + plan.end);
    for (int day = 0; day < int(planWeekdays.size()); ++day)
        weekdays->setOn(day, plan.*planWeekdays[size_t(day)]);
    music->setText(plan.music);
    playbackRow->setVisible(plan.isPlaying);
    if (plan.isPlaying) {
        const AVPlayer &player = environment.avPlayer;
        currentTime->setText(player.currentTime);
        progress->setProgress(player.current, player.duration);
        durationTime->setText(player.durationTime);
    }
}

QWidget *PlanItem::makePlaybackRow()
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Style::spacing);
    currentTime = new ElidedLabel;
    progress = new LinearProgress;
    progress->setAccessibleName(tr("Progress"));
    durationTime = new ElidedLabel;
    for (ElidedLabel *time : {currentTime, durationTime})
        time->setColor(Style::white);
    layout->addWidget(currentTime);
    layout->addWidget(progress, 1);
    layout->addWidget(durationTime);
    return row;
}

// The card follows its record with a delay. A click on what it showed before has had its effect already.
void PlanItem::togglePlaying()
{
    const QList<Plan> &plans = environment.planStore.plans.value();
    const auto current =
        std::find_if(plans.begin(), plans.end(), [this](const Plan &each) { return each.id == plan.id; });
    if (current == plans.end() || current->isPlaying != plan.isPlaying)
        return;
    ManualPlayback::toggle(plan, environment.planStore, environment.historyStore, environment.avPlayer);
}

void PlanItem::showPlanEdit()
{
    auto *editor = new PlanEdit(environment.planStore, environment.clock, plan, window());
    editor->open();
}
