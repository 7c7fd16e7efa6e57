// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

namespace ostrelle {

/// Amounts of one period, such as a day: where the store holds another period under the key, they start from
/// nothing, and it holds this one from then on.
struct PeriodAmounts {
    QString periodKey;
    QVariant period; ///< invalid: there are no amounts
    QVariantMap amounts;
};

/// The sum of two qint64 or two doubles; the amount alone where the value is no such number. A sum that does
/// not fit is the largest number that does.
QVariant addedTo(const QVariant& value, const QVariant& amount);

/// A persistent table of typed values under text keys. The types are bool, qint64, double, QString,
/// QByteArray, QDateTime and QVariantList of these; a value comes back as the type that it was set with.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;

    /// The value under the key, or an invalid variant.
    virtual QVariant value(const QString& key) const = 0;
    /// The value is there for the next read at once, and saved soon. A failure to save is logged; the value
    /// then lasts until the program ends.
    virtual void set(const QString& key, const QVariant& value) = 0;
    virtual void remove(const QString& key) = 0;
    /// Stores several values that belong together, in one go where the store can.
    virtual void setAll(const QVariantMap& values) {
        for (auto value = values.begin(); value != values.end(); ++value) {
            set(value.key(), *value);
        }
    }

    /// Adds to qint64 and double values. Where several processes share the store, it adds to what is stored
    /// by the time it saves, so that no count gets lost.
    void add(const QVariantMap& amounts) { addAll(amounts, {}); }
    virtual void addAll(const QVariantMap& amounts, const PeriodAmounts& ofPeriod);

    /// Resumes when the saves under way that concern the key have ended: whether what was last set or removed
    /// under it is known to have been saved.
    virtual QCoro::Task<bool> saved(QString /*key*/) const { co_return true; }
    /// Resumes when no save is under way.
    virtual QCoro::Task<> finished() const { co_return; }
    /// False while a change is being saved, and after one that could not be saved.
    virtual bool isAllSaved() const { return true; }
    /// Tries once more to save what could not be saved.
    virtual void saveAgain() {}

    bool exists(const QString& key) const { return value(key).isValid(); }

    /// The value under the key if it is of just this type: the text "21" is no integer.
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
