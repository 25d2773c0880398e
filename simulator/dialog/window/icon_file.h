#pragma once

#include <QImage>
#include <QString>

namespace vorlu::simulator {

/// The picture in a file: PNG and what else Qt reads, or the best PNG inside an .icns file. A null image when there is
/// none, or none that can be read.
QImage readIcon(const QString& path, int pixels);

/// The icon as a square of `pixels`: from its file, or drawn when that can't be read. `name` helps to draw one for an
/// application whose path doesn't tell its name.
QImage iconFor(const QString& path, const QString& name, int pixels);

}  // namespace vorlu::simulator
