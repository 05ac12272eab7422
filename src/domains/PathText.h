#pragma once

#include <QString>

// The few path readings the preference code needs, with the platform's rules
// for file names rather than QFileInfo's: an extension is what follows the last
// dot of the last component, and a leading dot (a hidden file such as ".plist")
// starts no extension. ".GlobalPreferences.plist" therefore has the extension
// "plist" and keeps its dot when the extension is deleted.
namespace PathText {

// The part after the last slash, trailing slashes ignored; "/" stays "/".
QString lastPathComponent(const QString &path);
// The extension of the last component without its dot; empty when there is none.
QString pathExtension(const QString &path);
// The path with the last component's extension and its dot removed; the path
// itself when there is no extension.
QString deletingPathExtension(const QString &path);

} // namespace PathText
