#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>

/// The clock of all animations while it exists. It stands still until it is told to advance.
class AnimationClock final : public QAnimationDriver
{
public:
    AnimationClock() { install(); }

    void advance(int milliseconds)
    {
        for (int turn = 0; turn < 2; ++turn) // of the event loop, which is what animations take to start
            QCoreApplication::processEvents();
        now += milliseconds;
        advanceAnimation();
    }

    qint64 elapsed() const override { return now; }

protected:
    void start() override
    {
        now = 0;
        QAnimationDriver::start();
    }

private:
    qint64 now = 0;
};
