#pragma once

#include <QWidget>

/// A widget that assistive technology presents as one group of what lies in it, under its accessible name.
class Group : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Group)

public:
    explicit Group(QWidget *parent = nullptr);
};
