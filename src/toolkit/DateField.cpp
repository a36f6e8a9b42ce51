#include "toolkit/DateField.h"

#include "core/TimeText.h"
#include "platform/Clock.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyleOptionComboBox>

using namespace Qt::StringLiterals;

namespace {

QString formatOf(const QLocale &locale)
{
    QString format = locale.dateFormat(QLocale::ShortFormat);
    if (format.contains(u"MMM"_s)) // a name, which digits cannot type
        return TimeText::datePattern.toString();
    // Bidi marks would reverse each section by itself.
    format.remove(QChar(0x200E)).remove(QChar(0x200F));
    return format.contains(u"yyyy"_s) ? format : format.replace(u"yy"_s, u"yyyy"_s);
}

bool opensCalendar(const QKeyEvent &event)
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
}

QString DateField::dateText() const
{
    return date().toString(TimeText::datePattern);
}

bool DateField::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == lineEdit() && event->type() == QEvent::MouseButtonPress)
        typedDigits.clear();
    return DateTimeField::eventFilter(watched, event);
}

void DateField::focusInEvent(QFocusEvent *event)
{
    typedDigits.clear();
    DateTimeField::focusInEvent(event);
}

void DateField::keyPressEvent(QKeyEvent *event)
{
    const QChar typed = event->text().isEmpty() ? QChar() : event->text().front();
    if (opensCalendar(*event))
        openCalendar();
    else if (typed.isPrint() && !typed.isDigit() && !typedDigits.isEmpty())
        enterNextSection();
    else
        DateTimeField::keyPressEvent(event);
    if (!typed.isDigit())
        typedDigits.clear();
}

// Qt validates each section by itself: it would refuse day 30 while the month to be replaced is February, and
// pass a leading 0 on to the next section.
void DateField::typeDigit(int digit)
{
    if (lineEdit()->selectedText() == text())
        setSelectedSection(sectionAt(0));
    const Section section = currentSection();
    const QString digits = typedDigits + QString::number(digit);
    const int number = digits.toInt();
    const int maximum = section == YearSection ? 9999 : section == MonthSection ? 12 : 31;
    const qsizetype room = QString::number(maximum).size() - digits.size();
    if (room < 0 || number > maximum || (room == 0 && number == 0))
        return;
    typedDigits = digits;
    if (number > 0 || section == YearSection)
        setSection(section, number);
    setSelectedSection(section);
    if (room == 0 || number * 10 > maximum)
        enterNextSection();
}

void DateField::setSection(Section section, int number)
{
    if (date() != typedDate)
        typedDay = date().day();
    int year = date().year();
    int month = date().month();
    if (section == YearSection)
        year = typedDigits.size() == 2 ? 2000 + number : qMax(number, 1);
    else if (section == MonthSection)
        month = number;
    else
        typedDay = number;
    typedDate = QDate(year, month, qMin(typedDay, QDate(year, month, 1).daysInMonth()));
    setDate(typedDate);
}

// The last section stays, and takes no more digits.
void DateField::enterNextSection()
{
    if (currentSectionIndex() + 1 == sectionCount())
        return;
    typedDigits.clear();
    setSelectedSection(sectionAt(currentSectionIndex() + 1));
}

void DateField::openCalendar()
{
    // Qt has no function that opens the calendar; a press on the arrow does.
    QStyleOptionComboBox option;
    option.initFrom(this);
    option.editable = true;
    const QRect arrow = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this);
    QMouseEvent press(QEvent::MouseButtonPress, arrow.center(), mapToGlobal(arrow.center()), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(this, &press);
}
