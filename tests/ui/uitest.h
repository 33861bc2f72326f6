#pragma once

// What the window tests share: the headers most of them use, the rows of a view read and clicked
// as a user does, small photos, families written to the database, folder settings and a main
// window shown and started.
#include "app/familydatabase.h"
#include "app/settingsstore.h"
#include "support/findchild.h"
#include "support/hometest.h"
#include "support/scriptedprompt.h"
#include "ui/frmmain.h"

#include <QAbstractItemView>
#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTest>

#include <initializer_list>

namespace quillet::test {

// The texts of a view's rows, top to bottom.
inline QStringList rowTexts(const QAbstractItemView *view, int role = Qt::DisplayRole)
{
    QStringList out;
    for (int i = 0; i < view->model()->rowCount(); ++i)
        out << view->model()->index(i, 0).data(role).toString();
    return out;
}

// Clicks a row of a view with the mouse.
inline void clickRow(QAbstractItemView *view, int row)
{
    const QModelIndex index = view->model()->index(row, 0);
    view->scrollTo(index);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
}

// A JPEG of one colour; false when it could not be written.
inline bool savePhoto(const QString &path, const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    return image.save(path, "JPG");
}

// Runs these statements (rows of tblFamilies, mostly) on the family database.
inline bool addFamilies(std::initializer_list<const char *> statements)
{
    FamilyDatabase db;
    if (!db.OpenDatabase())
        return false;
    for (const char *sql : statements)
        db.exec(QLatin1String(sql));
    return true;
}

// Gives the setting a folder of the same name in the test's home, made on the disk.
inline QString setFolder(const TestEnv &env, const char *key)
{
    const QString folder = env.path(QLatin1String(key));
    QDir().mkpath(folder);
    WriteSetting(QLatin1String(key), folder);
    return folder;
}

// Shows the main window and starts it up as the program does.
inline bool started(frmMain &w)
{
    w.show();
    if (w.StartUp())
        return true;
    // What stopped the start, for the report of the failing test.
    if (const auto *port = dynamic_cast<const ScriptedPrompt *>(&prompt())) {
        for (const ScriptedPrompt::Message &m : port->messages())
            qWarning("the start stopped after the message: %s", qPrintable(m.text));
    }
    return false;
}

} // namespace quillet::test
