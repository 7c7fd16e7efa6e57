// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <utility>

namespace ostrelle {

/// The desktop sandbox's grants for the files and folders the user chose.
class FileAccess {
public:
    virtual ~FileAccess() = default;

    /// True when a grant was begun; end() must then follow.
    virtual bool begin(const QString& path) = 0;
    virtual void end(const QString& path) = 0;
    /// Whether only files that the user has chosen may be used.
    virtual bool isSandboxed() const = 0;
};

/// A desktop without a sandbox: nothing to grant.
class UnsandboxedAccess : public FileAccess {
public:
    bool begin(const QString&) override { return false; }
    void end(const QString&) override {}
    bool isSandboxed() const override { return false; }
};

/// Access to one file or folder for the length of a scope.
class ScopedAccess {
public:
    ScopedAccess(FileAccess& access, QString path)
        : m_access(access), m_path(std::move(path)), m_granted(m_access.begin(m_path)) {}
    ~ScopedAccess() {
        if (m_granted) {
            m_access.end(m_path);
        }
    }
    ScopedAccess(const ScopedAccess&) = delete;
    ScopedAccess& operator=(const ScopedAccess&) = delete;

    bool isGranted() const { return m_granted; }

private:
    FileAccess& m_access;
    QString m_path;
    bool m_granted;
};

} // namespace ostrelle
