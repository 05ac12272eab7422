#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class findNode;

// What the find window does with its selected rows: each row stands for the
// domain at the top of its branch, whose file lies in the user's preferences
// folder. The documents are opened through opener, which answers whether a
// document came of it.
namespace FindOpening {

using Opener = std::function<bool(const QString &path, bool inNewWindow)>;

// "<folder>/<openName>.plist".
QString pathFor(const QString &folder, const findNode &node);
// Each row's domain in selection order, tried a second time when no document came.
void openFoundResult(const QList<const findNode *> &rows, const QString &folder, const Opener &opener);
// The first row's domain in a new window (tried again in the current one when
// no document came); each later one in the current window and, when that
// worked, opened once more: the later rows' retry is inverted on purpose,
// and a second open of an open document only brings it forward.
void openQuicklyInNewWindow(const QList<const findNode *> &rows, const QString &folder, const Opener &opener);
// The rows' domain files, each once, in selection order.
QStringList infoPaths(const QList<const findNode *> &rows, const QString &folder);

} // namespace FindOpening
