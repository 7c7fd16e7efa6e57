// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/FTPListing.h"

#include "transfer/ftp/FTPError.h"

#include <QStringBuilder>
#include <QStringDecoder>
#include <QStringView>
#include <QUrl>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr bool isLineEnd(QChar character) {
    const char16_t code = character.unicode();
    return (code >= u'\n' && code <= u'\r') || code == u'\u0085' || code == u'\u2028' || code == u'\u2029';
}

/// Takes a line apart at its blanks without keeping all parts: a hostile one has millions.
class LineParts {
public:
    explicit LineParts(QStringView line) : m_rest(line) {}

    /// Empty after the last.
    QStringView next() {
        m_rest = m_rest.trimmed();
        qsizetype end = 0;
        while (end < m_rest.size() && !m_rest[end].isSpace()) {
            ++end;
        }
        const QStringView part = m_rest.first(end);
        m_rest = m_rest.sliced(end);
        return part;
    }
    /// The parts not taken yet, joined by single blanks.
    QString rest() const { return m_rest.toString().simplified(); }

private:
    QStringView m_rest;
};

std::optional<qint64> integer(QStringView part) {
    bool isNumber = false;
    const qint64 number = part.toLongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

bool isName(const QString& text) {
    return !text.isEmpty() && text != u"."_s && text != u".."_s;
}

/// Nothing unless the line has the nine columns of `ls -l`.
std::optional<FTPFileInfo> unixEntry(QStringView line) {
    LineParts parts(line);
    FTPFileInfo entry;
    entry.isDirectory = parts.next().startsWith(u'd');
    for (int column = 1; column < 4; ++column) {
        parts.next();
    }
    const std::optional<qint64> size = integer(parts.next());
    for (int column = 5; column < 8; ++column) {
        parts.next();
    }
    entry.size = size.value_or(0);
    entry.name = parts.rest();
    return size && isName(entry.name) ? std::optional(entry) : std::nullopt;
}

bool isMarkedAsDirectory(QStringView line) {
    if (line.contains(u"<DIR>")) {
        return true;
    }
    LineParts parts(line);
    QStringView part = parts.next();
    while (!part.isEmpty() && part != u"DIR") {
        part = parts.next();
    }
    return !part.isEmpty();
}

/// Nothing unless the line has at least four parts, and something after the first number.
std::optional<FTPFileInfo> otherEntry(QStringView line) {
    LineParts parts(line);
    FTPFileInfo entry;
    std::optional<qint64> size;
    qsizetype count = 0;
    QStringView part;
    do {
        part = parts.next();
        size = integer(part);
        ++count;
    } while (!size && !part.isEmpty());
    if (!size) {
        return std::nullopt;
    }
    entry.size = *size;
    entry.name = parts.rest();
    entry.isDirectory = isMarkedAsDirectory(line);
    const qsizetype after = entry.name.isEmpty() ? 0 : entry.name.count(u' ') + 1;
    return count + after >= 4 && isName(entry.name) ? std::optional(entry) : std::nullopt;
}

QString described(const FTPFileInfo& entry) {
    return entry.name % u" (size: " % QString::number(entry.size) % u", isDirectory: " %
           (entry.isDirectory ? u"true)"_s : u"false)"_s);
}

/// A log that no password gets into: it may stand in a listing.
class MaskedLog : public PlainLog {
public:
    MaskedLog(PlainLog& log, const QString& password) : m_log(log), m_mask(password) {}
    void print(const QString& line) override { m_log.print(m_mask.applied(line)); }

private:
    PlainLog& m_log;
    PasswordMask m_mask;
};

/// Logs what became of the line.
std::optional<FTPFileInfo> entryOf(QStringView line, PlainLog& log) {
    log.print(u"[FTPClient] Parsing line: "_s + line.toString());
    if (const std::optional<FTPFileInfo> entry = unixEntry(line)) {
        log.print(u"[FTPClient] Found file: "_s + described(*entry));
        return entry;
    }
    const std::optional<FTPFileInfo> entry = otherEntry(line);
    log.print(entry ? u"[FTPClient] Found file (alt format): "_s + described(*entry)
                    : u"[FTPClient] Could not parse line: "_s + line.toString());
    return entry;
}

} // namespace

QList<FTPFileInfo> parseListing(const QByteArray& bytes, const QString& password, PlainLog& plainLog) {
    MaskedLog log(plainLog, password);
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        throw FTPError(FTPError::Case::invalidListing, u"The server lists names that are not UTF-8."_s);
    }
    log.print(u"[FTPClient] Raw directory listing:\n"_s + text);
    QList<FTPFileInfo> entries;
    for (qsizetype begin = 0; begin < text.size();) {
        qsizetype end = begin;
        while (end < text.size() && !isLineEnd(text[end])) {
            ++end;
        }
        const QStringView line = QStringView(text).sliced(begin, end - begin).trimmed();
        begin = end + 1;
        if (line.isEmpty()) {
            continue;
        }
        if (const std::optional<FTPFileInfo> entry = entryOf(line, log)) {
            entries.append(*entry);
        }
    }
    log.print(u"[FTPClient] Parsed %1 files total"_s.arg(entries.size()));
    return entries;
}

PasswordMask::PasswordMask(const QString& password)
    : m_password(password), m_encoded(QString::fromLatin1(QUrl::toPercentEncoding(password))) {}

QString PasswordMask::applied(QString text) const {
    if (m_password.isEmpty()) {
        return text;
    }
    const QString mask = u"***"_s;
    return text.replace(m_password, mask).replace(m_encoded, mask);
}

} // namespace ostrelle
