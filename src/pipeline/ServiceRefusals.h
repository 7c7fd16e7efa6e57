// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <exception>
#include <optional>

namespace ostrelle {

/// Detects that the model service refuses one image after another, for an invalid key, a spent quota or a
/// rate limit, so that the photographer is notified once and not for each image.
class ServiceRefusals {
public:
    /// What is wrong with the service.
    struct Cause {
        QString words;            ///< a sentence
        bool isRateLimit = false; ///< or a spent quota; otherwise the key is refused
    };

    /// How many refusals in a row are worth a notification.
    static constexpr int patience = 3;

    /// The service answered a request: any trouble is over.
    void succeeded();
    /// An image failed. Returns the cause if the service refused it, after enough refusals in a row; a new
    /// API key restarts the count, other failures do not touch it. `failure` may be null.
    std::optional<Cause> failed(const QString& name, const std::exception_ptr& failure, const QString& key);
    /// True once for each series of refusals. Call it after failed() has returned a cause.
    bool takeIsNew();
    /// The images of the present series of refusals.
    const QStringList& names() const { return m_names; }

private:
    QString m_key;
    QStringList m_names;
    int m_inARow = 0; ///< counts an image again each time it is refused
    bool m_isReported = false;
};

/// What is wrong with the service if this failure tells; `failure` may be null.
std::optional<ServiceRefusals::Cause> serviceRefusal(const std::exception_ptr& failure);

} // namespace ostrelle
