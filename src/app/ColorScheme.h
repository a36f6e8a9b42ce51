#pragma once

#include <QObject>

class QDBusMessage;

/// Gives the application a dark palette while the user prefers dark colours on the desktop.
///
/// It reads the setting from the desktop's settings portal, asynchronously, and follows its changes; without
/// a portal nothing changes. A palette that is dark already, or comes from the platform theme, stays. To be
/// created after the application object.
class ColorScheme final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ColorScheme)

public:
    explicit ColorScheme(QObject *parent = nullptr);

private Q_SLOTS:
    void onSettingChanged(const QDBusMessage &message);

private:
    void readSetting();
    void apply(const QVariant &setting);

    bool hasDarkPalette = false;
};
