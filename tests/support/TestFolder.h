// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// A folder with a test's files, gone when the test is.
class TestFolder
{
public:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString path() const { return m_folder.path(); }
    /// Makes or replaces a file that the user may run, with the folders around it.
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        QVERIFY2(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), qPrintable(name));
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    /// What a file holds; null when there is none.
    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    bool has(const QString &name) const { return QFileInfo::exists(path(name)); }
    bool remove(const QString &name) const { return QFile::remove(path(name)); }

private:
    QTemporaryDir m_folder;
};
