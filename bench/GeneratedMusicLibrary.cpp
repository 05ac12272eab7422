#include "GeneratedMusicLibrary.h"

#include "SplitMix.h"

#include "platform/PropertyListSerialization.h"

#include <array>

namespace {

const std::array<const char *, 20> kWords = {
    "Night", "River", "Summer", "Light", "Dream", "Heart", "Road", "Blue", "Fire", "Rain",
    "Golden", "Echo", "Silver", "Storm", "Quiet", "Wild", "Ocean", "Glass", "Morning", "Shadow"};
const std::array<const char *, 8> kGenres = {"Rock", "Jazz", "Classical", "Electronic", "Pop", "Folk", "Soundtrack",
                                             "Hip-Hop"};

constexpr int kTracks = 52500;
constexpr int kPlaylists = 160;
constexpr double kYear2010 = 283996800.0; // 2010-01-01 in seconds since 2001

class Generator {
public:
    PropertyDictionary library()
    {
        PropertyDictionary root;
        root.insert(QStringLiteral("Major Version"), PropertyList::integerFromFile(1));
        root.insert(QStringLiteral("Minor Version"), PropertyList::integerFromFile(1));
        root.insert(QStringLiteral("Date"), PropertyList::date(kYear2010 + 120000000.0));
        root.insert(QStringLiteral("Application Version"), PropertyList(QStringLiteral("12.9.5.5")));
        root.insert(QStringLiteral("Show Content Ratings"), PropertyList::boolean(true));
        root.insert(QStringLiteral("Music Folder"), PropertyList(QStringLiteral("file:///Users/alex/Music/Music/Media/")));
        root.insert(QStringLiteral("Library Persistent ID"), PropertyList(persistentId()));
        PropertyDictionary tracks;
        tracks.reserve(kTracks);
        for (int i = 0; i < kTracks; ++i)
            tracks.insert(QString::number(1000 + 2 * i), track(1000 + 2 * i));
        root.insert(QStringLiteral("Tracks"), tracks);
        PropertyArray playlists;
        for (int i = 0; i < kPlaylists; ++i)
            playlists.append(playlist(i));
        root.insert(QStringLiteral("Playlists"), playlists);
        return root;
    }

private:
    QString word() { return QLatin1String(kWords[static_cast<size_t>(m_random.below(kWords.size()))]); }
    QString title(int words)
    {
        QString text = word();
        for (int i = 1; i < words; ++i)
            text += QLatin1Char(' ') + word();
        return text;
    }
    QString persistentId() { return QString::number(m_random.next(), 16).toUpper().rightJustified(16, u'0'); }
    PropertyList date() { return PropertyList::date(kYear2010 + m_random.below(400000000)); }
    PropertyList number(int below) { return PropertyList::integerFromFile(m_random.below(below)); }

    PropertyDictionary track(int id)
    {
        PropertyDictionary record;
        const QString name = title(1 + m_random.below(4));
        const QString artist = title(2);
        const QString album = title(1 + m_random.below(3));
        record.insert(QStringLiteral("Track ID"), PropertyList::integerFromFile(id));
        record.insert(QStringLiteral("Name"), PropertyList(name));
        record.insert(QStringLiteral("Artist"), PropertyList(artist));
        record.insert(QStringLiteral("Album Artist"), PropertyList(artist));
        record.insert(QStringLiteral("Album"), PropertyList(album));
        record.insert(QStringLiteral("Genre"), PropertyList(QLatin1String(kGenres[static_cast<size_t>(m_random.below(8))])));
        record.insert(QStringLiteral("Kind"), PropertyList(QStringLiteral("AAC audio file")));
        record.insert(QStringLiteral("Size"), number(12000000));
        record.insert(QStringLiteral("Total Time"), number(600000));
        record.insert(QStringLiteral("Disc Number"), number(3));
        record.insert(QStringLiteral("Disc Count"), number(3));
        record.insert(QStringLiteral("Track Number"), number(20));
        record.insert(QStringLiteral("Track Count"), number(20));
        record.insert(QStringLiteral("Year"), PropertyList::integerFromFile(1960 + m_random.below(60)));
        record.insert(QStringLiteral("Date Modified"), date());
        record.insert(QStringLiteral("Date Added"), date());
        record.insert(QStringLiteral("Bit Rate"), PropertyList::integerFromFile(256));
        record.insert(QStringLiteral("Sample Rate"), PropertyList::integerFromFile(44100));
        record.insert(QStringLiteral("Volume Adjustment"), PropertyList::real(m_random.below(200) / 8.0 - 12.5));
        if (m_random.perMille(700)) {
            record.insert(QStringLiteral("Play Count"), number(200));
            record.insert(QStringLiteral("Play Date"), PropertyList::integerFromFile(3400000000LL + m_random.below(90000000)));
            record.insert(QStringLiteral("Play Date UTC"), date());
        }
        if (m_random.perMille(300))
            record.insert(QStringLiteral("Rating"), PropertyList::integerFromFile(20 * m_random.below(6)));
        record.insert(QStringLiteral("Album Rating Computed"), PropertyList::boolean(true));
        record.insert(QStringLiteral("Artwork Count"), PropertyList::integerFromFile(1));
        record.insert(QStringLiteral("Persistent ID"), PropertyList(persistentId()));
        record.insert(QStringLiteral("Track Type"), PropertyList(QStringLiteral("File")));
        record.insert(QStringLiteral("Location"),
                      PropertyList(QStringLiteral("file:///Users/alex/Music/Music/Media/") + artist + QLatin1Char('/')
                                   + album + QLatin1Char('/') + name + QStringLiteral(".m4a")));
        record.insert(QStringLiteral("File Folder Count"), PropertyList::integerFromFile(5));
        record.insert(QStringLiteral("Library Folder Count"), PropertyList::integerFromFile(1));
        return record;
    }

    PropertyDictionary playlist(int index)
    {
        PropertyDictionary record;
        record.insert(QStringLiteral("Name"), PropertyList(title(2)));
        record.insert(QStringLiteral("Playlist ID"), PropertyList::integerFromFile(200000 + index));
        record.insert(QStringLiteral("Playlist Persistent ID"), PropertyList(persistentId()));
        record.insert(QStringLiteral("All Items"), PropertyList::boolean(true));
        PropertyArray items;
        const int count = index == 0 ? kTracks : m_random.below(2000);
        for (int i = 0; i < count; ++i) {
            const int track = index == 0 ? i : m_random.below(kTracks);
            items.append(PropertyDictionary{{QStringLiteral("Track ID"), PropertyList::integerFromFile(1000 + 2 * track)}});
        }
        record.insert(QStringLiteral("Playlist Items"), items);
        return record;
    }

    SplitMix m_random{19700101ULL};
};

} // namespace

namespace GeneratedMusicLibrary {

PropertyDictionary value() { return Generator().library(); }
QByteArray xml() { return PropertyListSerialization::write(value(), PropertyListFormat::Xml); }
QByteArray binary() { return PropertyListSerialization::write(value(), PropertyListFormat::Binary); }

} // namespace GeneratedMusicLibrary
