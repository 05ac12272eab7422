#include "AppearanceDefaults.h"

#include "domains/SettingsKeys.h"
#include "platform/UserDefaults.h"

#include <QColor>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPalette>

namespace {

// Fonts given in pixels have no point size; a 96 dpi screen is assumed to
// turn them into points, and the core's fallback size when even that is missing.
double pointSize(const QFont &font)
{
    if (font.pointSizeF() > 0)
        return font.pointSizeF();
    if (font.pixelSize() > 0)
        return font.pixelSize() * 72.0 / 96.0;
    return AppearanceDefaults::fallback().userFontSize;
}

} // namespace

namespace SystemAppearance {

CalibratedColor calibratedColor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return {rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF()};
}

QColor qColor(const CalibratedColor &color)
{
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

QColor backgroundHighlight(const QPalette &palette)
{
    const QColor inactive = palette.color(QPalette::Inactive, QPalette::Highlight);
    if (inactive != palette.color(QPalette::Active, QPalette::Highlight))
        return inactive;
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    constexpr float kShare = 0.3f;
    const auto mix = [](float a, float b) { return a * kShare + b * (1 - kShare); };
    return QColor::fromRgbF(mix(inactive.redF(), base.redF()), mix(inactive.greenF(), base.greenF()),
                            mix(inactive.blueF(), base.blueF()));
}

AppearanceDefaults fromPalette(const QPalette &palette, const QFont &generalFont)
{
    AppearanceDefaults appearance;
    appearance.alternatingRowLight = calibratedColor(palette.color(QPalette::Active, QPalette::Base));
    appearance.alternatingRowDark = calibratedColor(palette.color(QPalette::Active, QPalette::AlternateBase));
    appearance.text = calibratedColor(palette.color(QPalette::Active, QPalette::Text));
    appearance.disabledControlText = calibratedColor(palette.color(QPalette::Disabled, QPalette::Text));
    appearance.secondarySelectedControl = calibratedColor(palette.color(QPalette::Inactive, QPalette::Highlight));
    appearance.controlLightHighlight = calibratedColor(palette.color(QPalette::Active, QPalette::Light));
    if (!generalFont.family().isEmpty()) {
        appearance.userFontName = generalFont.family();
        appearance.boldSystemFontName = generalFont.family();
    }
    appearance.userFontSize = pointSize(generalFont);
    return appearance;
}

AppearanceDefaults current()
{
    return fromPalette(QGuiApplication::palette(), QFontDatabase::systemFont(QFontDatabase::GeneralFont));
}

QFont listFont(const UserDefaults &defaults, QFont base)
{
    const QString family = defaults.stringForKey(SettingsKeys::VXTextFont);
    const double size = defaults.doubleForKey(SettingsKeys::VXTextFontSize);
    if (!family.isEmpty())
        base.setFamily(family);
    if (size > 0)
        base.setPointSizeF(size);
    return base;
}

} // namespace SystemAppearance
