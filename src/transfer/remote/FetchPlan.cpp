// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FetchPlan.h"

#include "platform/PrintInTurns.h"

#include <QFileInfo>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QStringList namesOf(const ServerFiles& files) {
    QStringList names;
    names.reserve(files.metadata.size() + files.images.size());
    for (const QList<FTPFileInfo>& list : {files.metadata, files.images}) {
        for (const FTPFileInfo& file : list) {
            names.append(file.name);
        }
    }
    return names;
}

QString stemOf(const QString& name) {
    return QFileInfo(name).completeBaseName();
}

/// Files that have failed before must not hold up the others.
QList<FTPFileInfo> failedLast(const QList<FTPFileInfo>& files, const FetchLedger& ledger) {
    QList<FTPFileInfo> fresh;
    QList<FTPFileInfo> failed;
    for (const FTPFileInfo& file : files) {
        (ledger.hasFailed(file) ? failed : fresh).append(file);
    }
    return fresh + failed;
}

} // namespace

void leaveForSidecars(const QList<FTPFileInfo>& sidecars, const FetchLedger& ledger,
                      QList<FTPFileInfo>* images) {
    QSet<QString> late;
    for (const FTPFileInfo& sidecar : sidecars) {
        if (ledger.isWorthWaitingFor(sidecar)) {
            late.insert(stemOf(sidecar.name));
        }
    }
    images->removeIf([&late](const FTPFileInfo& image) { return late.contains(stemOf(image.name)); });
}

QCoro::Task<FetchPlan> FetchPlanning::execute(ServerFiles files) {
    co_await m_parts.manifest.refresh(); // other programs may have captioned
    m_copies = co_await m_parts.destination.copiesOf(namesOf(files));
    LoopTurn turn;
    for (const FTPFileInfo& file : std::as_const(files.images)) {
        decideOnImage(file);
        if (turn.isLong()) {
            co_await turn.giveWay();
        }
    }
    for (const FTPFileInfo& file : std::as_const(files.metadata)) {
        decideOnMetadata(file);
        if (turn.isLong()) {
            co_await turn.giveWay();
        }
    }
    co_await printInTurns(m_parts.log, m_metadataLines + m_imageLines);
    if (isPoll()) {
        leaveForSidecars(files.metadata, m_parts.ledger, &m_plan.images);
    }
    m_plan.metadata = failedLast(m_plan.metadata, m_parts.ledger);
    m_plan.images = failedLast(m_plan.images, m_parts.ledger);
    co_return m_plan;
}

void FetchPlanning::decideOnImage(const FTPFileInfo& file) {
    const LocalCopy copy = m_copies.value(file.name);
    const IsCaptioned isCaptioned = m_parts.isCaptioned();
    const FetchDecision decision = isPoll() ? ostrelle::decideOnImage(file, copy, isCaptioned, Look::first)
                                            : decideBySize(file, copy, Look::first);
    m_imageLines += decision.lines;
    take(file, decision, &m_plan.images);
    // What was fetched by this program may have another size now that it holds its caption.
    if (decision.isCaptioned && copy.size != file.size &&
        !m_parts.ledger.isHandedOn(m_parts.destination.pathOf(file.name))) {
        m_plan.leftAlone.append(file.name);
    }
    if (!decision.isFetched && isCaptioned(file.name)) {
        m_captioned.insert(stemOf(file.name));
    }
}

void FetchPlanning::decideOnMetadata(const FTPFileInfo& file) {
    const LocalCopy copy = m_copies.value(file.name);
    const FetchDecision decision =
        isPoll() ? ostrelle::decideOnMetadata(file, copy, m_parts.isCaptioned())
                 : decideOnMetadataOf(m_captioned.contains(stemOf(file.name)), file, copy);
    m_metadataLines += decision.lines;
    take(file, decision, &m_plan.metadata);
}

void FetchPlanning::take(const FTPFileInfo& file, const FetchDecision& decision, QList<FTPFileInfo>* list) {
    if (!decision.isFetched || (isPoll() && m_parts.ledger.isSetAside(file))) {
        return;
    }
    if (file.size >= 1) {
        list->append(file);
    } else if (!isPoll()) { // it may only just have been begun, which a later poll would see
        m_parts.listener.ended(
            {.path = m_parts.destination.pathOf(file.name), .failure = u"It is empty on the server."_s});
    }
}

} // namespace ostrelle
