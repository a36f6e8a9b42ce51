#pragma once

#include <QString>

#include <functional>

class Card;

/// What a CardGrid shows: a list of records, each known by its index 0 … count() - 1. The functions look at
/// the list as it is when they are called. All are needed.
struct CardSource
{
    std::function<int()> count;
    /// Identifies a record, and stays the same when it moves or changes.
    std::function<QString(int index)> id;
    /// A new card without a record; the grid owns it.
    std::function<Card *()> create;
    /// Makes a card from create() show a record, whatever it showed before.
    std::function<void(Card *card, int index)> show;
    /// A number for the lines that the record's card has: all cards of one class are equally high.
    std::function<int(int index)> heightClass;
    /// Whether the record's card now has a control that can have the focus.
    std::function<bool(int index)> hasControls;
};
