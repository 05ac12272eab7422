#pragma once

#include <QString>

// Locale-independent number texts. The process locale may use a decimal comma
// (QCoreApplication adopts the user's locale), but every file format and every
// description the platform prints uses the C locale's point.
namespace NumberText {

// printf's "%.<precision>g" in the C locale: %.16g for doubles in descriptions,
// %.7g for floats, %.17g in XML.
QString formatGeneral(double value, int precision);

} // namespace NumberText
