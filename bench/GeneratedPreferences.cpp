#include "GeneratedPreferences.h"

#include "SplitMix.h"

#include "platform/PropertyListSerialization.h"

#include <array>

namespace {

class Random : public SplitMix {
public:
    Random() : SplitMix(20070314ULL) {}
};

const std::array<const char *, 24> kWords = {
    "Window", "Document", "Library", "Music", "Photos", "Project", "Notes", "Draft",
    "Server", "Account", "Backup", "Sync", "Toolbar", "Sidebar", "Preview", "Export",
    "Import", "Recent", "Search", "Folder", "Layout", "Theme", "Update", "Cache"};

// Leaves and groups as real preference files have them: window frames, fonts,
// counters, flags, timestamps, archived state, recent-item lists and nested
// bookmark records. About one leaf in a hundred carries the rare term, in its
// key or (for array elements, which are found only by value) in its text.
class Generator {
public:
    PropertyDictionary domain(int index)
    {
        PropertyDictionary entries;
        const int settings = 20 + m_random.below(40);
        for (int i = 0; i < settings; ++i)
            entries.insert(key(i), scalar());
        PropertyArray recent;
        const int recentCount = 5 + m_random.below(30);
        for (int i = 0; i < recentCount; ++i)
            recent.append(PropertyList(path(i)));
        entries.insert(QStringLiteral("NSRecentDocuments"), recent);
        PropertyArray bookmarks;
        const int bookmarkCount = 10 + m_random.below(120);
        for (int i = 0; i < bookmarkCount; ++i)
            bookmarks.append(bookmark(i));
        entries.insert(QStringLiteral("Bookmarks"), bookmarks);
        PropertyDictionary panels;
        for (int i = 0; i < 4 + m_random.below(8); ++i) {
            PropertyDictionary panel;
            for (int j = 0; j < 6 + m_random.below(10); ++j)
                panel.insert(key(j), scalar());
            panels.insert(QStringLiteral("Panel %1").arg(i), panel);
        }
        entries.insert(QStringLiteral("Panels"), panels);
        entries.insert(QStringLiteral("DomainIndex"), PropertyList::integer(index, 'q'));
        return entries;
    }

private:
    QString word() { return QLatin1String(kWords[static_cast<size_t>(m_random.below(kWords.size()))]); }

    // One key in a hundred holds the rare term.
    QString key(int position)
    {
        QString text = QStringLiteral("VX") + word() + word() + QString::number(position);
        if (m_random.perMille(40))
            text += QStringLiteral("Quasar");
        return text;
    }

    QString path(int position)
    {
        QString text = QStringLiteral("/Users/alex/Documents/") + word() + QLatin1Char(' ')
            + QString::number(m_random.below(500)) + QLatin1Char('/') + word().toLower() + QLatin1Char('-')
            + QString::number(position) + QStringLiteral(".txt");
        if (m_random.perMille(40))
            text.insert(22, QStringLiteral("quasar/"));
        return text;
    }

    PropertyList scalar()
    {
        switch (m_random.below(8)) {
        case 0:
            return PropertyList(QStringLiteral("%1 %2 %3 %4 0 0 1440 877 ")
                                    .arg(m_random.below(900))
                                    .arg(m_random.below(700))
                                    .arg(400 + m_random.below(900))
                                    .arg(300 + m_random.below(500)));
        case 1:
            return PropertyList(word() + QLatin1Char(' ') + word());
        case 2:
            return PropertyList::integerFromFile(m_random.below(100000));
        case 3:
            return PropertyList::real(m_random.below(100000) / 64.0);
        case 4:
            return PropertyList::boolean(m_random.below(2) != 0);
        case 5:
            return PropertyList::date(600000000.0 + m_random.below(100000000));
        case 6: {
            QByteArray bytes(8 + m_random.below(24), '\0');
            for (char &byte : bytes)
                byte = static_cast<char>(m_random.below(256));
            return PropertyList(bytes);
        }
        default:
            return PropertyList(QStringLiteral("https://www.example.com/") + word().toLower());
        }
    }

    PropertyList bookmark(int position)
    {
        PropertyDictionary record;
        record.insert(QStringLiteral("Title"), PropertyList(word() + QLatin1Char(' ') + word()));
        record.insert(QStringLiteral("URLString"),
                      PropertyList(QStringLiteral("https://www.example.com/") + word().toLower() + QLatin1Char('/')
                                   + QString::number(position)));
        record.insert(QStringLiteral("Added"), PropertyList::date(600000000.0 + m_random.below(100000000)));
        record.insert(QStringLiteral("VisitCount"), PropertyList::integerFromFile(m_random.below(5000)));
        record.insert(QStringLiteral("Rating"), PropertyList::real(m_random.below(50) / 10.0));
        record.insert(QStringLiteral("Starred"), PropertyList::boolean(m_random.below(4) == 0));
        record.insert(key(position), scalar());
        PropertyArray tags;
        for (int i = 0; i < m_random.below(4); ++i)
            tags.append(PropertyList(word().toLower()));
        record.insert(QStringLiteral("Tags"), tags);
        return record;
    }

    Random m_random;
};

constexpr int kDomains = 2150;

} // namespace

namespace GeneratedPreferences {

PropertyDictionary value()
{
    Generator generator;
    PropertyDictionary root;
    for (int i = 0; i < kDomains; ++i)
        root.insert(QStringLiteral("com.example.app%1").arg(i), generator.domain(i));
    return root;
}

QByteArray xml() { return PropertyListSerialization::write(value(), PropertyListFormat::Xml); }

} // namespace GeneratedPreferences
