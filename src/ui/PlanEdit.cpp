#include "ui/PlanEdit.h"

#include "store/NewId.h"
#include "store/PlanStore.h"
#include "toolkit/CheckBox.h"
#include "toolkit/FileChooser.h"
#include "toolkit/FormRow.h"
#include "toolkit/SegmentedChoice.h"
#include "toolkit/Style.h"
#include "toolkit/Symbol.h"
#include "toolkit/TimeField.h"

#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr int loopYes = 0;
constexpr int loopNo = 1;
constexpr QSize musicIconSize{10, Style::iconSize};

Plan newPlanDefaults()
{
    return {.isMusic = true, .week1 = true, .week2 = true, .week3 = true, .week4 = true, .week5 = true};
}

// The name without its extension, every occurrence of which is removed: "chime.mp3.mp3" becomes "chime", and
// a name without an extension loses its dots.
QString titleOf(const QString &fileName)
{
    // A dot at either end of a name does not begin an extension.
    const qsizetype dot = fileName.lastIndexOf(u'.');
    const QString extension = dot > 0 ? fileName.mid(dot + 1) : QString();
    return QString(fileName).remove(u'.' + extension);
}

} // namespace

PlanEdit::PlanEdit(PlanStore &planStore, const Clock &clock, const std::optional<Plan> &edited,
                   QWidget *parent)
    : EditSheet(edited ? tr("Modify") : tr("Add Plan"), parent)
    , purpose(edited ? Purpose::modify : Purpose::add)
    , planStore(planStore)
    , plan(edited.value_or(newPlanDefaults()))
    , begin(new TimeField(plan.begin, clock))
    , end(new TimeField(plan.end, clock))
    , loop(new SegmentedChoice({tr("Yes"), tr("No")}))
    , content(new QLineEdit)
{
    addTitleRow(plan.title);
    addFieldRow(tr("Begin:"), begin);
    addFieldRow(tr("End:"), end);
    addWeekRow();
    addLoopRow();
    addMusicRow();
    addButtons(purpose);
}

QString PlanEdit::validationError() const
{
    if (std::none_of(week.begin(), week.end(), [](const QCheckBox *day) { return day->isChecked(); }))
        return tr("Please select the Week");
    if (content->text().isEmpty())
        return tr("Please select the Music");
    return {};
}

bool PlanEdit::commit()
{
    plan.title = title();
    plan.begin = begin->minuteText();
    plan.end = end->minuteText();
    plan.content = content->text();
    plan.isLoop = loop->choice() == loopYes;
    for (size_t day = 0; day < week.size(); ++day)
        plan.*planWeekdays[day] = week[day]->isChecked();
    if (purpose == Purpose::modify)
        return planStore.updatePlan(plan);
    plan.id = newId();
    return planStore.addPlan(plan);
}

void PlanEdit::addWeekRow()
{
    const std::array names{tr("Sun"), tr("Mon"), tr("Tue"), tr("Wed"), tr("Thu"), tr("Fri"), tr("Sat")};
    auto *row = new FormRow(tr("Week:"));
    for (size_t day = 0; day < week.size(); ++day) {
        week[day] = new CheckBox(names[day]);
        week[day]->setChecked(plan.*planWeekdays[day]);
        row->addField(week[day]);
    }
    row->addStretch();
    addRow(row);
}

void PlanEdit::addLoopRow()
{
    loop->setChoice(plan.isLoop ? loopYes : loopNo);
    addFieldRow(tr("Loop:"), loop);
}

void PlanEdit::addMusicRow()
{
    const QString symbol = plan.isMusic ? u"music.note"_s : u"folder"_s;
    auto *choose = new QPushButton(Symbol::icon(symbol), QString());
    choose->setIconSize(musicIconSize);
    choose->setAccessibleName(tr("Choose File"));
    choose->setToolTip(tr("Choose File"));
    connect(choose, &QPushButton::clicked, this, &PlanEdit::chooseFile);

    content->setMaxLength(std::numeric_limits<int>::max()); // a truncated path would be another file
    content->setText(plan.content);
    auto *row = new FormRow(plan.isMusic ? tr("Music:") : tr("Folder:"));
    row->addField(content, 1);
    row->addField(choose);
    addRow(row);
}

void PlanEdit::chooseFile()
{
    if (fileChooser) // it may still be waiting for the portal
        return;
    fileChooser = new FileChooser(content->text(), this);
    connect(fileChooser, &FileChooser::fileSelected, this, &PlanEdit::setFile);
    fileChooser->open();
}

void PlanEdit::setFile(const QString &path)
{
    plan.music = path.section(u'/', -1);
    content->setText(path);
    if (title().isEmpty())
        setTitle(titleOf(plan.music));
}
