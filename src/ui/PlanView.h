#pragma once

#include "toolkit/CardGrid.h"
#include "ui/Environment.h"

/// The plan screen: the cards of all plans, in the order of the list.
class PlanView final : public CardGrid
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlanView)

public:
    explicit PlanView(const Environment &environment, QWidget *parent = nullptr);
};
