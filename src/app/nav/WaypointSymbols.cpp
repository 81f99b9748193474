#include "app/nav/WaypointSymbols.h"

#include "base/Folders.h"
#include "navigation/WaypointIcons.h"

#include <QFile>
#include <QPainter>
#include <QPainterPath>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace kelvox {

namespace {
QByteArray drawingOf(const QString& name)
{
    static const QString folder =
        QString::fromStdString((folders::applicationResources() / "icons" / "waypoints").string())
        + QLatin1Char('/');
    for (const QString& spelling : {name, name.toLower()})
        if (QFile file(folder + spelling + QStringLiteral(".svg")); file.open(QIODevice::ReadOnly))
            return file.readAll();
    return {};
}

/// Colours that a drawing brings are taken down to what the scheme allows.
void darken(QByteArray& drawing, const LayerLook& look)
{
    if (look.color("DEPDW").lightness() > 127)
        return; // day
    const double share = look.color("CHWHT").lightnessF();
    constexpr qsizetype length = 7; // "#rrggbb"
    for (qsizetype at = drawing.indexOf('#'); at >= 0; at = drawing.indexOf('#', at + 1)) {
        const QColor color(QLatin1String(drawing.mid(at, length)));
        if (color.isValid())
            drawing.replace(at, length,
                            QColor::fromRgbF(float(color.redF() * share),
                                             float(color.greenF() * share),
                                             float(color.blueF() * share))
                                .name()
                                .toLatin1());
    }
}

void paintDrawing(QPainter& painter, QByteArray drawing, const LayerLook& look)
{
    darken(drawing, look);
    // First with broad lines in the water's colour: a rim that keeps it legible on anything.
    QByteArray rim = drawing;
    rim.replace("currentColor", look.color("DEPDW").name().toLatin1());
    rim.replace("stroke-width=\"1.5\"", "stroke-width=\"4\"");
    QSvgRenderer(rim).render(&painter);
    drawing.replace("currentColor", look.color("CHBLK").name().toLatin1());
    QSvgRenderer(drawing).render(&painter);
}

/// What a name ends with says the colour, what it begins with the shape.
QColor fillOf(QStringView name, const LayerLook& look)
{
    const std::pair<QLatin1String, const char*> colors[] = {
        {QLatin1String("WHITE"), "CHWHT"},  {QLatin1String("GREEN"), "CHGRN"},
        {QLatin1String("RED"), "CHRED"},    {QLatin1String("BLUE"), "RESBL"},
        {QLatin1String("BLACK"), "CHBLK"},  {QLatin1String("AMBER"), "CHYLW"},
        {QLatin1String("ORANGE"), "NINFO"}, {QLatin1String("VIOLET"), "CHMGD"}};
    for (const auto& [ending, token] : colors)
        if (name.endsWith(ending))
            return look.color(token);
    return look.color("CHMGD");
}

/// Within the square from -1 to 1.
QPainterPath shapeOf(QStringView name)
{
    QPainterPath path;
    const auto polygon = [&](const QPolygonF& points) {
        path.addPolygon(points);
        path.closeSubpath();
    };
    if (name.startsWith(QLatin1String("DIAMOND")))
        polygon({{0, -0.9}, {0.8, 0}, {0, 0.9}, {-0.8, 0}});
    else if (name.startsWith(QLatin1String("SQUARE")) || name.startsWith(QLatin1String("BLOCK")))
        path.addRect(-0.7, -0.7, 1.4, 1.4);
    else if (name.startsWith(QLatin1String("TRIANGLE")))
        polygon({{0, -0.85}, {0.85, 0.7}, {-0.85, 0.7}});
    else if (name.startsWith(QLatin1String("FLAG")))
        polygon({{-0.5, -0.9}, {0.8, -0.5}, {-0.35, -0.05}, {-0.35, 0.9}, {-0.5, 0.9}});
    else if (name.startsWith(QLatin1String("PIN"))) {
        path.moveTo(0, 0.9);
        path.cubicTo(-1.1, -0.3, -0.7, -0.95, 0, -0.95);
        path.cubicTo(0.7, -0.95, 1.1, -0.3, 0, 0.9);
    } else if (name.startsWith(QLatin1String("NAVAID")))
        polygon({{-0.25, -0.9}, {0.25, -0.9}, {0.6, 0.8}, {-0.6, 0.8}});
    else if (name.startsWith(QLatin1String("DOT")))
        path.addEllipse(QPointF(0, 0), 0.45, 0.45);
    else
        path.addEllipse(QPointF(0, 0), 0.75, 0.75);
    return path;
}

void paintShape(QPainter& painter, const WaypointIcon& icon, const LayerLook& look, double size)
{
    const QString name =
        QString::fromUtf8(icon.name.data(), static_cast<qsizetype>(icon.name.size()));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(size / 2, size / 2);
    painter.scale(size / 2, size / 2);
    const QColor ink = look.color("CHBLK");
    const QColor halo = look.color("DEPDW");
    const QPainterPath shape = shapeOf(name);
    painter.setPen(QPen(halo, 0.36, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(shape);
    painter.setPen(QPen(ink, 0.15, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (icon.name == "WAYPOINT") {
        // The plain one: a ring with a dot, as charts mark a waypoint.
        painter.setBrush(halo);
        painter.setPen(QPen(look.color("PLRTE"), 0.2));
        painter.drawEllipse(QPointF(0, 0), 0.65, 0.65);
        painter.setBrush(look.color("PLRTE"));
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QPointF(0, 0), 0.2, 0.2);
        return;
    }
    const bool isColored = shape.elementCount() != shapeOf(u"").elementCount()
        || name.startsWith(QLatin1String("DOT")) || name.startsWith(QLatin1String("CIRCLE"))
        || name.startsWith(QLatin1String("BUOY"));
    painter.setBrush(isColored ? fillOf(name, look) : halo);
    painter.drawPath(shape);
    if (isColored)
        return;
    QFont font = painter.font();
    font.setPixelSize(10);
    font.setBold(true);
    QPainterPath letter;
    letter.addText(0, 0, font, name.left(1));
    const QRectF box = letter.boundingRect();
    painter.scale(0.1, 0.1);
    painter.translate(-box.center());
    painter.setPen(Qt::NoPen);
    painter.fillPath(letter, ink);
}
} // namespace

QPixmap waypointSymbol(int index, const LayerLook& look, int size, double pixelRatio)
{
    const WaypointIcon* icon = waypointIcon(index);
    if (!icon)
        icon = waypointIcon(0);
    const QColor ink = look.color("CHBLK");
    const QString name =
        QString::fromUtf8(icon->name.data(), static_cast<qsizetype>(icon->name.size()));
    const QString key = QStringLiteral("waypoint/%1/%2/%3/%4/%5")
                            .arg(name, ink.name(), look.color("PLRTE").name())
                            .arg(size)
                            .arg(pixelRatio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = QPixmap(QSize(size, size) * pixelRatio);
    pixmap.fill(Qt::transparent);
    const QByteArray drawing = drawingOf(name);
    {
        QPainter painter(&pixmap);
        if (drawing.isEmpty())
            paintShape(painter, *icon, look, size * pixelRatio);
        else
            paintDrawing(painter, drawing, look);
    }
    pixmap.setDevicePixelRatio(pixelRatio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QIcon waypointSymbolIcon(int index, const LayerLook& look, int size)
{
    QIcon icon;
    for (const double ratio : {1.0, 2.0})
        icon.addPixmap(waypointSymbol(index, look, size, ratio));
    return icon;
}

} // namespace kelvox
