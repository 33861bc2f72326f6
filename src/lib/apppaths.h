#pragma once

#include <QString>

namespace quillet {

// Where the application's own files live: the shared data folder joined with the application
// title. File names are built from the executable's base name.
namespace AppPaths {

inline constexpr const char *kTitle = "Quillet";
inline constexpr const char *kExeBase = "quillet";

// $XDG_DATA_HOME/Quillet (normally ~/.local/share/Quillet). Not cached: tests move it.
QString dataDir();
// dataDir() joined with a file name.
QString dataFile(const QString &name);

QString userIni();        // quillet.ini
QString adminIni();       // quilletP.ini
QString databaseFile();   // quilletData.db
QString debugLog();       // quilletDebug.txt
QString debugView();      // quilletDebug1.txt
// The folder of the running executable; relative settings resolve against it.
QString applicationDir();
// A file shipped with the program: beside the executable (a build tree), else in the installed
// tree's share/quillet folder next to the executable's bin folder, wherever that tree was
// installed. The path beside the executable when neither exists.
QString resourceFile(const QString &name);
// For tests: the shipped files are looked for in `dir` only (empty: as above again). Test
// programs share the folder they run from, so none of them may take a file away from it.
void setResourceDirForTests(const QString &dir);
QString placeholderPicture();  // ThumbnailPlaceholder.gif
QString helpPage();            // quillet.html

} // namespace AppPaths
} // namespace quillet
