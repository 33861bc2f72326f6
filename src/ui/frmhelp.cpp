#include "frmhelp.h"

#include "applicationwindow.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

namespace quillet {

frmHelp::frmHelp(const QString &page, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmHelp"));
    setWindowTitle(applicationWindowTitle() + QStringLiteral(" - Help"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_browser = new QTextBrowser(this);
    m_browser->setObjectName(QStringLiteral("txtHelp"));
    m_browser->setOpenExternalLinks(true);
    m_browser->setSource(QUrl::fromLocalFile(page));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("cmdClose"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_browser);
    layout->addWidget(buttons);
    resize(760, 620);
}

} // namespace quillet
