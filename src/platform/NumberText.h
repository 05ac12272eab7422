#pragma once

#include <QString>

// Locale-independent number texts. The process locale may use a decimal comma
// (QCoreApplication adopts the user's locale), but every file format and every
// description the platform prints uses the C locale's point.
namespace NumberText {

// printf's "%.<precision>g" in the C locale: %.16g for doubles in descriptions,
// %.7g for floats, %.17g in XML.
QString formatGeneral(double value, int precision);

// strtod in the C locale, whatever the process locale is: the platform's
// readers and the file formats always use a decimal point.
double strtodC(const char *text, char **end);

// True when strtod read a decimal text as infinity, or as zero though one of
// its digits is not: the number lies beyond what a double holds. Words (inf,
// nan) and hexadecimal forms are never beyond it.
bool isBeyondDouble(QStringView text, double read);

// The value of an ASCII digit in the given base (up to 16, either case), or -1.
int digitValue(char16_t unit, int base);

} // namespace NumberText
