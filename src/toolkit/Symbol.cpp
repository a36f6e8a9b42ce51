#include "toolkit/Symbol.h"

#include "platform/Log.h"
#include "toolkit/SymbolPath.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSet>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// What the paths are designed for.
constexpr qreal gridSize = 16;
constexpr qreal penWidth = 1.5;

void reportMissing(const QString &name)
{
    static QSet<QString> reported;
    if (reported.contains(name))
        return;
    reported.insert(name);
    Log::write(u"The icon %1 is missing."_s.arg(name));
}

QPixmap render(const QString &name, const QColor &color, QSize deviceSize)
{
    QPixmap pixmap(deviceSize);
    pixmap.fill(Qt::transparent);
    const std::optional<QPainterPath> path = symbolPath(name);
    if (!path) {
        reportMissing(name);
        return pixmap;
    }
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(deviceSize.width() / gridSize, deviceSize.height() / gridSize);
    if (name == u"sidebar.left"_s && QGuiApplication::isRightToLeft()) // the one that tells a side
        painter.setTransform(QTransform(-1, 0, 0, 1, gridSize, 0), true);
    painter.setPen(QPen(Qt::black, penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (name.endsWith(u".fill"))
        painter.setBrush(Qt::black);
    painter.drawPath(*path);
    // The tint comes last: where lines cross, a translucent colour is no denser.
    painter.resetTransform();
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    return pixmap;
}

QPixmap cached(const QString &name, const QColor &color, QSize deviceSize)
{
    const QString key = u"symbol %1 %2 %3x%4"_s.arg(name, color.name(QColor::HexArgb))
                            .arg(deviceSize.width())
                            .arg(deviceSize.height());
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = render(name, color, deviceSize);
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

class SymbolEngine final : public QIconEngine
{
public:
    SymbolEngine(QString name, QColor color) : name(std::move(name)), color(color) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        Symbol::paint(painter, rect, name, tint(mode));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        return cached(name, tint(mode), size);
    }

    QString iconName() override { return name; }

    QIconEngine *clone() const override { return new SymbolEngine(name, color); }

private:
    QColor tint(QIcon::Mode mode) const
    {
        QColor tinted = color.isValid() ? color : QGuiApplication::palette().color(QPalette::ButtonText);
        if (mode == QIcon::Disabled)
            tinted.setAlphaF(tinted.alphaF() * 0.4F);
        return tinted;
    }

    QString name;
    QColor color;
};

} // namespace

QIcon Symbol::icon(const QString &name, const QColor &color)
{
    return QIcon(new SymbolEngine(name, color));
}

void Symbol::paint(QPainter *painter, const QRect &target, const QString &name, const QColor &color)
{
    const qreal ratio = painter->device()->devicePixelRatio();
    painter->drawPixmap(target, cached(name, color, (QSizeF(target.size()) * ratio).toSize()));
}
