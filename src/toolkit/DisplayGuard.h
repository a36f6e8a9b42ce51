#pragma once

#include <QAbstractNativeEventFilter>
#include <QDeadlineTimer>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>
#include <vector>

struct xcb_connection_t;

/// Keeps the main thread from blocking on an X server, or on the owner of its clipboard, that does not
/// respond.
///
/// On X11, Qt paints and pastes with requests whose replies it waits for, seconds long if need be. So
/// repaints are held back until the display has answered a request that nothing waits for, and what reads the
/// clipboard (a paste, a context menu) until its owner has said which formats it has. Does nothing on other
/// platforms, and adds less than a millisecond to a repaint. One per program; QApplication has to exist.
class DisplayGuard final : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DisplayGuard)

public:
    explicit DisplayGuard(QObject *parent = nullptr);

    bool eventFilter(QObject *watched, QEvent *event) override;
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    bool holdUpdate(QObject *object);
    bool holdPaste(QWidget *field, const QEvent &event);
    void replayUpdates();
    void replayPaste();

    xcb_connection_t *connection = nullptr;
    quint32 replyWindow = 0; // never shown
    quint32 clipboardAtom = 0;
    quint32 targetsAtom = 0;
    bool isReplaying = false;

    std::vector<QPointer<QObject>> heldUpdates; // to be sent their UpdateRequest
    QPointer<QWidget> pasteField;
    std::unique_ptr<QEvent> pasteEvent;
    QDeadlineTimer pasteDeadline;
};
