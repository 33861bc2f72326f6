#include "aboutbox.h"

#include "app/startup.h"
#include "lib/apppaths.h"

#include <QDialogButtonBox>
#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

namespace quillet {

namespace {

// The libraries the program links, with the licence each is used under.
struct Library
{
    const char *name;
    const char *licence;
};
constexpr Library kLibraries[] = {
    {"Qt", "GNU LGPL version 3"},
    {"FreeImage", "FreeImage Public License 1.0 (or GNU GPL version 2 or 3)"},
    {"libjpeg-turbo (TurboJPEG)", "IJG License, BSD 3-clause License and zlib License"},
    {"SQLite", "public domain"},
    {"QuaZip", "GNU LGPL version 2.1 with static linking exception"},
    {"zlib", "zlib License"},
};

} // namespace

QString AboutBox::text()
{
    QString libs;
    for (const Library &lib : kLibraries)
        libs += QStringLiteral("<li>%1: %2</li>").arg(QLatin1String(lib.name), QLatin1String(lib.licence));
    return QStringLiteral("<h2>%1</h2>"
                          "<p>Version %2, running on Qt %3</p>"
                          "<p>Allocates the day's photos to the families of the children in them.</p>"
                          "<p><b>Data folder:</b> %4</p>"
                          "<p>%1 is free software under the GNU General Public License, version 3 or later. "
                          "It comes with no warranty.</p>"
                          "<p>It uses these libraries:</p><ul>%5</ul>")
        .arg(QLatin1String(AppPaths::kTitle), Startup::VersionLine().mid(1), QLatin1String(qVersion()),
             AppPaths::dataDir().toHtmlEscaped(), libs);
}

AboutBox::AboutBox(QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About ") + QLatin1String(AppPaths::kTitle));
    auto *layout = new QVBoxLayout(this);
    auto *row = new QHBoxLayout;
    auto *icon = new QLabel(this);
    icon->setPixmap(QIcon::fromTheme(QStringLiteral("quillet"), QIcon(AppPaths::resourceFile(QStringLiteral("quillet.png"))))
                        .pixmap(64, 64));
    icon->setAlignment(Qt::AlignTop);
    row->addWidget(icon);
    auto *label = new QLabel(text(), this);
    label->setObjectName(QStringLiteral("lblAbout"));
    label->setTextFormat(Qt::RichText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setMinimumWidth(440);
    row->addWidget(label, 1);
    layout->addLayout(row);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::accept);
    layout->addWidget(buttons);
}

} // namespace quillet
