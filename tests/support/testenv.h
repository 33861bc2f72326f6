#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

// Skips the calling test function, naming what is missing, when the camera corpus is absent.
#define QUILLET_REQUIRE_CORPUS()                                                                           \
    do {                                                                                                   \
        if (quillet::test::TestEnv::corpusDir().isEmpty())                                                 \
            QSKIP(qPrintable(quillet::test::TestEnv::corpusMissingMessage()));                             \
    } while (false)

namespace quillet::test {

// A fresh home for one test: a temporary folder with HOME, XDG_DATA_HOME, XDG_CACHE_HOME and
// XDG_CONFIG_HOME pointed inside it, so the data folder, the thumbnail cache and the desktop
// trash of the test are its own. Make one in init(); the folder goes away with it.
class TestEnv
{
public:
    TestEnv();
    ~TestEnv();

    bool isValid() const { return m_dir.isValid(); }
    // The temporary folder.
    QString root() const { return m_dir.path(); }
    // root() joined with a relative path.
    QString path(const QString &relative) const;
    // The application data folder inside this environment (created).
    QString dataDir() const;
    // A ready installation: the data folder with an empty family database, and the folders
    // root()/src and root()/tgt set as Source and Target Dir. False when it could not be made.
    bool makeInstallation() const;
    QString srcDir() const { return path(QStringLiteral("src")); }
    QString tgtDir() const { return path(QStringLiteral("tgt")); }

    // Writes a file (and its folders) with the given bytes; returns its path.
    QString writeFile(const QString &relative, const QByteArray &bytes) const;

    // The folder of the shared camera corpus: $QUILLET_CORPUS_DIR, else ../shared/testdata/exif-corpus
    // beside the checkout. Empty when neither holds MANIFEST.csv; tests then skip with
    // QUILLET_REQUIRE_CORPUS().
    static QString corpusDir();
    static QString corpusMissingMessage();

private:
    QTemporaryDir m_dir;
    QByteArray m_saved[4];
};

// The bytes of a file; empty when it cannot be read.
QByteArray fileBytes(const QString &path);
// Writes a file, making its folders.
void writeBytes(const QString &path, const QByteArray &bytes);

} // namespace quillet::test
