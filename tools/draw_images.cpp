// Draws the console's small images (lamps, button pictures, logo, banner, check and link marks)
// and saves them as PNGs into the folder given, ready for src/ui/images.
//   zel_draw_images <folder> [contact-sheet.png]
#include <QColor>
#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QTextStream>
#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

namespace {

// One palette for every image, so that lamps, buttons and marks read as one family on the
// grey window.
const QColor window_grey{224, 224, 224};
const QColor face{246, 247, 248};
const QColor face_edge{170, 175, 180};
const QColor ink{52, 58, 64};
const QColor ink_soft{112, 120, 128};
const QColor rim{150, 156, 162};
const QColor green{40, 156, 88};
const QColor amber{242, 178, 24};
const QColor red{206, 54, 50};
const QColor teal{28, 110, 140};
const QColor idle{160, 166, 172};

QImage blank(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void smooth(QPainter& p) {
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
}

QPen round_pen(const QColor& colour, double width) {
    return QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// An indicator lamp: a neutral bezel, then the lit glass, lighter towards the top so that it
// reads as a lamp without any glare that would distract from its colour.
QImage lamp(const QColor& colour) {
    QImage image = blank(45, 45);
    QPainter p(&image);
    smooth(p);
    const QPointF centre(22.5, 22.5);
    p.setPen(Qt::NoPen);
    p.setBrush(rim);
    p.drawEllipse(centre, 21.5, 21.5);
    QRadialGradient glass(QPointF(22.5, 15.0), 24.0);
    glass.setColorAt(0.0, colour.lighter(118));
    glass.setColorAt(0.7, colour);
    glass.setColorAt(1.0, colour.darker(110));
    p.setBrush(glass);
    p.drawEllipse(centre, 19.5, 19.5);
    return image;
}

QImage gating_fault() {
    QImage image = lamp(red);
    QPainter p(&image);
    smooth(p);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    QPainterPath bar;
    bar.moveTo(20.0, 11.5);
    bar.lineTo(25.0, 11.5);
    bar.lineTo(24.0, 27.0);
    bar.lineTo(21.0, 27.0);
    bar.closeSubpath();
    p.drawPath(bar);
    p.drawRoundedRect(QRectF(20.0, 9.5, 5.0, 4.0), 2.0, 2.0);
    p.drawEllipse(QPointF(22.5, 32.0), 2.6, 2.6);
    return image;
}

// Button pictures sit on a light face of their own, so they look the same on any button.
void button_face(QPainter& p, int size) {
    p.setPen(QPen(face_edge, 1.0));
    p.setBrush(face);
    p.drawRoundedRect(QRectF(0.5, 0.5, size - 1.0, size - 1.0), 8.0, 8.0);
}

QImage record() {
    QImage image = blank(57, 57);
    QPainter p(&image);
    smooth(p);
    button_face(p, 57);
    p.setPen(QPen(red.darker(115), 1.0));
    p.setBrush(red);
    p.drawEllipse(QPointF(28.5, 28.5), 15.0, 15.0);
    return image;
}

QImage pause() {
    QImage image = blank(57, 57);
    QPainter p(&image);
    smooth(p);
    button_face(p, 57);
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawRoundedRect(QRectF(17.0, 15.0, 8.0, 27.0), 1.5, 1.5);
    p.drawRoundedRect(QRectF(32.0, 15.0, 8.0, 27.0), 1.5, 1.5);
    return image;
}

// The mark: two lungs and their airway in a rounded square, drawn on a 96 pixel grid.
void draw_logo(QPainter& p) {
    QLinearGradient ground(0.0, 2.0, 0.0, 94.0);
    ground.setColorAt(0.0, teal.lighter(115));
    ground.setColorAt(1.0, teal);
    p.setPen(Qt::NoPen);
    p.setBrush(ground);
    p.drawRoundedRect(QRectF(2.0, 2.0, 92.0, 92.0), 20.0, 20.0);

    QPainterPath left;
    left.moveTo(43.5, 34.0);
    left.cubicTo(32.0, 25.0, 21.0, 36.0, 17.5, 53.0);
    left.cubicTo(15.0, 66.0, 16.0, 79.0, 27.0, 80.0);
    left.cubicTo(37.0, 81.0, 43.5, 76.0, 43.5, 67.0);
    left.closeSubpath();
    QTransform mirror;
    mirror.translate(96.0, 0.0);
    mirror.scale(-1.0, 1.0);
    const QPainterPath right = mirror.map(left);

    const QColor lung(255, 255, 255, 235);
    p.setBrush(lung);
    p.drawPath(left);
    p.drawPath(right);

    p.setBrush(Qt::NoBrush);
    p.setPen(round_pen(Qt::white, 4.0));
    p.drawLine(QPointF(48.0, 17.0), QPointF(48.0, 40.0));
    // The bronchi are cut into the lungs in the ground colour.
    QPainterPath bronchi;
    bronchi.moveTo(48.0, 40.0);
    bronchi.cubicTo(48.0, 46.0, 38.0, 46.0, 32.0, 56.0);
    bronchi.moveTo(48.0, 40.0);
    bronchi.cubicTo(48.0, 46.0, 58.0, 46.0, 64.0, 56.0);
    p.setPen(round_pen(teal, 3.0));
    p.drawPath(bronchi);
    p.setPen(round_pen(Qt::white, 4.0));
    p.drawLine(QPointF(48.0, 30.0), QPointF(48.0, 42.0));
}

QImage logo() {
    QImage image = blank(96, 96);
    QPainter p(&image);
    smooth(p);
    draw_logo(p);
    return image;
}

// A breath-hold as the console draws it: easy breaths, a deep breath held flat, the release.
QPainterPath breath_wave(double left, double right, double baseline, double amplitude) {
    QPainterPath path;
    const double width = right - left;
    const double breaths_end = left + width * 0.45;
    const double hold_start = left + width * 0.55;
    const double hold_end = left + width * 0.85;
    const double hold_level = baseline - amplitude * 2.2;
    const double period = (breaths_end - left) / 3.0;
    path.moveTo(left, baseline);
    for (double x = left; x <= breaths_end; x += 1.0) {
        const double phase = (x - left) / period * 2.0 * std::numbers::pi;
        path.lineTo(x, baseline - amplitude * 0.5 * (1.0 - std::cos(phase)));
    }
    path.cubicTo((breaths_end + hold_start) / 2.0, baseline, (breaths_end + hold_start) / 2.0,
                 hold_level, hold_start, hold_level);
    path.lineTo(hold_end, hold_level);
    path.cubicTo(hold_end + (right - hold_end) * 0.5, hold_level,
                 hold_end + (right - hold_end) * 0.5, baseline, right, baseline);
    return path;
}

QImage banner() {
    QImage image = blank(480, 270);
    QPainter p(&image);
    smooth(p);
    p.setPen(QPen(face_edge, 1.0));
    p.setBrush(face);
    p.drawRect(QRectF(0.5, 0.5, 479.0, 269.0));

    p.save();
    p.translate(36.0, 44.0);
    draw_logo(p);
    p.restore();

    QFont title(QStringLiteral("Liberation Sans"));
    title.setPixelSize(58);
    title.setBold(true);
    p.setFont(title);
    p.setPen(ink);
    p.drawText(QPointF(154.0, 100.0), QStringLiteral("Zelmoor"));

    QFont subtitle(QStringLiteral("Liberation Sans"));
    subtitle.setPixelSize(22);
    p.setFont(subtitle);
    p.setPen(ink_soft);
    p.drawText(QPointF(156.0, 131.0), QStringLiteral("Breath-hold console"));

    p.setPen(QPen(face_edge, 1.0));
    p.drawLine(QPointF(36.0, 222.5), QPointF(444.0, 222.5));
    p.setPen(round_pen(teal, 2.0));
    p.setBrush(Qt::NoBrush);
    p.drawPath(breath_wave(36.0, 444.0, 222.0, 14.0));
    return image;
}

QImage check(const QColor& colour, const std::function<void(QPainter&)>& mark) {
    QImage image = blank(32, 32);
    QPainter p(&image);
    smooth(p);
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawEllipse(QPointF(16.0, 16.0), 15.0, 15.0);
    p.setPen(round_pen(Qt::white, 3.2));
    p.setBrush(Qt::NoBrush);
    mark(p);
    return image;
}

// A plug and its socket on their cables: pushed home when joined, pulled apart otherwise.
QImage link(bool joined) {
    QImage image = blank(48, 32);
    QPainter p(&image);
    smooth(p);
    const double plug_right = joined ? 22.5 : 16.5;
    const double socket_left = joined ? 25.5 : 32.5;
    const QColor body = joined ? green : idle;

    p.setPen(round_pen(ink_soft, 3.0));
    p.drawLine(QPointF(1.5, 16.0), QPointF(plug_right - 10.0, 16.0));
    p.drawLine(QPointF(socket_left + 10.0, 16.0), QPointF(46.5, 16.0));

    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawRect(QRectF(plug_right - 1.0, 10.5, 6.0, 3.0));
    p.drawRect(QRectF(plug_right - 1.0, 18.5, 6.0, 3.0));

    // The cable side is rounded, the mating face flat.
    const auto half = [](double face, double depth) {
        QPainterPath path;
        path.moveTo(face, 6.5);
        path.lineTo(face, 25.5);
        path.lineTo(face - depth * 0.6, 25.5);
        path.cubicTo(face - depth * 0.9, 25.5, face - depth, 21.0, face - depth, 16.0);
        path.cubicTo(face - depth, 11.0, face - depth * 0.9, 6.5, face - depth * 0.6, 6.5);
        path.closeSubpath();
        return path;
    };
    p.setPen(QPen(body.darker(130), 1.0));
    p.setBrush(body);
    p.drawPath(half(plug_right, 12.0));
    p.drawPath(half(socket_left, -12.0));

    if (!joined) {
        p.setPen(round_pen(red, 2.5));
        p.drawLine(QPointF(25.5, 25.0), QPointF(28.5, 7.0));
    }
    return image;
}

struct Picture {
    const char* name;
    QImage image;
};

std::vector<Picture> draw_all() {
    return {
        {"gating_ready", lamp(green)},
        {"gating_closed", lamp(amber)},
        {"gating_fault", gating_fault()},
        {"record", record()},
        {"pause", pause()},
        {"logo", logo()},
        {"banner", banner()},
        {"check_pass", check(green,
                             [](QPainter& p) {
                                 QPainterPath tick;
                                 tick.moveTo(9.0, 16.5);
                                 tick.lineTo(14.0, 21.5);
                                 tick.lineTo(23.0, 11.0);
                                 p.drawPath(tick);
                             })},
        {"check_fail", check(red,
                             [](QPainter& p) {
                                 p.drawLine(QPointF(11.0, 11.0), QPointF(21.0, 21.0));
                                 p.drawLine(QPointF(21.0, 11.0), QPointF(11.0, 21.0));
                             })},
        {"connected", link(true)},
        {"not_connected", link(false)},
    };
}

// Every picture on the window grey, side by side, for a look before committing.
QImage contact_sheet(const std::vector<Picture>& pictures) {
    const int gap = 16;
    int width = gap;
    int height = 0;
    for (const auto& picture : pictures) {
        width += picture.image.width() + gap;
        height = std::max(height, picture.image.height());
    }
    QImage sheet(width, height + 2 * gap, QImage::Format_RGB32);
    sheet.fill(window_grey);
    QPainter p(&sheet);
    int x = gap;
    for (const auto& picture : pictures) {
        p.drawImage(x, gap, picture.image);
        x += picture.image.width() + gap;
    }
    return sheet;
}

}  // namespace

int main(int argc, char** argv) {
    // Drawing needs fonts but no screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTextStream err(stderr);
    if (argc < 2) {
        err << "usage: zel_draw_images <folder> [contact-sheet.png]\n";
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!folder.exists() && !QDir().mkpath(folder.path())) {
        err << "cannot create " << folder.path() << "\n";
        return 1;
    }
    const auto pictures = draw_all();
    for (const auto& picture : pictures) {
        const QString path = folder.filePath(QString::fromLatin1(picture.name) + ".png");
        if (!picture.image.convertToFormat(QImage::Format_ARGB32).save(path, "PNG")) {
            err << "cannot write " << path << "\n";
            return 1;
        }
    }
    if (argc > 2 && !contact_sheet(pictures).save(QString::fromLocal8Bit(argv[2]), "PNG")) {
        err << "cannot write " << argv[2] << "\n";
        return 1;
    }
    return 0;
}
