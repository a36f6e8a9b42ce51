#pragma once

#include <QTest>

/// Declares the columns of a table of cases: the first is of the first type, and so on.
template<typename... Types, typename... Names>
void columns(Names... names)
{
    (QTest::addColumn<Types>(names), ...);
}
