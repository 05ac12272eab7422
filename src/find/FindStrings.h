#pragma once

#include <QString>

// The texts and names of the cross-domain find, spelled as the product shows
// and posts them.
namespace FindStrings {

// The result line; %1 is the number of hits.
inline const char *const kFoundFormat = "Found %1 matches in these domains:";
inline const char *const kNoMatch = "No match found.";
// Array elements are labelled "Item N", N counting from one.
inline const char *const kItem = "Item";

// Where the gathered preferences put the application's registered defaults and
// the global domain.
inline const QString kRegistrationDomainName = QStringLiteral("..NSRegistrationDomain");
inline const QString kGlobalDomainName = QStringLiteral(".GlobalPreferences");
inline const QString kAnyApplication = QStringLiteral("kCFPreferencesAnyApplication");
inline const QString kRootName = QStringLiteral("Root");

inline const QString kFindPanelDidCloseNotification = QStringLiteral("VXFindPanelDidCloseNotification");
inline const QString kFrameKey = QStringLiteral("NSWindow Frame findPanel");

} // namespace FindStrings
