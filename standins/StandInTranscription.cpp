// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/StandInTranscription.h"

#include "standins/ApiFault.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>
#include <QtEndian>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QByteArray noteChunk = "note";

QString extensionOf(const QString& fileName) {
    const QString afterDot = fileName.section(u'.', -1);
    return fileName.lastIndexOf(u'.') > 0 ? afterDot : QString();
}

QByteArray boundaryOf(const HttpRequest& request) {
    static const QRegularExpression form(
        u"^multipart/form-data; boundary=(Boundary-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12})$"_s);
    const auto match = form.match(QString::fromLatin1(request.header("Content-Type")));
    if (!match.hasMatch()) {
        throw ApiFault(400, u"Unsupported content type."_s);
    }
    return match.captured(1).toLatin1();
}

/// The form, line by line, without the file's content.
QByteArray formHead(const QByteArray& boundary, const QByteArray& name, const QByteArray& extension) {
    return QByteArray("--%1\r\n"
                      "Content-Disposition: form-data; name=\"file\"; filename=\"%2\"\r\n"
                      "Content-Type: audio/%3\r\n"
                      "\r\n")
        .replace("%3", extension)
        .replace("%1", boundary)
        .replace("%2", name);
}

QByteArray formTail(const QByteArray& boundary) {
    return QByteArray("\r\n"
                      "--%1\r\n"
                      "Content-Disposition: form-data; name=\"model\"\r\n"
                      "\r\n"
                      "whisper-1\r\n"
                      "--%1--\r\n")
        .replace("%1", boundary);
}

CheckedTranscription parseForm(const QByteArray& body, const QByteArray& boundary) {
    const QByteArray lead = "; filename=\"";
    const qsizetype start = body.indexOf(lead) + lead.size();
    const QByteArray name = body.mid(start, body.indexOf("\"\r\n", start) - start);
    const QString fileName = QString::fromUtf8(name);
    const QByteArray head = formHead(boundary, name, extensionOf(fileName).toUtf8());
    const QByteArray tail = formTail(boundary);
    const QByteArray audio = body.mid(head.size(), body.size() - head.size() - tail.size());
    if (body != head + audio + tail) {
        throw ApiFault(400, u"We could not parse the form of your request."_s);
    }
    return {.fileName = fileName, .audio = audio};
}

void checkFormat(const CheckedTranscription& transcription) {
    static const QStringList formats{u"flac"_s, u"m4a"_s, u"mp3"_s, u"mp4"_s, u"mpeg"_s,
                                     u"mpga"_s, u"oga"_s, u"ogg"_s, u"wav"_s, u"webm"_s};
    const QString format = extensionOf(transcription.fileName).toLower();
    if (!formats.contains(format)) {
        throw ApiFault(400, u"Invalid file format. Supported formats: ['"_s + formats.join(u"', '") + u"']"_s,
                       u"file"_s);
    }
    const QByteArray& audio = transcription.audio;
    if (audio.isEmpty() || (format == u"wav" && (!audio.startsWith("RIFF") || audio.mid(8, 4) != "WAVE"))) {
        throw ApiFault(400, u"The audio file could not be decoded or its format is not supported."_s,
                       u"file"_s);
    }
}

QByteArray littleEndian(qsizetype number) {
    QByteArray bytes(4, '\0');
    qToLittleEndian(static_cast<quint32>(number), bytes.data());
    return bytes;
}

} // namespace

CheckedTranscription checkTranscriptionRequest(const HttpRequest& request) {
    constexpr qsizetype largestUpload = 26'214'400;
    const QByteArray boundary = boundaryOf(request);
    if (request.body.size() > largestUpload) {
        throw ApiFault(413, u"Maximum content size limit (%1) exceeded."_s.arg(largestUpload));
    }
    CheckedTranscription transcription = parseForm(request.body, boundary);
    checkFormat(transcription);
    return transcription;
}

QByteArray standInTranscription(const CheckedTranscription& transcription) {
    constexpr qsizetype headSize = 20; // of the file and of its only chunk
    const bool hasWords = transcription.audio.mid(12, 4) == noteChunk;
    const QString text = hasWords ? QString::fromUtf8(transcription.audio.mid(headSize))
                                  : u"Voice note "_s + transcription.fileName;
    return QJsonDocument(QJsonObject{{u"text"_s, text}}).toJson(QJsonDocument::Compact);
}

QByteArray voiceNote(const QString& words) {
    const QByteArray text = words.toUtf8();
    const QByteArray chunk = noteChunk + littleEndian(text.size()) + text;
    return "RIFF" + littleEndian(chunk.size() + 4) + "WAVE" + chunk;
}

} // namespace ostrelle
