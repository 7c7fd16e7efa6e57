// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <QString>
#include <QTemporaryDir>

namespace ostrelle {

/// A temporary folder without root's privileges: if the process is root, it becomes the user "nobody", who
/// owns the folder, for the length of a scope. Root may read and write anything, which no test of a refusal
/// survives.
class UnprivilegedFolder {
public:
    UnprivilegedFolder() {
        if (::geteuid() == 0) {
            EXPECT_EQ(::chown(m_folder.path().toLocal8Bit().constData(), nobody, nobody), 0);
            EXPECT_EQ(::setegid(nobody), 0);
            EXPECT_EQ(::seteuid(nobody), 0);
            m_wasRoot = true;
        }
    }
    ~UnprivilegedFolder() {
        if (m_wasRoot) {
            EXPECT_EQ(::seteuid(0), 0);
            EXPECT_EQ(::setegid(0), 0);
        }
    }
    UnprivilegedFolder(const UnprivilegedFolder&) = delete;
    UnprivilegedFolder& operator=(const UnprivilegedFolder&) = delete;

    QString path() const { return m_folder.path(); }
    QString filePath(const QString& name) const { return m_folder.filePath(name); }

private:
    static constexpr uid_t nobody = 65534;
    QTemporaryDir m_folder;
    bool m_wasRoot = false;
};

} // namespace ostrelle
