#pragma once

#include <QImage>
#include <QPainter>
#include <QString>

namespace vorlu::simulator {

/// True for the system's and the agent's own icons, of which a picture can be drawn that means the same.
bool isKnownIcon(const QString& path);

/// What stands for an icon that can't be read: the known ones as drawings, an application as a tile with its initial,
/// any other as the sign for updates.
QImage drawnIcon(const QString& path, const QString& name, int pixels);

/// The sign of a list row's status within the rectangle; `turn` counts the steps of the spinner. Unknown ones draw
/// nothing.
void drawStatus(QPainter& painter, const QRectF& box, const QString& status, int turn);

}  // namespace vorlu::simulator
