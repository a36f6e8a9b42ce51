#include "db/FMStatement.h"

#include <sqlite3.h>
#include <utility>

using namespace Qt::StringLiterals;

FMStatement::~FMStatement()
{
    close();
}

QString FMStatement::description() const
{
    return u"<FMStatement: 0x%1> %2 hit(s) for query %3"_s.arg(
        QString::number(quintptr(this), 16), QString::number(_useCount), _query.value_or(u"(null)"_s));
}

void FMStatement::reset()
{
    if (_statement)
        sqlite3_reset(_statement);
    _inUse = false;
}

void FMStatement::close()
{
    if (_statement)
        sqlite3_finalize(std::exchange(_statement, nullptr));
    _inUse = false;
}
