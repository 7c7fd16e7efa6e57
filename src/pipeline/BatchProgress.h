// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/StatusStore.h"

#include <QString>

namespace ostrelle {

/// What the status says while a batch is captioned. Images are counted from 0 in the whole run.
class BatchProgress {
public:
    /// Whether an image is told of in one line of a run's many, or by itself.
    enum class Telling { inBatch, byItself };

    /// The status has to outlive the object.
    BatchProgress(StatusStore& status, qint64 startIndex) : m_status(status), m_startIndex(startIndex) {}

    void preparing(qsizetype imageCount);
    void uploading(qsizetype index, const QString& name);
    void asking(qsizetype imageCount);
    void writing();
    /// The image is in hand.
    void working(qsizetype index, const QString& name);
    void noLongerAsking() { m_status.setIsWaitingForAPI(false); }

    void succeeded(const QString& name, Telling telling);
    void failed(const QString& name, Telling telling);

private:
    QString doneOfTotal() const;

    StatusStore& m_status;
    qint64 m_startIndex;
};

} // namespace ostrelle
