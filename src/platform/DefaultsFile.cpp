// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DefaultsFile.h"

#include "platform/FileLock.h"
#include "platform/FileStamp.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestFile = 4LL * 1024 * 1024;
constexpr mode_t privateFile = S_IRUSR | S_IWUSR;
constexpr mode_t privateFolder = S_IRWXU;
constexpr std::chrono::seconds longestWait(2); // for another process to save, which takes far less

/// All keys of the file with their tagged values, or nothing when it is not JSON of that shape. Entries that
/// this version does not understand are ignored but stay in the file.
std::optional<QJsonObject> parse(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

void makePrivateFolder(const QString& path) {
    makeFolder(QFileInfo(path).path());
    if (::mkdir(QFile::encodeName(path).constData(), privateFolder) != 0 && errno != EEXIST) {
        throw FileError(u"make the folder"_s, path, errno);
    }
}

/// A free name for a damaged file: the time of its last change, and a number if needed.
QString asideName(const QString& path) {
    const QDateTime written = QFileInfo(path).lastModified().toUTC();
    const QString stem = path + u".broken-"_s + written.toString(u"yyyyMMdd'T'HHmmss.zzz'Z'");
    QString name = stem;
    for (int number = 2; QFileInfo::exists(name); ++number) {
        name = stem + u'-' + QString::number(number);
    }
    return name;
}

} // namespace

/// One state of the file. The file stays open as long as its state is remembered, so that its inode number
/// cannot be reused: two states within one tick of the file system's clock never look alike.
class DefaultsFile::Snapshot {
public:
    /// Throws FileError when the file exists but cannot be looked at.
    explicit Snapshot(const QString& path)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC)) {
        if (m_descriptor < 0 && errno != ENOENT) {
            throw FileError(u"read"_s, path, errno);
        }
        if (m_descriptor >= 0) {
            ::fstat(m_descriptor, &m_status);
        }
    }
    ~Snapshot() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    bool exists() const { return m_descriptor >= 0; }
    bool isOpenToOthers() const { return (m_status.st_mode & (S_IRWXG | S_IRWXO)) != 0; }
    bool isSameAs(const Snapshot& other) const { return FileStamp(m_status) == FileStamp(other.m_status); }

private:
    int m_descriptor;
    struct stat m_status{};
};

DefaultsFile::DefaultsFile(QString path) : m_path(std::move(path)) {}

DefaultsFile::~DefaultsFile() = default;

QJsonObject DefaultsFile::load() {
    // A file that was valid before may now be half written by an editor: leave the verdict to apply().
    const bool isKnown = m_snapshot != nullptr;
    if (isRead() || isKnown) {
        return m_values;
    }
    try {
        const FileLock lock(m_path, longestWait);
        readOrSetAside();
    } catch (const FileError& error) {
        throw OffLimits(error);
    }
    return m_values;
}

QJsonObject DefaultsFile::apply(const DefaultsChanges& changes) {
    if (isRead() && changes.appliedTo(m_values) == m_values) {
        return m_values;
    }
    makePrivateFolder(QFileInfo(m_path).path());
    const FileLock lock(m_path, longestWait);
    readOrSetAside();
    const QJsonObject values = changes.appliedTo(m_values);
    if (values != m_values) {
        replace(values);
    }
    return m_values;
}

QString DefaultsFile::takeNotice() {
    return std::exchange(m_notice, {});
}

/// Reads the file if it has changed since the last look. False when its contents are not valid.
bool DefaultsFile::isRead() {
    try {
        auto snapshot = std::make_unique<const Snapshot>(m_path);
        if (m_snapshot && m_snapshot->isSameAs(*snapshot)) {
            return true;
        }
        const std::optional<QJsonObject> values =
            snapshot->exists() ? parse(readFile(m_path, largestFile)) : QJsonObject();
        if (!values) {
            return false;
        }
        if (snapshot->isOpenToOthers()) { // it holds the model service's key
            [[maybe_unused]] const int closed = ::chmod(QFile::encodeName(m_path).constData(), privateFile);
        }
        m_values = *values;
        m_snapshot = std::move(snapshot);
    } catch (const FileError& error) {
        if (error.code() == EFBIG) {
            return false;
        }
        if (error.code() != ENOENT) { // ENOENT: another process has just set it aside
            throw OffLimits(error);
        }
    }
    return true;
}

/// Call under the lock: then nobody else can have set aside a file that is still damaged.
void DefaultsFile::readOrSetAside() {
    if (!isRead()) {
        setAside();
    }
}

void DefaultsFile::setAside() {
    const QString name = asideName(m_path);
    if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(name).constData()) != 0) {
        throw OffLimits(FileError(u"set aside"_s, m_path, errno));
    }
    m_notice = u"[DefaultsStore] The settings in %1 are damaged and start anew; the old file is now %2"_s.arg(
        m_path, name);
    m_values = {};
    m_snapshot.reset();
}

void DefaultsFile::replace(const QJsonObject& values) {
    const QByteArray bytes = QJsonDocument(values).toJson();
    if (bytes.size() > largestFile) {
        throw FileError(u"write"_s, m_path, EFBIG); // the next read would take it for damaged
    }
    m_snapshot.reset();
    replaceFile(m_path, bytes, privateFile);
    m_values = values;
    try {
        m_snapshot = std::make_unique<const Snapshot>(m_path);
    } catch (const FileError&) { // saved all the same: the amounts must not be added twice
    }
}

} // namespace ostrelle
