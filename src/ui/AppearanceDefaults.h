#pragma once

#include "domains/ApplicationSettings.h"

class QColor;
class QFont;
class QPalette;
class UserDefaults;

// Fills the core's AppearanceDefaults from the desktop's palette and fonts, so
// the registered colour and font defaults follow the user's theme. Named
// system colours map onto palette roles:
//   alternating row colours        Base, AlternateBase (active group)
//   text colour                    Text (active)
//   disabled control text colour   Text (disabled group)
//   secondary selected control     Highlight (inactive group): a selection
//                                  in a window that is not key
//   control light highlight        Light
// The user's default font is the general system font at its size; the tab
// font is the same family (the tab bar draws it bold at 11 points).
namespace SystemAppearance {

CalibratedColor calibratedColor(const QColor &color);
QColor qColor(const CalibratedColor &color);
// The selection behind rows or tabs the keyboard is not in: the palette's
// inactive highlight, or, where the style makes that as strong as the active
// one, a pale shade of it, on which standard text stays readable.
QColor backgroundHighlight(const QPalette &palette);
AppearanceDefaults fromPalette(const QPalette &palette, const QFont &generalFont);
// From the running application's palette and system font; needs a QGuiApplication.
AppearanceDefaults current();
// The list font of the settings (VXTextFont at VXTextFontSize) over base, which
// stays where a setting is missing.
QFont listFont(const UserDefaults &defaults, QFont base);

} // namespace SystemAppearance
