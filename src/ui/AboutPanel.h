#pragma once

#include <QDialog>

// Help › About Orvane: the name, the release, what the program is for, and its
// licence, whose full text is a button away.
class AboutPanel : public QDialog {
    Q_OBJECT
public:
    explicit AboutPanel(QWidget *parent = nullptr);

    // The panel over parent's window, made on first use.
    static AboutPanel *showAbout(QWidget *parent);
    // The licence text shipped with the program.
    static QString licenseText();

private:
    void showLicense();
};
