// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlDocument.h"

#include <expat.h>

#include <QHash>
#include <memory>

namespace ostrelle {

/// Fills an XmlDocument from the events of expat.
class XmlParser {
public:
    explicit XmlParser(XmlDocument& document);

    /// Throws XmlError.
    void run();

private:
    struct ParserDeleter {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    void handleDeclaration(const char* encoding, int standalone);
    void handleStart(const char* expandedName, const char** attributes);
    void handleEnd();
    void handleText(const char* utf8, int size);
    /// Stops parsing with an error message of ours.
    void refuse(const QString& reason);

    XmlSpan currentSpan() const;
    bool lacksRoot() const;
    void addNamespaces(const char** attributes);
    quint32 nameIndex(QByteArrayView expandedName);
    QString failure() const;
    void settleEncoding(QByteArrayView declared);

    XmlDocument& m_document;
    std::unique_ptr<XML_ParserStruct, ParserDeleter> m_parser;
    QHash<QByteArray, quint32> m_nameIndices;
    QHash<QByteArray, quint32> m_namespaceIndices;
    std::vector<quint32> m_open;      ///< the elements around the current position
    std::vector<quint32> m_lastChild; ///< the latest child of each of them
    QString m_refusal;
};

} // namespace ostrelle
