// Small helpers shared by the recipe editor's windows: the leading-number conversion of typed
// numbers, twips to pixels, the fixed-pitch font, file filters in Qt's form, and reading and
// writing recipe text in the encoding it came in (UTF-8 when valid, otherwise Windows-1252).
#pragma once

#include <QByteArray>
#include <QFont>
#include <QString>

class QWidget;

namespace kroveld {

// The number a typed text begins with: leading blanks, an optional sign, digits and an optional
// fraction; 0 when the text does not begin with a number ("12abc" gives 12, "abc" gives 0).
double LeadingNumber(const QString& text);

// Twips (1/1440 inch) in pixels at the screen's logical resolution.
int TwipsToPixels(int twips);

// Puts `window` `downTwips` below and `rightTwips` right of the top-left corner of `anchor`.
void PlaceBelow(QWidget* window, const QWidget* anchor, int downTwips, int rightTwips);

// A fixed-pitch font of the application's point size, so character positions line up.
QFont FixedPitchFont();

// "Recipe Files(*.rcp)|*.rcp|All Files (*.*)|*.*" in Qt's form: the descriptions joined with ";;",
// each carrying its pattern in parentheses.
QString QtFilter(const QString& systemFilter);

// Recipe bytes as text: valid UTF-8 as it is, anything else as Windows-1252. `wasUtf8` tells
// which, so the text can be written back in the same encoding.
QString DecodeText(const QByteArray& bytes, bool* wasUtf8 = nullptr);
// Text as bytes: Windows-1252 when `preferUtf8` is false and every character has a Windows-1252
// byte, UTF-8 otherwise.
QByteArray EncodeText(const QString& text, bool preferUtf8);

}  // namespace kroveld
