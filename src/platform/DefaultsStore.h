// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

namespace ostrelle {

/// Amounts of one period, such as a day. If the store holds another period under the key, the amounts start
/// from zero and this period replaces it.
struct PeriodAmounts {
    QString periodKey;
    QVariant period; ///< invalid: no amounts
    QVariantMap amounts;
};

/// The sum of two qint64 or two doubles, or just the amount when the value is not such a number. A sum that
/// overflows becomes the largest number that fits.
QVariant addedTo(const QVariant& value, const QVariant& amount);

/// A persistent table of typed values under text keys. The types are bool, qint64, double, QString,
/// QByteArray, QDateTime and QVariantList of these; a value comes back with the type it was set with.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;

    /// The value under the key, or an invalid variant.
    virtual QVariant value(const QString& key) const = 0;
    /// The next read returns the value at once; it is saved soon after. A failed save is logged, and the
    /// value then lasts until the program ends.
    virtual void set(const QString& key, const QVariant& value) = 0;
    virtual void remove(const QString& key) = 0;
    /// Stores values that belong together, in one save where the store can.
    virtual void setAll(const QVariantMap& values) {
        for (auto value = values.begin(); value != values.end(); ++value) {
            set(value.key(), *value);
        }
    }

    /// Adds to qint64 and double values. Where several processes share the store, it adds to the value stored
    /// at the time of the save, so no count gets lost.
    void add(const QVariantMap& amounts) { addAll(amounts, {}); }
    virtual void addAll(const QVariantMap& amounts, const PeriodAmounts& ofPeriod);

    /// Resumes when the running saves that concern the key have ended. True when the last change to it is
    /// known to be saved.
    virtual QCoro::Task<bool> saved(QString /*key*/) const { co_return true; }
    /// Resumes when no save is under way.
    virtual QCoro::Task<> finished() const { co_return; }
    /// False while a change is being saved, and after one that could not be saved.
    virtual bool isAllSaved() const { return true; }
    /// Retries what could not be saved.
    virtual void saveAgain() {}

    bool exists(const QString& key) const { return value(key).isValid(); }

    /// The value under the key if it has exactly this type: the text "21" is not an integer.
    template <typename T>
    std::optional<T> get(const QString& key) const {
        const QVariant found = value(key);
        if (found.metaType() != QMetaType::fromType<T>()) {
            return std::nullopt;
        }
        return found.value<T>();
    }
};

} // namespace ostrelle
