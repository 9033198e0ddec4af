#pragma once
// Files as the data tests make and read them; in a text, "|" stands for CR LF.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QString>

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
