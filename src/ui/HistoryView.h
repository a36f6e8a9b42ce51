#pragma once

#include "toolkit/CardGrid.h"
#include "ui/Environment.h"

/// The history screen: the cards of all playbacks in the log, in the order of the list.
class HistoryView final : public CardGrid
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HistoryView)

public:
    explicit HistoryView(const Environment &environment, QWidget *parent = nullptr);
};
