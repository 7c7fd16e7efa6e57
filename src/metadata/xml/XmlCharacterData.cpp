// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmlCharacterData.h"

namespace ostrelle {

namespace {

class CharacterDataSearch {
public:
    CharacterDataSearch(QByteArrayView bytes, XmlSpan range, XmlEncoding encoding)
        : m_bytes(bytes), m_encoding(encoding), m_at(range.begin), m_end(range.end) {}

    QList<XmlSpan> run() {
        beginRun();
        while (m_at < m_end) {
            if (isAt(u"<![CDATA[")) {
                skip(u"<![CDATA[");
                readUpTo(u"]]>");
            } else if (isAt(u"<!--")) {
                skipMarkup(u"-->");
            } else if (isAt(u"<?")) {
                skipMarkup(u"?>");
            } else {
                readUnit();
            }
        }
        endRun();
        return m_found;
    }

private:
    bool isAt(QStringView text) const {
        const qsizetype step = unitSize(m_encoding);
        if (m_at + text.size() * step > m_end) {
            return false;
        }
        for (qsizetype index = 0; index < text.size(); ++index) {
            if (unitAt(m_bytes, m_at + index * step, m_encoding) != text[index]) {
                return false;
            }
        }
        return true;
    }

    void skip(QStringView text) { m_at += text.size() * unitSize(m_encoding); }

    void readUnit() {
        m_isBlank = m_isBlank && isXmlBlank(unitAt(m_bytes, m_at, m_encoding));
        m_at += unitSize(m_encoding);
    }

    void readUpTo(QStringView end) {
        while (m_at < m_end && !isAt(end)) {
            readUnit();
        }
        skip(end);
    }

    void skipMarkup(QStringView end) {
        endRun();
        while (m_at < m_end && !isAt(end)) {
            m_at += unitSize(m_encoding);
        }
        skip(end);
        beginRun();
    }

    void beginRun() {
        m_runBegin = m_at;
        m_isBlank = true;
    }

    void endRun() {
        if (!m_isBlank) {
            m_found.append({m_runBegin, m_at});
        }
    }

    QByteArrayView m_bytes;
    XmlEncoding m_encoding;
    qsizetype m_at;
    qsizetype m_end;
    qsizetype m_runBegin = 0;
    bool m_isBlank = true;
    QList<XmlSpan> m_found;
};

} // namespace

QList<XmlSpan> characterDataIn(QByteArrayView bytes, XmlSpan range, XmlEncoding encoding) {
    return CharacterDataSearch(bytes, range, encoding).run();
}

} // namespace ostrelle
