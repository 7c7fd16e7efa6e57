// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShootSidecar.h"

namespace ostrelle {

QByteArray shootSidecar(const QByteArray& caption, const QByteArray& headline) {
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           "  <rdf:Description rdf:about=\"\"\n"
           "    xmlns:dc=\"http://purl.org/dc/elements/1.1/\"\n"
           "    xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\"\n"
           "    xmlns:Iptc4xmpCore=\"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/\"\n"
           "    photoshop:DateCreated=\"2026-10-24T13:12:40-05:00\">\n"
           "   <photoshop:City>Norwick</photoshop:City>\n"
           "   <photoshop:State>Ala.</photoshop:State>\n"
           "   <photoshop:Country>USA</photoshop:Country>\n"
           "   <photoshop:Headline>" +
           headline +
           "</photoshop:Headline>\n"
           "   <Iptc4xmpCore:Location>Heron Stadium</Iptc4xmpCore:Location>\n"
           "   <dc:creator><rdf:Seq><rdf:li>A. Photographer</rdf:li></rdf:Seq></dc:creator>\n"
           "   <dc:rights><rdf:Alt>"
           "<rdf:li xml:lang=\"x-default\">(A. Photographer/Demo Wire)</rdf:li></rdf:Alt></dc:rights>\n"
           "   <dc:subject><rdf:Bag><rdf:li>football</rdf:li>"
           "<rdf:li>high school</rdf:li></rdf:Bag></dc:subject>\n"
           "   <dc:description><rdf:Alt><rdf:li xml:lang=\"x-default\">" +
           caption +
           "</rdf:li></rdf:Alt></dc:description>\n"
           "  </rdf:Description>\n"
           " </rdf:RDF>\n"
           "</x:xmpmeta>\n"
           "<?xpacket end=\"w\"?>";
}

} // namespace ostrelle
