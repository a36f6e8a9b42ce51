#pragma once

#include "store/History.h"
#include "toolkit/Card.h"
#include "ui/Environment.h"

/// The card of a playback in the log: when it began and ended and, in edit mode, a check box.
class HistoryItem final : public Card
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HistoryItem)

public:
    explicit HistoryItem(const Environment &environment);

    /// Shows `record` in the current edit mode.
    void setRecord(const History &record);

private:
    Environment environment;
    History history;
    IconButton *selectButton;
    ElidedLabel *begin;
    ElidedLabel *end;
};
