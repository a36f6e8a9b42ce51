#include "toolkit/Symbol.h"

#include "platform/Log.h"
#include "platform/Resources.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSet>
#include <QSvgRenderer>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array<std::pair<QStringView, QStringView>, 16> files{{
    {u"calendar", u"calendar"},
    {u"checkmark", u"checkmark"},
    {u"checkmark.square", u"checkmark-square"},
    {u"clock", u"clock"},
    {u"folder", u"folder"},
    {u"music.note", u"music-note"},
    {u"nosign", u"nosign"},
    {u"play", u"play"},
    {u"plus", u"plus"},
    {u"repeat", u"repeat"},
    {u"sidebar.left", u"sidebar-left"},
    {u"square", u"square"},
    {u"square.and.pencil", u"square-and-pencil"},
    {u"stop.fill", u"stop-fill"},
    {u"trash", u"trash"},
    {u"xmark", u"xmark"},
}};

QString pathOf(const QString &name)
{
    for (const auto &[symbol, file] : files) {
        if (symbol == name)
            return Resources::ofApplication().path(u"icons/%1"_s.arg(file), u"svg"_s).value_or(QString());
    }
    return {};
}

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
    QSvgRenderer renderer;
    if (const QString path = pathOf(name); path.isEmpty() || !renderer.load(path)) {
        reportMissing(name);
        return pixmap;
    }
    QPainter painter(&pixmap);
    if (name == u"sidebar.left"_s && QGuiApplication::isRightToLeft()) // the one that tells a side
        painter.setTransform(QTransform(-1, 0, 0, 1, deviceSize.width(), 0));
    renderer.render(&painter);
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
