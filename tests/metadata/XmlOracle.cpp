// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XmlOracle.h"

#include <QStringBuilder>
#include <QStringList>
#include <QXmlStreamReader>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView rdf = u"http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr QStringView dc = u"http://purl.org/dc/elements/1.1/";

class Oracle {
public:
    explicit Oracle(const QByteArray& bytes) : m_reader(bytes) {}

    std::optional<OracleReading> run() {
        while (!m_reader.atEnd()) {
            m_reader.readNext();
            if (m_reader.isStartElement()) {
                begin();
            } else if (m_reader.isEndElement()) {
                end();
            } else if (!m_open.empty() && m_reader.isCharacters()) {
                m_reading.foreign += m_reader.text();
            } else if (m_reader.isComment()) {
                m_reading.foreign += u"<!--"_s % m_reader.text() % u"-->"_s;
            } else if (m_reader.isProcessingInstruction()) {
                m_reading.foreign += u"<?"_s % m_reader.processingInstructionTarget() % u' ' %
                                     m_reader.processingInstructionData();
            }
        }
        return m_reader.hasError() ? std::nullopt : std::optional(m_reading);
    }

private:
    struct Open {
        qsizetype begin = 0; ///< in the foreign text
        bool hasRdf = false;
    };

    void begin() {
        const bool isRdf = m_reader.name() == u"RDF";
        if (isRdf && !m_open.empty() && m_open.back().hasRdf) {
            m_reader.skipCurrentElement();
            return;
        }
        if (!m_open.empty()) {
            m_open.back().hasRdf |= isRdf;
        }
        if (m_reader.name() == u"description" && m_reader.namespaceUri() == dc) {
            readCaption();
            return;
        }
        m_open.push_back({m_reading.foreign.size()});
        m_reading.foreign += u'<' % m_reader.qualifiedName() % attributes() % u'>';
    }

    QString attributes() const {
        QStringList all;
        for (const QXmlStreamAttribute& attribute : m_reader.attributes()) {
            const bool isCaption = attribute.name() == u"description" && attribute.namespaceUri() == dc;
            if (attribute.name() != u"about" && !isCaption) {
                all.append(QString(u' ' % attribute.qualifiedName() % u'=' % attribute.value()));
            }
        }
        for (const QXmlStreamNamespaceDeclaration& declared : m_reader.namespaceDeclarations()) {
            if (declared.prefix() != u"rdf" && declared.prefix() != u"dc") {
                all.append(QString(u" xmlns:"_s % declared.prefix() % u'=' % declared.namespaceUri()));
            }
        }
        return all.join(QString());
    }

    void end() {
        const bool isBlock = m_reader.namespaceUri() == rdf &&
                             (m_reader.name() == u"RDF" || m_reader.name() == u"Description");
        const qsizetype begin = m_open.back().begin;
        m_open.pop_back();
        const bool isBare =
            m_reading.foreign.sliced(begin) == QString(u'<' % m_reader.qualifiedName() % u'>');
        if (isBlock && isBare) {
            m_reading.foreign.truncate(begin);
        } else {
            m_reading.foreign += u"</>"_s;
        }
    }

    void readCaption() {
        m_reading.caption.reset();
        for (int depth = 1; depth > 0 && !m_reader.atEnd();) {
            m_reader.readNext();
            const bool isItem = m_reader.isStartElement() && m_reader.name() == u"li" &&
                                m_reader.attributes().value("xml:lang"_L1) == u"x-default";
            if (isItem && !m_reading.caption) {
                m_reading.caption = m_reader.readElementText(QXmlStreamReader::IncludeChildElements);
            } else {
                depth += m_reader.isStartElement() ? 1 : (m_reader.isEndElement() ? -1 : 0);
            }
        }
    }

    QXmlStreamReader m_reader;
    std::vector<Open> m_open;
    OracleReading m_reading;
};

} // namespace

std::optional<OracleReading> readWithOracle(const QByteArray& bytes) {
    return Oracle(bytes).run();
}

} // namespace ostrelle
