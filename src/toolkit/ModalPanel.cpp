#include "toolkit/ModalPanel.h"

#include "toolkit/Style.h"

#include <QAccessibleWidget>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

class AccessiblePanel final : public QAccessibleWidget
{
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = true;
        return state;
    }
};

QAccessibleInterface *panelInterface(const QString &className, QObject *object)
{
    if (className != u"ModalPanel"_s)
        return nullptr;
    auto *panel = static_cast<ModalPanel *>(object);
    const bool isAlert = panel->position() == Backdrop::Position::center;
    return new AccessiblePanel(panel, isAlert ? QAccessible::AlertMessage : QAccessible::Dialog);
}

} // namespace

ModalPanel::ModalPanel(Backdrop::Position position, const QString &title, QWidget *parent)
    : QDialog(nullptr)
    , backdrop(new Backdrop(position, parent->window()))
    , panelPosition(position)
{
    // Installing the same function again changes nothing.
    QAccessible::installFactory(panelInterface);
    setParent(backdrop, Qt::Widget);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title);
    setAccessibleName(title);
}

void ModalPanel::open()
{
    backdrop->open(this);
    show();
    if (QWidget *first = focusWidget())
        first->setFocus(Qt::OtherFocusReason);
}

void ModalPanel::done(int result)
{
    if (!isEnabled()) // it has been closed already, or lies under another panel
        return;
    backdrop->close();
    setEnabled(false);
    QDialog::done(result);
}

void ModalPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Style::lineColor(palette()));
    painter.setBrush(palette().window());
    // The upper corners of a sheet are out of sight.
    const qreal above = panelPosition == Backdrop::Position::top ? 2 * Style::cardRadius : 0;
    const QRectF outline = QRectF(rect()).adjusted(0.5, 0.5 - above, -0.5, -0.5);
    painter.drawRoundedRect(outline, Style::cardRadius, Style::cardRadius);
}
