#include "PropertyListWindow.h"

#include "model/PropertyListTreeModel.h"
#include "platform/PropertyListSerialization.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMenuBar>
#include <QMessageBox>
#include <QTreeView>

PropertyListWindow::PropertyListWindow(QWidget *parent) : QMainWindow(parent), m_view(new QTreeView(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_view->setUniformRowHeights(true); // keeps scrolling through large files fast
    m_view->setAlternatingRowColors(true);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    setCentralWidget(m_view);
    setWindowTitle(tr("Orvane"));
    resize(760, 520);
    createActions();
}

void PropertyListWindow::createActions()
{
    QMenu *fileMenu = menuBar()->addMenu(tr("&File"));
    fileMenu->addAction(tr("&Open…"), QKeySequence::Open, this, &PropertyListWindow::chooseAndOpen);
    fileMenu->addAction(tr("&Close"), QKeySequence::Close, this, &QWidget::close);
    fileMenu->addSeparator();
    fileMenu->addAction(tr("&Quit"), QKeySequence::Quit, qApp, &QApplication::closeAllWindows);
}

bool PropertyListWindow::openFile(const QString &path, QString *errorText)
{
    const auto result = PropertyListSerialization::readFile(path);
    if (!result) {
        if (errorText)
            *errorText = result.errorText();
        return false;
    }
    auto *model = new PropertyListTreeModel(result.value.value, this);
    QAbstractItemModel *old = m_view->model();
    m_view->setModel(model);
    delete old;
    m_view->header()->resizeSection(PropertyListTreeModel::KeyColumn, 280);
    m_view->header()->resizeSection(PropertyListTreeModel::ClassColumn, 100);
    setWindowFilePath(path);
    setWindowTitle(QFileInfo(path).fileName() + tr(" — Orvane"));
    return true;
}

void PropertyListWindow::chooseAndOpen()
{
    const QStringList paths = QFileDialog::getOpenFileNames(this, tr("Open Property List"));
    openFiles(paths);
}

void PropertyListWindow::showOpenError(QWidget *parent, const QString &path, const QString &reason)
{
    QMessageBox box(QMessageBox::Warning, tr("Orvane"),
                    tr("The file “%1” could not be opened.").arg(QFileInfo(path).fileName()),
                    QMessageBox::Ok, parent);
    box.setInformativeText(reason);
    box.setDetailedText(path);
    box.exec();
}

QList<PropertyListWindow *> PropertyListWindow::openFiles(const QStringList &paths)
{
    QList<PropertyListWindow *> opened;
    for (const QString &path : paths) {
        auto *window = new PropertyListWindow;
        QString reason;
        if (!window->openFile(path, &reason)) {
            delete window;
            showOpenError(nullptr, path, reason);
            continue;
        }
        window->show();
        opened << window;
    }
    return opened;
}
