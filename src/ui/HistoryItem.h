#pragma once

#include "store/History.h"
#include "toolkit/Card.h"
#include "ui/Environment.h"

/// The card of a playback in the log: when it began and ended and, in edit mode, what selects it.
class HistoryItem final : public Card
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HistoryItem)

public:
    explicit HistoryItem(const Environment &environment);

    /// Shows `history` as it stands, in the present edit mode.
    void show(const History &history);

private:
    Environment environment;
    History history;
    IconButton *select;
    ElidedLabel *begin;
    ElidedLabel *end;
};
