// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <exception>
#include <optional>

namespace ostrelle {

/// Notices when the model service refuses one image after the other, for a key that it no longer takes or a
/// quota that is spent, so that the photographer is notified once and not for each image.
class ServiceRefusals {
public:
    /// What is wrong with the service.
    struct Cause {
        QString words;            ///< a sentence
        bool isRateLimit = false; ///< or a spent quota, in place of a key that is refused
    };

    /// So many images in a row that are refused call for a notification.
    static constexpr int patience = 3;

    /// An image was answered: whatever was wrong is over.
    void succeeded();
    /// An image failed. The cause if it is the service's refusal and enough images in a row have met it;
    /// a new `key`, the API key, starts the count anew.
    std::optional<Cause> failed(const QString& name, const std::exception_ptr& failure, const QString& key);
    /// True once for each time that a cause begins to hold, after failed() has given it.
    bool takeIsNew();
    /// The images that were refused in a row so far.
    const QStringList& names() const { return m_names; }

private:
    QString m_key;
    QStringList m_names;
    int m_inARow = 0; ///< one image may be refused again and again
    bool m_isTold = false;
};

} // namespace ostrelle
