#include "simulator/dialog/window/drawn_icon.h"

#include <QLinearGradient>
#include <QPainterPath>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>

#include "simulator/dialog/window/look.h"

namespace vorlu::simulator {

namespace {

// Drawings fill a square of 100 units.
using Drawing = void (*)(QPainter&);

QPen line(const QColor& colour, double width) {
  return {colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

QLinearGradient downward(const QColor& top, const QColor& bottom) {
  QLinearGradient gradient(0, 0, 0, 100);
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  return gradient;
}

void drawTile(QPainter& painter, const QColor& top, const QColor& bottom) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(downward(top, bottom));
  painter.drawRoundedRect(QRectF(5, 5, 90, 90), 21, 21);
  painter.setBrush(Qt::NoBrush);
}

// Two arrows that chase each other around a circle.
void drawUpdate(QPainter& painter) {
  drawTile(painter, QColor(0x3d, 0xa5, 0xff), QColor(0x00, 0x5c, 0xd6));
  const QRectF circle(27, 27, 46, 46);
  for (const int start : {20, 200}) {  // degrees, counter-clockwise from the right
    painter.setPen(line(Qt::white, 7));
    painter.setBrush(Qt::NoBrush);
    painter.drawArc(circle, (start + 18) * 16, 122 * 16);
    const double angle = (start + 10) * M_PI / 180;
    const QPointF tip(50 + 23 * std::cos(angle), 50 - 23 * std::sin(angle));
    painter.save();
    painter.translate(tip);
    painter.rotate(90 - (start + 10));
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawPolygon(QPolygonF({{9, 0}, {-6, -11}, {-6, 11}}));
    painter.restore();
  }
}

void drawStop(QPainter& painter) {
  QPolygonF octagon;
  for (int corner = 0; corner < 8; ++corner) {
    const double angle = (22.5 + corner * 45) * M_PI / 180;
    octagon << QPointF(50 + 44 * std::cos(angle), 50 + 44 * std::sin(angle));
  }
  const QLinearGradient red = downward(QColor(0xf2, 0x5c, 0x54), QColor(0xc6, 0x22, 0x22));
  painter.setPen(QPen(QBrush(red), 8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(red);
  painter.drawPolygon(octagon);
  painter.setPen(line(Qt::white, 10));
  painter.drawLine(QPointF(50, 27), QPointF(50, 54));
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  painter.drawEllipse(QPointF(50, 73), 6.2, 6.2);
}

void drawDisc(QPainter& painter, const QColor& top, const QColor& bottom) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(downward(top, bottom));
  painter.drawEllipse(QRectF(5, 5, 90, 90));
  painter.setBrush(Qt::NoBrush);
}

void drawSuccess(QPainter& painter) {
  drawDisc(painter, QColor(0x34, 0xb2, 0x57), look::success);
  painter.setPen(line(Qt::white, 10));
  painter.drawPolyline(QPolygonF({{28, 52}, {44, 67}, {72, 35}}));
}

void drawFail(QPainter& painter) {
  drawDisc(painter, QColor(0xee, 0x58, 0x50), look::failure);
  painter.setPen(line(Qt::white, 10));
  painter.drawLine(QPointF(35, 35), QPointF(65, 65));
  painter.drawLine(QPointF(65, 35), QPointF(35, 65));
}

void drawError(QPainter& painter) {
  const QPolygonF triangle({{50, 13}, {92, 86}, {8, 86}});
  painter.setPen(line(look::warning, 9));
  painter.setBrush(look::warning);
  painter.drawPolygon(triangle);
  painter.setPen(line(Qt::white, 9));
  painter.drawLine(QPointF(50, 38), QPointF(50, 58));
  painter.setPen(Qt::NoPen);
  painter.setBrush(Qt::white);
  painter.drawEllipse(QPointF(50, 74), 5.5, 5.5);
}

// A clock: its turn will come.
void drawPending(QPainter& painter) {
  painter.setPen(line(QColor(0x8a, 0x8a, 0x92), 8));
  painter.drawEllipse(QRectF(10, 10, 80, 80));
  painter.drawPolyline(QPolygonF({{50, 28}, {50, 52}, {66, 62}}));
}

// Spokes that fade behind the one that leads.
void drawSpinner(QPainter& painter, int turn) {
  constexpr int spokes = 10;
  painter.translate(50, 50);
  for (int spoke = 0; spoke < spokes; ++spoke) {
    const int age = (turn - spoke % spokes + spokes) % spokes;
    QColor colour = look::secondaryText;
    colour.setAlphaF(std::max(0.15F, 1.0F - static_cast<float>(age) / spokes));
    painter.setPen(line(colour, 9));
    painter.save();
    painter.rotate(spoke * 360.0 / spokes);
    painter.drawLine(QPointF(0, -24), QPointF(0, -43));
    painter.restore();
  }
}

// The same colour for the same name, whoever draws it.
QColor colourOf(const QString& name) {
  quint32 sum = 2166136261;  // FNV-1a
  for (const QChar letter : name) sum = (sum ^ letter.unicode()) * 16777619;
  constexpr QRgb colours[] = {0x2f6fd6, 0x7a52c7, 0xc8641c, 0x1f8f86, 0xcf3d72,
                              0x1f86b3, 0xa148b8, 0xc4453a, 0x2f8f4a, 0x4b57c9};
  return QColor::fromRgb(colours[(sum >> 8) % std::size(colours)]);
}

// One character, which may take two code units.
QString firstLetter(const QString& name) {
  return name.left(name.front().isHighSurrogate() ? 2 : 1).toUpper();
}

void drawInitial(QPainter& painter, const QString& name) {
  const QColor colour = colourOf(name);
  drawTile(painter, colour.lighter(122), colour);
  QFont font = look::font(50, QFont::DemiBold);
  painter.setFont(font);
  painter.setPen(Qt::white);
  painter.drawText(QRectF(5, 5, 90, 90), Qt::AlignCenter, firstLetter(name));
}

struct KnownIcon {
  const char* pathEnd;
  Drawing draw;
};
constexpr KnownIcon knownIcons[] = {
    {"/App Store.app/Contents/Resources/AppIcon.icns", drawUpdate},
    {"/Icons/update.png", drawUpdate},
    {"/Icons/Error.png", drawStop},
    {"/AlertStopIcon.icns", drawStop},
    {"/Icons/successIcon.png", drawSuccess},
};

const KnownIcon* knownIcon(const QString& path) {
  const auto* found = std::find_if(std::begin(knownIcons), std::end(knownIcons),
                                   [&](const KnownIcon& icon) { return path.endsWith(QLatin1String(icon.pathEnd)); });
  return found != std::end(knownIcons) ? found : nullptr;
}

// "Slides" of "/Applications/Slides.app/Contents/…"; otherwise the name that was given.
QString applicationName(const QString& path, const QString& name) {
  static const QRegularExpression bundle("([^/]+)\\.app(/|$)");
  const auto match = bundle.match(path);
  return match.hasMatch() ? match.captured(1) : name.trimmed();
}

}  // namespace

bool isKnownIcon(const QString& path) {
  return knownIcon(path) != nullptr;
}

QImage drawnIcon(const QString& path, const QString& name, int pixels) {
  QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(pixels / 100.0, pixels / 100.0);
  const QString application = applicationName(path, name);
  if (const KnownIcon* known = knownIcon(path)) {
    known->draw(painter);
  } else if (!application.isEmpty()) {
    drawInitial(painter, application);
  } else {
    drawUpdate(painter);
  }
  return image;
}

void drawStatus(QPainter& painter, const QRectF& box, const QString& status, int turn) {
  constexpr std::pair<const char*, Drawing> signs[] = {
      {"success", drawSuccess}, {"fail", drawFail}, {"error", drawError}, {"pending", drawPending}};
  painter.save();
  painter.translate(box.topLeft());
  painter.scale(box.width() / 100, box.height() / 100);
  for (const auto& [name, draw] : signs) {
    if (status == QLatin1String(name)) draw(painter);
  }
  if (status == "wait") drawSpinner(painter, turn);
  painter.restore();
}

}  // namespace vorlu::simulator
