#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;
class QVBoxLayout;
struct FileInformation;

// The information panel: for each file given, its icon, path, dates, size,
// owner and group, and permissions, one section per file (the first
// kMaxSections of a long selection, then a line counting the rest). Its labels
// carry the names the rest of the application knows them by (pathField,
// creationDate, modifiedDate, …).
//
// One panel serves the whole application: getInfoForFiles() shows it,
// getPrefInfoIfOpen() refreshes it only while it is showing, which is what a
// window whose selection changes wants. It is freed when closed.
class InfoPanel : public QWidget {
    Q_OBJECT
public:
    static constexpr int kMaxSections = 20;

    explicit InfoPanel(QWidget *parent = nullptr);

    static InfoPanel *getInfoForFiles(const QStringList &paths);
    // False, and nothing done, when the panel is not showing.
    static bool getPrefInfoIfOpen(const QStringList &paths);
    // The panel, if it is open.
    static InfoPanel *sharedPanel();

    void showFiles(const QStringList &paths);
    QStringList paths() const { return m_paths; }

private:
    QWidget *section(const FileInformation &information);
    void clearSections();

    QStringList m_paths;
    QVBoxLayout *m_sections = nullptr;
};
