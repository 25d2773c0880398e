#include "simulator/dialog/window/message_text.h"

#include <QRegularExpression>
#include <QStringList>

namespace vorlu::simulator {

namespace {

QString lineHtml(const QString& line) {
  static const QRegularExpression bold(R"(\*\*(?=\S)(.+?)(?<=\S)\*\*)");
  static const QRegularExpression italic(R"((?<![*\w])\*(?=[^\s*])([^*]+?)(?<=\S)\*(?![*\w]))");
  static const QRegularExpression bullet(R"(^\s*[-*] )");
  QString html = line;
  html.replace(bullet, QString::fromUtf8("•\u00a0"));
  html = html.toHtmlEscaped();
  html.replace(bold, "<b>\\1</b>");
  html.replace(italic, "<i>\\1</i>");
  return html;
}

}  // namespace

QString messageHtml(const QString& message) {
  static const QRegularExpression blankLine(R"(\n[ \t]*\n\s*)");
  QString text = message;
  text.replace("\\n", "\n").replace("\r\n", "\n").replace('\r', '\n');
  QStringList paragraphs;
  for (const QString& paragraph : text.trimmed().split(blankLine)) {
    QStringList lines;
    for (const QString& line : paragraph.split('\n')) lines << lineHtml(line);
    paragraphs << lines.join("<br>");
  }
  constexpr const char* between = "</p><p style=\"margin-top:8px; margin-bottom:0\">";
  return "<p style=\"margin:0\">" + paragraphs.join(between) + "</p>";
}

}  // namespace vorlu::simulator
