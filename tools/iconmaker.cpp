// Draws the program's icon: writes the scalable quillet.svg and a PNG per size from one list of
// shapes, so the two never drift apart.
//   quillet-icon <output folder> <size>...
#include <QColor>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QTextStream>

namespace {

struct Shape
{
    enum Kind { RoundRect, Circle, Polygon };
    Kind kind;
    QColor fill;
    QList<QPointF> points; // RoundRect: top-left and bottom-right; Circle: centre
    qreal radius = 0;      // corner radius or circle radius
};

// The icon on a 256 x 256 canvas: a photo with sky, sun and hills on a blue tile, and a quill.
const QList<Shape> &shapes()
{
    static const QList<Shape> list = {
        {Shape::RoundRect, QColor(0x2d, 0x4a, 0x6b), {{12, 12}, {244, 244}}, 44},
        {Shape::RoundRect, QColor(0xff, 0xff, 0xff), {{40, 56}, {204, 186}}, 10},
        {Shape::RoundRect, QColor(0x9f, 0xd3, 0xf0), {{52, 68}, {192, 174}}, 4},
        {Shape::Circle, QColor(0xff, 0xd3, 0x4d), {{160, 98}}, 16},
        {Shape::Polygon, QColor(0x4f, 0x9a, 0x5b), {{52, 174}, {102, 110}, {134, 146}, {158, 122}, {192, 166}, {192, 174}}},
        {Shape::Polygon, QColor(0xf4, 0xa3, 0x40), {{148, 226}, {174, 168}, {202, 100}, {222, 54}, {226, 86}, {210, 142}, {162, 224}}},
        {Shape::Polygon, QColor(0x7a, 0x4a, 0x1c), {{142, 238}, {148, 222}, {160, 228}}},
    };
    return list;
}

QString svg()
{
    QString out;
    QTextStream s(&out);
    s << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"256\" height=\"256\" viewBox=\"0 0 256 256\">\n";
    for (const Shape &shape : shapes()) {
        const QString fill = shape.fill.name();
        if (shape.kind == Shape::RoundRect) {
            const QPointF a = shape.points.at(0), b = shape.points.at(1);
            s << QStringLiteral("  <rect x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" rx=\"%5\" fill=\"%6\"/>\n")
                     .arg(a.x()).arg(a.y()).arg(b.x() - a.x()).arg(b.y() - a.y()).arg(shape.radius).arg(fill);
        } else if (shape.kind == Shape::Circle) {
            const QPointF c = shape.points.at(0);
            s << QStringLiteral("  <circle cx=\"%1\" cy=\"%2\" r=\"%3\" fill=\"%4\"/>\n")
                     .arg(c.x()).arg(c.y()).arg(shape.radius).arg(fill);
        } else {
            QStringList pts;
            for (const QPointF &p : shape.points)
                pts << QStringLiteral("%1,%2").arg(p.x()).arg(p.y());
            s << QStringLiteral("  <polygon points=\"%1\" fill=\"%2\"/>\n").arg(pts.join(QLatin1Char(' ')), fill);
        }
    }
    s << "</svg>\n";
    return out;
}

QImage png(int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 256.0, size / 256.0);
    p.setPen(Qt::NoPen);
    for (const Shape &shape : shapes()) {
        p.setBrush(shape.fill);
        if (shape.kind == Shape::RoundRect)
            p.drawRoundedRect(QRectF(shape.points.at(0), shape.points.at(1)), shape.radius, shape.radius);
        else if (shape.kind == Shape::Circle)
            p.drawEllipse(shape.points.at(0), shape.radius, shape.radius);
        else
            p.drawPolygon(QPolygonF(shape.points));
    }
    return image;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3) {
        QTextStream(stderr) << "usage: quillet-icon <output folder> <size>...\n";
        return 2;
    }
    const QDir out(args.at(1));
    out.mkpath(QStringLiteral("."));
    QFile file(out.filePath(QStringLiteral("quillet.svg")));
    if (!file.open(QIODevice::WriteOnly) || file.write(svg().toUtf8()) < 0)
        return 1;
    file.close();
    for (int i = 2; i < args.size(); ++i) {
        const int size = args.at(i).toInt();
        if (size <= 0 || !png(size).save(out.filePath(QStringLiteral("quillet-%1.png").arg(size))))
            return 1;
    }
    return 0;
}
