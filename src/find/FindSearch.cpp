#include "FindSearch.h"

#include "FindStrings.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>

FindSearch::FindSearch(const QString &term) : m_pattern(term) {}

PropertyDictionary FindSearch::preferencesForUser(PreferencesService &service, const UserDefaults &defaults,
                                                  PreferencesUser user, PreferencesHost host)
{
    PropertyDictionary all;
    all.insert(FindStrings::kRegistrationDomainName,
               defaults.volatileDomainForName(UserDefaults::kRegistrationDomain));
    const QStringList names = service.copyApplicationList(user, host).value_or(QStringList());
    all.reserve(names.size() + 1);
    for (const QString &name : names) {
        // A domain that cannot be read holds no keys here and is skipped.
        const std::optional<PropertyDictionary> content = service.copyDomain(name, user, host);
        if (!content || content->isEmpty())
            continue;
        all.insert(name == FindStrings::kAnyApplication ? FindStrings::kGlobalDomainName : name, *content);
    }
    return all;
}

bool FindSearch::valueMatches(const PropertyList &value) const
{
    if (value.isData())
        return false;
    return value.isString() ? m_pattern.matches(value.stringRef()) : m_pattern.matches(value.description());
}

PropertyDictionary FindSearch::searchForTerm(const PropertyDictionary &dictionary, bool isTopLevel)
{
    PropertyDictionary found;
    for (qsizetype i = 0; i < dictionary.size(); ++i) {
        const QString &key = dictionary.keyAt(i);
        const PropertyList &value = dictionary.valueAt(i);
        // Domain names are never matched: a domain shows only through its hits.
        const bool keyMatches = !isTopLevel && m_pattern.matches(key);
        if (value.isDictionary()) {
            PropertyDictionary inside = searchForTerm(value.dictionaryRef(), false);
            if (!inside.isEmpty() || keyMatches) {
                m_searchResults += inside.isEmpty() ? 1 : 0;
                found.insert(key, inside);
            }
        } else if (value.isArray()) {
            PropertyArray inside = searchForTerm(value.arrayRef());
            if (!inside.isEmpty() || keyMatches) {
                m_searchResults += inside.isEmpty() ? 1 : 0;
                found.insert(key, inside);
            }
        } else if (valueMatches(value) || keyMatches) {
            ++m_searchResults;
            found.insert(key, value);
        }
    }
    return found;
}

PropertyArray FindSearch::searchForTerm(const PropertyArray &array)
{
    PropertyArray found;
    for (const PropertyList &element : array.items()) {
        if (element.isDictionary()) {
            PropertyDictionary inside = searchForTerm(element.dictionaryRef(), false);
            if (!inside.isEmpty())
                found.append(inside);
        } else if (element.isArray()) {
            PropertyArray inside = searchForTerm(element.arrayRef());
            if (!inside.isEmpty())
                found.append(inside);
        } else if (valueMatches(element)) {
            ++m_searchResults;
            found.append(element);
        }
    }
    return found;
}

QString FindSearch::resultLine(quint64 hits)
{
    if (hits == 0)
        return QCoreApplication::translate("findController", FindStrings::kNoMatch);
    return QCoreApplication::translate("findController", FindStrings::kFoundFormat).arg(hits);
}

FindSearch::Result FindSearch::find(const QString &term, PreferencesService &service,
                                    const UserDefaults &defaults)
{
    FindSearch search(term);
    const PropertyDictionary found = search.searchForTerm(
        preferencesForUser(service, defaults, PreferencesUser::Current, PreferencesHost::Any), true);
    Result result;
    result.hits = found.isEmpty() ? 0 : search.searchResults();
    result.tree = findNode::treeFromDefDict(found);
    result.tree->recursiveSortChildren();
    result.resultLine = resultLine(result.hits);
    return result;
}
