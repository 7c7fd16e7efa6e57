// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FetchReport.h"

#include "cli/ReportPrinter.h"
#include "core/Text.h"

#include <QFileInfo>
#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

FetchReport::FetchReport(CommandProgram& program)
    : m_program(program), m_bar(stderr, !program.options.verbose) {
    const ServerSource& server = program.captions.server;
    connect(&server, &ServerSource::fetchBegan, this, &FetchReport::begin);
    connect(&server, &ServerSource::fetchEnded, this, &FetchReport::tell);
    connect(&server, &ServerSource::transferEnded, this, &FetchReport::tellOfTrouble);
    const StatusStore& status = program.captions.status;
    connect(&status, &StatusStore::ftpBytesDownloadedChanged, this, &FetchReport::showProgress);
    connect(&status, &StatusStore::ftpRemarksChanged, this, &FetchReport::tellOfRemarks);
}

void FetchReport::begin(const QString& name) {
    m_name = name;
    m_bytesBefore = m_program.captions.status.ftpBytesDownloaded();
    m_clock.start();
    showProgress();
}

void FetchReport::showProgress() {
    const StatusStore& status = m_program.captions.status;
    if (m_name.isEmpty()) {
        return;
    }
    const qint64 bytes = status.ftpBytesDownloaded();
    const qint64 rate = (bytes - m_bytesBefore) * 1000 / std::max<qint64>(m_clock.elapsed(), 1);
    m_bar.show(status.ftpDownloadProgress(),
               u"%1  %2 of %3  %4/s"_s.arg(m_name, dataSize(bytes),
                                           dataSize(status.ftpTotalBytesToDownload()), dataSize(rate)));
}

void FetchReport::tell(const FetchedFile& file) {
    if (m_name == QFileInfo(file.path).fileName()) { // the next one may be coming already
        m_name.clear();
    }
    m_bar.clear();
    file.failure.isEmpty() ? void(m_failed.remove(file.path)) : void(m_failed.insert(file.path));
    m_program.output.print(m_program.options.json ? fetchJson(file) : fetchLine(file));
    showProgress();
}

/// A server that cannot be reached is tried again every ten seconds, but the user reads it once.
void FetchReport::tellOfTrouble(const QString& failure) {
    m_name.clear();
    m_bar.clear();
    if (!failure.isEmpty() && failure != m_trouble) {
        m_program.errors.print(u"ostrelle-caption: "_s + failure);
    } else if (failure.isEmpty() && !m_trouble.isEmpty()) {
        m_program.errors.print(u"ostrelle-caption: The server can be reached again."_s);
    }
    m_trouble = failure;
}

void FetchReport::tellOfRemarks() {
    const QStringList remarks = m_program.captions.status.ftpRemarks();
    for (const QString& remark : remarks) {
        m_bar.clear();
        m_program.warn(remark);
    }
}

} // namespace ostrelle
