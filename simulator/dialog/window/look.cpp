#include "simulator/dialog/window/look.h"

#include <QStringList>
#include <algorithm>

namespace vorlu::simulator::look {

QFont font(int points, QFont::Weight weight) {
  QFont font;
  // Emoji go before the faces that have some of them in black and white.
  font.setFamilies({"SF Pro Text", "Inter", "Noto Color Emoji", "Noto Sans", "Cantarell", "DejaVu Sans"});
  font.setPixelSize(std::clamp(points, smallestFont, largestFont));
  font.setWeight(weight);
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

}  // namespace vorlu::simulator::look
