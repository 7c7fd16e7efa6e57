// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/ServerFiles.h"

#include "metadata/facts/ImageKind.h"

#include <QSet>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Nothing against the name if empty.
QString reasonAgainst(const QString& name) {
    constexpr qsizetype longestName = 255; // bytes, on every Linux file system
    const bool hasControls = std::any_of(name.begin(), name.end(), [](QChar character) {
        return character.category() == QChar::Other_Control;
    });
    if (hasControls) {
        return u"Its name has control characters."_s;
    }
    if (name.contains(u'/') || name.contains(u'\\')) {
        return u"Its name holds a path."_s;
    }
    if (name.startsWith(u'.')) {
        return u"Its name is hidden."_s;
    }
    if (name.toUtf8().size() > longestName) {
        return u"Its name is too long."_s;
    }
    return {};
}

QString keyOf(const QString& name, NameRules rules) {
    return rules == NameRules::exact ? name : name.toCaseFolded().normalized(QString::NormalizationForm_C);
}

} // namespace

ServerFiles sortListing(const QList<FTPFileInfo>& listing, NameRules rules) {
    ServerFiles files;
    QSet<QString> names;
    names.reserve(listing.size());
    for (const FTPFileInfo& entry : listing) {
        if (entry.isDirectory) {
            continue;
        }
        const QString extension = extensionOf(entry.name);
        const bool isMetadata = extension == u"xmp";
        if (!isMetadata && !imageExtensions().contains(extension)) {
            files.skipped.append(u"%1 (ext: %2)"_s.arg(entry.name, extension));
            continue;
        }
        const QString reason = reasonAgainst(entry.name);
        if (!reason.isEmpty()) {
            files.refused.append({entry.name, reason});
        } else if (const QString key = keyOf(entry.name, rules); names.contains(key)) {
            files.refused.append({entry.name, u"Another file of this name comes before it."_s});
        } else {
            names.insert(key);
            (isMetadata ? files.metadata : files.images).append(entry);
        }
    }
    return files;
}

} // namespace ostrelle
