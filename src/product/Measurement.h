// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>

namespace ostrelle {

/// Takes the program's usage events. An implementation drops them unless figures may be sent; see
/// mayReportUsage().
class Measurement {
public:
    virtual ~Measurement() = default;

    /// Whether the program was built with somewhere to send them.
    virtual bool isThere() const = 0;
    /// The parameters are qint64, double or QString; none of them a name, a path or a caption.
    virtual void logEvent(const QString& name, const QVariantMap& parameters) = 0;
    /// Nothing clears the property.
    virtual void setUserProperty(const QString& name, const std::optional<QString>& value) = 0;
};

} // namespace ostrelle
