// The console's profile library driven by the same script as wine_profile_script.c, so that
// the two can be held side by side (see scripts/profile-vs-wine.sh).
//   library_profile_script SCRIPT FOLDER RESULTS
#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>
#include <cstdio>
#include <optional>

#include "data/profile_file.h"

namespace {

std::optional<QString> unhex(const QByteArray& field) {
    if (field == "-") return std::nullopt;
    return QString::fromLatin1(QByteArray::fromHex(field.mid(1)));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s SCRIPT FOLDER RESULTS\n", argv[0]);
        return 2;
    }
    QFile in(QString::fromLocal8Bit(argv[1])), out(QString::fromLocal8Bit(argv[3]));
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly)) return 2;
    const QString folder = QString::fromLocal8Bit(argv[2]);
    QString path;
    for (const QByteArray& line : in.readAll().split('\n')) {
        const QList<QByteArray> f = line.trimmed().split(' ');
        if (f.isEmpty() || f[0].isEmpty()) continue;
        if (f[0] == "S") {
            path = folder + '/' + QString::fromLatin1(f[1]);
            out.write("S " + f[1] + '\n');
        } else if (f[0] == "W") {
            const auto section = unhex(f[1]), key = unhex(f[2]), value = unhex(f[3]);
            bool ok = false;
            if (!key)
                ok = zel::delete_profile_section(path, *section);
            else if (!value)
                ok = zel::delete_profile_key(path, *section, *key);
            else
                ok = zel::write_profile_string(path, *section, *key, *value);
            out.write(ok ? "w 1\n" : "w 0\n");
        } else if (f[0] == "R") {
            const QString value = zel::read_profile_string(
                path, *unhex(f[1]), *unhex(f[2]), unhex(f[3]).value_or(QString()), f[4].toInt());
            out.write("r x" + value.toLatin1().toHex() + '\n');
        }
    }
    return 0;
}
