#pragma once

#include "toolkit/CardGrid.h"
#include "ui/Environment.h"

/// The holiday screen: the cards of all holidays, in the order of the list.
class HolidayView final : public CardGrid
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HolidayView)

public:
    explicit HolidayView(const Environment &environment, QWidget *parent = nullptr);
};
