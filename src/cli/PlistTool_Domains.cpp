// orvane-plist domains / read / find: the preference store as the browser, the
// documents and the find window see it, for scripts.
#include "PlistTool.h"

#include "domains/openDomain.h"
#include "domains/openNode.h"
#include "find/FindSearch.h"
#include "platform/PreferencesService.h"
#include "platform/UserDefaults.h"

namespace {

// One line per row, children indented under their folder.
void printRows(QTextStream &out, const openNode &node, int depth)
{
    for (const openNodePtr &child : node.children()) {
        out << QString(depth * 2, QLatin1Char(' ')) << child->displayName() << '\t' << child->name() << '\n';
        printRows(out, *child, depth + 1);
    }
}

} // namespace

int PlistTool::domains(const QStringList &arguments)
{
    if (!arguments.isEmpty())
        return usage(QStringLiteral("domains takes no arguments"));
    printRows(m_out, *openDomain::fullDomainTree(), 0);
    return 0;
}

int PlistTool::readDomain(const QStringList &arguments)
{
    if (arguments.isEmpty() || arguments.size() > 2)
        return usage(QStringLiteral("read takes a domain and at most one key"));
    const QString &domain = arguments.first();
    PreferencesService &service = PreferencesService::shared();
    // As with the platform's defaults tool, a domain without keys counts as
    // missing: the store keeps no empty domains.
    const auto content = service.copyDomain(domain, PreferencesUser::Current, PreferencesHost::Any);
    if (!content) {
        m_err << "orvane-plist: the domain '" << domain << "' does not exist\n";
        return 1;
    }
    if (arguments.size() == 1) {
        m_out << PropertyList(*content).description() << '\n';
        return 0;
    }
    const QString &key = arguments.at(1);
    const PropertyList *value = content->find(key);
    if (!value) {
        m_err << "orvane-plist: the domain '" << domain << "' has no key '" << key << "'\n";
        return 1;
    }
    m_out << value->description() << '\n';
    return 0;
}

int PlistTool::find(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return usage(QStringLiteral("find takes one search term"));
    const FindSearch::Result result = FindSearch::find(arguments.first(), PreferencesService::shared(),
                                                       UserDefaults::standardUserDefaults());
    m_out << result.resultLine << '\n' << result.tree->outlineText();
    return result.hits ? 0 : 1;
}
