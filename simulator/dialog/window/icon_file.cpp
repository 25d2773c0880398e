#include "simulator/dialog/window/icon_file.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QtEndian>

#include "simulator/dialog/window/drawn_icon.h"

namespace vorlu::simulator {

namespace {

constexpr qint64 largestFile = 64 << 20;  // bytes
constexpr qsizetype headLength = 8;       // of the file and of each entry: type, length

QImage decoded(const QByteArray& data) {
  QBuffer buffer;
  buffer.setData(data);
  QImageReader reader(&buffer);
  reader.setDecideFormatFromContent(true);
  return reader.read();
}

// An .icns file is a list of pictures of several sizes. Takes the smallest PNG that isn't too small, else the largest.
QImage bestOfList(const QByteArray& file, int pixels) {
  QImage best;
  const auto isBetter = [&](const QImage& candidate) {
    if (best.isNull()) return true;
    return best.width() < pixels ? candidate.width() > best.width()
                                 : candidate.width() >= pixels && candidate.width() < best.width();
  };
  for (qsizetype at = headLength; at + headLength <= file.size();) {
    const auto length = static_cast<qsizetype>(qFromBigEndian<quint32>(file.constData() + at + 4));
    if (length < headLength || length > file.size() - at) break;
    const QByteArray entry = file.mid(at + headLength, length - headLength);
    if (entry.startsWith("\x89PNG")) {
      const QImage candidate = decoded(entry);
      if (!candidate.isNull() && isBetter(candidate)) best = candidate;
    }
    at += length;
  }
  return best;
}

// Scaled into the square, in its own proportions.
QImage squared(const QImage& image, int pixels) {
  QImage square(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  square.fill(Qt::transparent);
  const QImage scaled = image.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  QPainter(&square).drawImage((pixels - scaled.width()) / 2, (pixels - scaled.height()) / 2, scaled);
  return square;
}

}  // namespace

QImage readIcon(const QString& path, int pixels) {
  if (path.isEmpty() || !QFileInfo(path).isFile()) return {};
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile) return {};
  const QByteArray data = file.readAll();
  return data.startsWith("icns") ? bestOfList(data, pixels) : decoded(data);
}

QImage iconFor(const QString& path, const QString& name, int pixels) {
  const QImage read = readIcon(path, pixels);
  return read.isNull() ? drawnIcon(path, name, pixels) : squared(read, pixels);
}

}  // namespace vorlu::simulator
