// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/BatchProgress.h"

#include "core/Text.h"

#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

void BatchProgress::preparing(qsizetype imageCount) {
    m_status.setLastMessage(
        u"Preparing %1 image%2 for batch processing..."_s.arg(imageCount).arg(plural(imageCount)));
    m_status.setCurrentFileName(std::nullopt);
    m_status.setCurrentFileIndex(std::max(m_startIndex + 1, m_status.currentFileIndex()));
}

void BatchProgress::uploading(qsizetype index, const QString& name) {
    working(index, name);
    m_status.setLastMessage(u"Uploading: "_s + name);
}

void BatchProgress::asking(qsizetype imageCount) {
    m_status.setLastMessage(
        u"Uploaded %1 image%2. Generating captions..."_s.arg(imageCount).arg(plural(imageCount)));
    m_status.setCurrentFileName(std::nullopt);
    m_status.setIsWaitingForAPI(true);
    m_status.setCurrentBatchStartIndex(m_startIndex);
    m_status.setCurrentBatchSize(imageCount);
}

void BatchProgress::writing() {
    m_status.setLastMessage(u"Writing captions to files..."_s);
    m_status.setCurrentFileName(std::nullopt);
    m_status.setIsWaitingForAPI(false);
}

void BatchProgress::working(qsizetype index, const QString& name) {
    m_status.setCurrentFileIndex(m_startIndex + index + 1);
    m_status.setCurrentFileName(name);
}

void BatchProgress::succeeded(const QString& name, Telling telling) {
    m_status.setProcessed(m_status.processed() + 1);
    m_status.setPending(m_status.pending() - 1);
    if (telling == Telling::inBatch) {
        m_status.setCurrentFileName(name);
        m_status.setLastMessage(u"✓ %1 (%2)"_s.arg(name, doneOfTotal()));
    } else {
        m_status.setLastMessage(u"Processed: "_s + name);
    }
    m_status.recordImageProcessed();
}

void BatchProgress::failed(const QString& name, Telling telling) {
    m_status.setFailed(m_status.failed() + 1);
    m_status.setPending(m_status.pending() - 1);
    if (telling == Telling::inBatch) {
        m_status.setCurrentFileName(name);
        m_status.setLastMessage(u"✗ Failed: %1 (%2)"_s.arg(name, doneOfTotal()));
    } else {
        m_status.setLastMessage(u"Failed: "_s + name);
    }
    m_status.recordImageFailed();
}

QString BatchProgress::doneOfTotal() const {
    return u"%1/%2"_s.arg(m_status.processed() + m_status.failed()).arg(m_status.totalFiles());
}

} // namespace ostrelle
