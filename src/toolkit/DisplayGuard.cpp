#include "toolkit/DisplayGuard.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>

#include <xcb/xcb.h>

#include <cstdlib>
#include <string_view>
#include <utility>

using namespace std::chrono_literals;

namespace {

quint32 atom(xcb_connection_t *connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, uint16_t(name.size()), name.data());
    auto *reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const quint32 atom = reply ? reply->atom : quint32(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

bool isTextField(const QObject *object)
{
    return qobject_cast<const QLineEdit *>(object) || qobject_cast<const QAbstractSpinBox *>(object);
}

bool isMiddleClick(const QEvent &event)
{
    return event.type() == QEvent::MouseButtonRelease &&
           static_cast<const QMouseEvent &>(event).button() == Qt::MiddleButton;
}

// Whether a text field reads a selection or the clipboard at this event.
bool readsClipboard(const QEvent &event)
{
    return event.type() == QEvent::ContextMenu || isMiddleClick(event) ||
           (event.type() == QEvent::KeyPress &&
            static_cast<const QKeyEvent &>(event).matches(QKeySequence::Paste));
}

} // namespace

DisplayGuard::DisplayGuard(QObject *parent) : QObject(parent)
{
    if (QGuiApplication::platformName() != u"xcb")
        return;
    connection = qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    clipboardAtom = atom(connection, "CLIPBOARD");
    targetsAtom = atom(connection, "TARGETS");
    replyWindow = xcb_generate_id(connection);
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, replyWindow, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    qApp->installEventFilter(this);
    qApp->installNativeEventFilter(this);
}

bool DisplayGuard::eventFilter(QObject *watched, QEvent *event)
{
    if (isReplaying)
        return false;
    if (event->type() == QEvent::UpdateRequest)
        return holdUpdate(watched);
    return readsClipboard(*event) && isTextField(watched) &&
           holdPaste(static_cast<QWidget *>(watched), *event);
}

// Sends a message to the reply window by way of the display.
bool DisplayGuard::holdUpdate(QObject *object)
{
    heldUpdates.emplace_back(object);
    if (heldUpdates.size() > 1)
        return true;
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = replyWindow;
    message.type = XCB_ATOM_INTEGER;
    xcb_send_event(connection, 0, replyWindow, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(connection);
    return true;
}

bool DisplayGuard::holdPaste(QWidget *field, const QEvent &event)
{
    pasteField = field;
    pasteEvent.reset(event.clone());
    pasteDeadline.setRemainingTime(2s);
    const quint32 selection = isMiddleClick(event) ? quint32(XCB_ATOM_PRIMARY) : clipboardAtom;
    xcb_convert_selection(connection, replyWindow, selection, targetsAtom, targetsAtom, XCB_CURRENT_TIME);
    xcb_flush(connection);
    return true;
}

bool DisplayGuard::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    const int type = event->response_type & 0x7f;
    // Queued, as this is called in the middle of Qt's own handling of events.
    if (type == XCB_CLIENT_MESSAGE &&
        reinterpret_cast<const xcb_client_message_event_t *>(event)->window == replyWindow) {
        QMetaObject::invokeMethod(this, &DisplayGuard::replayUpdates, Qt::QueuedConnection);
        return true;
    }
    if (type == XCB_SELECTION_NOTIFY &&
        reinterpret_cast<const xcb_selection_notify_event_t *>(event)->requestor == replyWindow) {
        QMetaObject::invokeMethod(this, &DisplayGuard::replayPaste, Qt::QueuedConnection);
        return true;
    }
    return false;
}

void DisplayGuard::replayUpdates()
{
    const QScopedValueRollback guard(isReplaying, true);
    for (const QPointer<QObject> &object : std::exchange(heldUpdates, {})) {
        QEvent event(QEvent::UpdateRequest);
        if (object)
            QCoreApplication::sendEvent(object, &event);
    }
}

void DisplayGuard::replayPaste()
{
    const QScopedValueRollback guard(isReplaying, true);
    const std::unique_ptr<QEvent> event = std::move(pasteEvent);
    if (pasteField && event && !pasteDeadline.hasExpired())
        QCoreApplication::sendEvent(pasteField, event.get());
}
