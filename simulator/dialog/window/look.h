#pragma once

#include <QColor>
#include <QFont>

namespace vorlu::simulator::look {

// Sizes in points of the Mac, which are pixels of a display without scaling.
constexpr int cornerRadius = 12;
constexpr int sideMargin = 20;
constexpr int topMargin = 16;
constexpr int bottomMargin = 16;
constexpr int gap = 12;      // between the blocks of a window
constexpr int iconGap = 18;  // between icon and text
constexpr int buttonHeight = 28;
constexpr int buttonWidth = 84;  // at least
constexpr int buttonGap = 10;
constexpr int focusRing = 3;   // drawn around a button, inside its widget
constexpr int rowHeight = 40;  // at least; rows of a roomy window are a little higher
constexpr int highestRow = 48;
constexpr int rowIcon = 28;
constexpr int rowSign = 18;
constexpr int smallestFont = 11;
constexpr int largestFont = 48;

const QColor window(0xf5, 0xf5, 0xf7);
const QColor outline(0, 0, 0, 46);
const QColor text(0x1d, 0x1d, 0x1f);
const QColor secondaryText(0x5b, 0x5b, 0x62);
const QColor accent(0x00, 0x63, 0xe1);
const QColor accentLight(0x1a, 0x74, 0xec);
const QColor success(0x1f, 0x8a, 0x3d);
const QColor failure(0xd3, 0x2f, 0x2a);
const QColor warning(0xb8, 0x6a, 0x00);
const QColor track(0xdc, 0xdc, 0xe0);
const QColor separator(0xe4, 0xe4, 0xe8);

/// The window's font at this size; weights are QFont's.
QFont font(int points, QFont::Weight weight = QFont::Normal);

}  // namespace vorlu::simulator::look
