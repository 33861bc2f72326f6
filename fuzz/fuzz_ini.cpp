// An ini file after a crash or a hand edit: any bytes are read, then one key is written and read
// back. The value written is the value read, the other keys keep their values, and the file
// stays readable.
#include "fuzzsupport.h"

#include "lib/error.h"
#include "lib/inifile.h"

#include <QStringList>

using namespace quillet;

int QuilletFuzzOne(const uint8_t *data, size_t size)
{
    const QString path = fuzz::writeScratch(QStringLiteral("quillet.ini"), data, size);
    const QString section = QStringLiteral("Settings");
    const QStringList keys{QStringLiteral("SrcDir"), QStringLiteral("PCname"), QStringLiteral("Thumbnails")};
    QStringList before;
    for (const QString &key : keys)
        before << IniFile::read(path, section, key, QStringLiteral("<none>"));
    try {
        IniFile::write(path, section, QStringLiteral("TgtDir"), QStringLiteral("/home/staff/Target Dir"));
    } catch (const Error &) {
        return 0;
    }
    fuzz::check(IniFile::read(path, section, QStringLiteral("TgtDir")) == QStringLiteral("/home/staff/Target Dir"),
                "a written value reads back");
    for (int i = 0; i < keys.size(); ++i) {
        if (keys.at(i).compare(QStringLiteral("TgtDir"), Qt::CaseInsensitive) != 0)
            fuzz::check(IniFile::read(path, section, keys.at(i), QStringLiteral("<none>")) == before.at(i),
                        "other keys keep their values");
    }
    return 0;
}

QUILLET_FUZZ_TARGET
