#include "toolkit/DateField.h"

#include "core/TimeText.h"
#include "platform/Clock.h"

#include <QCalendarWidget>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QStyleOptionComboBox>

using namespace Qt::StringLiterals;

namespace {

QString formatOf(const QLocale &locale)
{
    QString format = locale.dateFormat(QLocale::ShortFormat);
    if (format.contains(u"MMM"_s)) // a name, which digits cannot type
        return TimeText::datePattern.toString();
    // Marks of direction would turn the parts around one by one.
    format.remove(QChar(0x200E)).remove(QChar(0x200F));
    return format.contains(u"yyyy"_s) ? format : format.replace(u"yy"_s, u"yyyy"_s);
}

bool asksForCalendar(const QKeyEvent &event)
{
    return event.key() == Qt::Key_F4 || (event.key() == Qt::Key_Down && event.modifiers() & Qt::AltModifier);
}

} // namespace

DateField::DateField(const QString &text, const Clock &clock, QWidget *parent) : DateTimeField(parent)
{
    setDisplayFormat(formatOf(locale()));
    setDateRange(QDate(1, 1, 1), QDate(9999, 12, 31));
    const QDate date = QDate::fromString(text, TimeText::datePattern.toString());
    setDate(date.isValid() ? date : clock.now().toLocalTime().date());
    setCalendarPopup(true);
    setCorrectionMode(CorrectToNearestValue); // without this, fixup() is not asked
}

QString DateField::dateText() const
{
    return date().toString(TimeText::datePattern);
}

void DateField::fixup(QString &input) const
{
    static const QRegularExpression leading(u"^(?=\\d\\d\\D)"_s);
    static const QRegularExpression trailing(u"(?<!\\d)(?=\\d\\d\\D*$)"_s);
    input.replace(displayFormat().startsWith(u'y') ? leading : trailing, u"20"_s);
    DateTimeField::fixup(input);
}

void DateField::keyPressEvent(QKeyEvent *event)
{
    if (asksForCalendar(*event))
        openCalendar();
    else
        DateTimeField::keyPressEvent(event);
}

void DateField::openCalendar()
{
    QStyleOptionComboBox option;
    option.initFrom(this);
    option.editable = true;
    const QRect arrow = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this);
    QMouseEvent press(QEvent::MouseButtonPress, arrow.center(), mapToGlobal(arrow.center()), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(this, &press);
}
