#include "editor/editor_support.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QHash>
#include <QScreen>
#include <QStringList>
#include <QWidget>
#include <cmath>

#include "jobs/workbook/text_encoding.h"

namespace kroveld {

double LeadingNumber(const QString& text) {
  qsizetype i = 0;
  const qsizetype n = text.size();
  while (i < n && (text[i] == QLatin1Char(' ') || text[i] == QLatin1Char('\t'))) ++i;
  bool negative = false;
  if (i < n && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+'))) {
    negative = text[i] == QLatin1Char('-');
    ++i;
  }
  double value = 0;
  while (i < n && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9')) {
    value = value * 10 + (text[i].unicode() - '0');
    ++i;
  }
  if (i < n && text[i] == QLatin1Char('.')) {
    double scale = 0.1;
    for (++i; i < n && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i) {
      value += scale * (text[i].unicode() - '0');
      scale /= 10;
    }
  }
  return negative ? -value : value;
}

int TwipsToPixels(int twips) {
  const QScreen* screen = QGuiApplication::primaryScreen();
  const double dpi = screen ? screen->logicalDotsPerInchY() : 96.0;
  return static_cast<int>(std::lround(twips * dpi / 1440.0));
}

void PlaceBelow(QWidget* window, const QWidget* anchor, int downTwips, int rightTwips) {
  if (anchor == nullptr) return;
  const QPoint corner = anchor->window()->frameGeometry().topLeft();
  window->move(corner + QPoint(TwipsToPixels(rightTwips), TwipsToPixels(downTwips)));
}

QFont FixedPitchFont() {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  if (QFontInfo(font).fixedPitch()) return font;
  // Some platforms (the offscreen one among them) answer with a proportional font.
  for (const char* family : {"Courier New", "DejaVu Sans Mono", "Liberation Mono", "Noto Mono",
                             "Noto Sans Mono", "Courier", "monospace"}) {
    QFont candidate(QString::fromLatin1(family), font.pointSize());
    candidate.setStyleHint(QFont::TypeWriter);
    if (QFontInfo(candidate).fixedPitch()) return candidate;
  }
  font.setStyleHint(QFont::TypeWriter);
  font.setFixedPitch(true);
  return font;
}

QString QtFilter(const QString& systemFilter) {
  const QStringList parts = systemFilter.split(QLatin1Char('|'));
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    const QString pattern = QLatin1Char('(') + parts[i + 1] + QLatin1Char(')');
    filters << (parts[i].contains(pattern) ? parts[i] : parts[i] + QLatin1Char(' ') + pattern);
  }
  return filters.join(QStringLiteral(";;"));
}

QString DecodeText(const QByteArray& bytes, bool* wasUtf8) {
  const std::string_view view(bytes.constData(), static_cast<std::size_t>(bytes.size()));
  const bool utf8 = IsValidUtf8(view);
  if (wasUtf8) *wasUtf8 = utf8;
  if (utf8) return QString::fromUtf8(bytes);
  return QString::fromStdString(AsUtf8(view));
}

QByteArray EncodeText(const QString& text, bool preferUtf8) {
  if (preferUtf8) return text.toUtf8();
  // The code points of bytes 0x80..0xFF, learnt once from the decoder.
  static const QHash<char16_t, char> high = [] {
    QHash<char16_t, char> map;
    for (int b = 0x80; b <= 0xFF; ++b) {
      const std::string one(1, static_cast<char>(b));
      const QString decoded = QString::fromStdString(AsUtf8(one));
      if (decoded.size() == 1) map.insert(decoded[0].unicode(), static_cast<char>(b));
    }
    return map;
  }();
  QByteArray out;
  out.reserve(text.size());
  for (const QChar c : text) {
    if (c.unicode() < 0x80) {
      out += static_cast<char>(c.unicode());
      continue;
    }
    const auto it = high.constFind(c.unicode());
    if (it == high.constEnd()) return text.toUtf8();  // not representable: keep every character
    out += *it;
  }
  return out;
}

}  // namespace kroveld
