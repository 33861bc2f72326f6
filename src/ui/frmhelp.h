#pragma once

#include <QDialog>

class QTextBrowser;

namespace quillet {

// The help page shown inside the program, for a desktop that has no program to open it with (no
// browser installed). Links within the page and its pictures work; links to elsewhere open outside.
class frmHelp : public QDialog
{
    Q_OBJECT
public:
    explicit frmHelp(const QString &page, QWidget *parent = nullptr);

    QTextBrowser *browser() const { return m_browser; }

private:
    QTextBrowser *m_browser = nullptr;
};

} // namespace quillet
