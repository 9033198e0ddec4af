#pragma once
// Files as the tests make and read them; in a text, "|" stands for CR LF.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QString>
#include <map>

#include "app/zel_error.h"

namespace zel::test {

inline QByteArray crlf(QByteArray text) { return text.replace('|', "\r\n"); }

inline QString write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
    return path;
}

inline QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<absent>");
}

// Every file under `folder` by its relative path, with its bytes.
inline std::map<QString, QByteArray> tree(const QString& folder) {
    std::map<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden,
                    QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
    while (it.hasNext()) {
        QFile file(it.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        files[QDir(folder).relativeFilePath(file.fileName())] = file.readAll();
    }
    return files;
}

// The number a call fails with, 0 when it returns.
template <typename Call>
int error_of(Call&& call) {
    try {
        call();
    } catch (const ZelError& e) {
        return e.number;
    }
    return 0;
}

}  // namespace zel::test
