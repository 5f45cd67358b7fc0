#pragma once

#include <gtest/gtest.h>

#include <QFile>

namespace kibo::test {

/// Empty where there is no such file.
inline QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
/// Gives the path.
inline QString written(const QString& path, const QByteArray& content) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size()) << path.toStdString();
    return path;
}
/// A program made of shell lines.
inline QString writtenScript(const QString& path, const QByteArray& lines) {
    QFile::setPermissions(written(path, "#!/bin/sh\n" + lines), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

}  // namespace kibo::test
