#include "toolkit/SegmentedChoice.h"

#include "toolkit/FocusRing.h"
#include "toolkit/Style.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr qreal corner = 5;

class Segment final : public QAbstractButton
{
public:
    explicit Segment(const QString &text)
    {
        setText(text);
        setCheckable(true);
        setAutoExclusive(true);
        setFocusPolicy(Qt::ClickFocus);
    }

    QSize sizeHint() const override
    {
        const QFontMetrics metrics = fontMetrics();
        return {metrics.horizontalAdvance(text()) + 4 * Style::inset, metrics.height() + Style::spacing};
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);
        const QColor blue = Style::accent(Style::Accent::blue, palette());
        painter.setPen(Qt::NoPen);
        painter.setBrush(isChecked() ? blue : QColor(Qt::transparent));
        painter.drawRoundedRect(frame, corner, corner);
        painter.setPen(isChecked() ? palette().color(QPalette::Window)
                                   : palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter, text());
        if (FocusRing::isShownBy(this))
            Style::paintFocus(&painter, rect(), palette().color(QPalette::WindowText));
    }
};

} // namespace

SegmentedChoice::SegmentedChoice(const QStringList &texts, QWidget *parent) : Group(parent)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->setSpacing(0);
    for (const QString &text : texts) {
        auto *segment = new Segment(text);
        // One stop in the tab chain: the chosen segment.
        connect(segment, &QAbstractButton::toggled, segment, [segment](bool checked) {
            segment->setFocusPolicy(checked ? Qt::StrongFocus : Qt::ClickFocus);
        });
        segments << segment;
        row->addWidget(segment);
    }
    setChoice(0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

int SegmentedChoice::choice() const
{
    for (int index = 0; index < segments.size(); ++index) {
        if (segments[index]->isChecked())
            return index;
    }
    return 0;
}

void SegmentedChoice::setChoice(int index)
{
    segments[index]->setChecked(true);
}

void SegmentedChoice::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor track = palette().color(QPalette::WindowText);
    track.setAlphaF(0.1F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(track);
    painter.drawRoundedRect(rect(), corner, corner);
}
