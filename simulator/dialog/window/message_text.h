#pragma once

#include <QString>

namespace vorlu::simulator {

/// A message as rich text: paragraphs, line breaks, **bold**, *italic* and lines that begin with "- ". Everything else,
/// tags and links included, stands as it was written.
QString messageHtml(const QString& message);

}  // namespace vorlu::simulator
