#pragma once

#include "findNode.h"
#include "model/VXAdditions.h"
#include "platform/PreferencesService.h"
#include "platform/PropertyList.h"

#include <QString>

class UserDefaults;

// The search behind the find window and `orvane-plist find`: every preference
// domain of a user gathered into one dictionary, then pruned to what matches a
// term of the search field's language. Keys and values are matched; a
// domain's own name never is, and data values are found only by their key.
class FindSearch {
public:
    // One finished search as the window and the tool show it.
    struct Result {
        quint64 hits = 0;
        findNodePtr tree; // sorted; an empty root when nothing matched
        QString resultLine;
    };

    explicit FindSearch(const QString &term);

    // {domain name: all its keys and values}, the application's registered
    // defaults under "..NSRegistrationDomain" and the global domain under
    // ".GlobalPreferences". Domains without keys are left out.
    static PropertyDictionary preferencesForUser(PreferencesService &service, const UserDefaults &defaults,
                                                 PreferencesUser user, PreferencesHost host);

    // The dictionary pruned to the hits; a container whose key matched with
    // nothing inside it stays as an empty one. Each hit is counted once in
    // searchResults(), even when both its key and its value match.
    PropertyDictionary searchForTerm(const PropertyDictionary &dictionary, bool isTopLevel);
    PropertyArray searchForTerm(const PropertyArray &array);
    quint64 searchResults() const { return m_searchResults; }

    // Gathers the current user's domains (any host), searches them and builds
    // the sorted tree with its result line.
    static Result find(const QString &term, PreferencesService &service, const UserDefaults &defaults);
    static QString resultLine(quint64 hits);

private:
    bool valueMatches(const PropertyList &value) const;

    VXAdditions::SearchPattern m_pattern;
    quint64 m_searchResults = 0;
};
