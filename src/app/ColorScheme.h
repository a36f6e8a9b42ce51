#pragma once

#include <QObject>

class QDBusMessage;

/// Shows the windows in dark colours where the user has set the desktop to dark, also while the program runs.
///
/// Asks the desktop's settings portal and follows its changes; nothing waits for the answer, and without a
/// portal nothing changes. Where the palette is dark already or comes from the desktop's platform theme, it
/// stays. Made after the application object.
class ColorScheme final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ColorScheme)

public:
    explicit ColorScheme(QObject *parent = nullptr);

private Q_SLOTS:
    void changeSetting(const QDBusMessage &message);

private:
    void readSetting();
    void apply(const QVariant &setting);

    bool isOwnPalette = false;
};
