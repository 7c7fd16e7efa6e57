// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <vector>

namespace ostrelle {

/// One data set of IPTC's Information Interchange Model.
struct IptcDataSet {
    quint8 record = 0;
    quint8 number = 0;
    QByteArray value;
    QByteArray raw; ///< with its header, as in the file

    bool is(quint8 wantedRecord, quint8 wantedNumber) const {
        return record == wantedRecord && number == wantedNumber;
    }
    /// True for the data set that names the encoding.
    bool isCharset() const { return is(1, 90); }
    /// True for a text of the application record.
    bool isText() const;
};

/// A block of IPTC data sets, in the file's order.
class IptcRecords {
public:
    static constexpr quint8 applicationRecord = 2;
    static constexpr quint8 captionNumber = 120;

    /// Reads up to the first bytes that are not a data set, and keeps the rest.
    static IptcRecords parse(QByteArrayView bytes);
    QByteArray bytes() const;

    const std::vector<IptcDataSet>& dataSets() const { return m_dataSets; }
    /// The value as text, in the encoding declared by the block.
    QString text(const IptcDataSet& dataSet) const;
    bool hasCaption() const;

    /// Sets the caption, leaving just one. Everything else keeps its bytes unless the caption needs another
    /// encoding: then the block becomes UTF-8, declared as such, and its other texts are converted. Throws
    /// EditRefusal.
    void setCaption(const QString& caption);

    /// Converts the block to UTF-8, as above, if it has non-ASCII text in another encoding.
    void becomeUtf8();

private:
    enum class Charset { undeclared, utf8, latin1, unknown };

    Charset charset() const;
    bool hasForeignText() const;
    void declareUtf8();
    void insert(IptcDataSet dataSet);

    std::vector<IptcDataSet> m_dataSets;
    QByteArray m_rest;
};

} // namespace ostrelle
