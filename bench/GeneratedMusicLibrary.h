#pragma once

#include "platform/PropertyList.h"

#include <QByteArray>

// The large file the codec and opening benchmarks read: a music library as
// the music application exports it (a dictionary of track records under
// "Tracks", playlists listing track IDs under "Playlists"), about 100 MB as
// XML and 30 MB as binary, from a fixed seed so every run sees the same file.
namespace GeneratedMusicLibrary {

PropertyDictionary value();
QByteArray xml();
QByteArray binary();

} // namespace GeneratedMusicLibrary
