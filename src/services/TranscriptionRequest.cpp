// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/TranscriptionRequest.h"

#include "platform/Files.h"
#include "services/JsonFields.h"
#include "services/WireText.h"

#include <QFileInfo>
#include <QUuid>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// What follows the last dot; the only dot of a hidden file starts its name.
QString extensionOf(const QString& fileName) {
    const qsizetype dot = fileName.lastIndexOf(u'.');
    return dot > 0 ? fileName.sliced(dot + 1) : QString();
}

} // namespace

QByteArray newBoundary() {
    return "Boundary-" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
}

QByteArray transcriptionForm(const QByteArray& audio, const QString& fileName, const QByteArray& boundary) {
    // The service accepts raw quotation marks, but a line break would start another header.
    const QString name = onOneLine(fileName);
    const QByteArray head = "--" + boundary +
                            "\r\n"
                            "Content-Disposition: form-data; name=\"file\"; filename=\"" +
                            name.toUtf8() +
                            "\"\r\n"
                            "Content-Type: audio/" +
                            extensionOf(name).toUtf8() + "\r\n\r\n";
    const QByteArray tail = "\r\n--" + boundary +
                            "\r\n"
                            "Content-Disposition: form-data; name=\"model\"\r\n\r\n"
                            "whisper-1\r\n"
                            "--" +
                            boundary + "--\r\n";
    QByteArray form;
    form.reserve(head.size() + audio.size() + tail.size());
    return form.append(head).append(audio).append(tail);
}

TranscriptionBody readTranscriptionBody(const QString& file, const QByteArray& boundary) {
    const QByteArray audio = readFile(file, largestAudioFile);
    return {.bytes = transcriptionForm(audio, QFileInfo(file).fileName(), boundary),
            .audioSize = audio.size()};
}

QString decodeTranscription(const QByteArray& json) {
    return JsonFields::parse(json).text(u"text"_s);
}

} // namespace ostrelle
