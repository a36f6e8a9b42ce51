#include "toolkit/Group.h"

#include <QAccessibleWidget>

using namespace Qt::StringLiterals;

namespace {

QAccessibleInterface *groupInterface(const QString &className, QObject *object)
{
    if (className != u"Group"_s)
        return nullptr;
    return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::Grouping);
}

} // namespace

Group::Group(QWidget *parent) : QWidget(parent)
{
    // Installing the same function again changes nothing.
    QAccessible::installFactory(groupInterface);
}
