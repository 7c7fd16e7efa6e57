// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ContactSheet.h"

#include "core/Text.h"

#include <QFileInfo>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const char* const head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'">
<style>
:root { color-scheme: light dark; --line: #8885; --look: #b45309; --mark: #fde68a; }
@media (prefers-color-scheme: dark) { :root { --look: #fbbf24; --mark: #78350f; } }
body { font: 15px/1.45 system-ui, sans-serif; margin: 2rem auto; max-width: 76rem; padding: 0 1rem; }
h1 { font-size: 1.4rem; margin: 0; }
p.totals { margin: .25rem 0 1.5rem; opacity: .75; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(19rem, 1fr)); gap: 1.25rem; }
figure { margin: 0; border: 1px solid var(--line); border-radius: .5rem; overflow: hidden; break-inside: avoid; }
figure.look { border-color: var(--look); }
.picture { background: #8882; height: 14rem; display: flex; align-items: center; justify-content: center; }
.picture img { max-width: 100%; max-height: 100%; }
figcaption { padding: .75rem 1rem; overflow-wrap: anywhere; }
.name { font-weight: 600; font-size: .85rem; }
.caption { margin: .35rem 0; white-space: pre-line; }
ul { margin: .35rem 0 0; padding-left: 1.1rem; color: var(--look); font-size: .9rem; }
mark { background: var(--mark); color: inherit; }
.none { opacity: .6; font-style: italic; }
.picture .none { padding: 1rem; font-size: .9rem; }
@media print {
  body { margin: 0; max-width: none; font-size: 9pt; }
  main { grid-template-columns: repeat(3, 1fr); gap: .6rem; }
  .picture { height: 9.5rem; print-color-adjust: exact; }
}
</style>
)";

/// The caption with the words in question marked.
QString markedUp(const CheckedFile& file) {
    QList<std::pair<qsizetype, qsizetype>> spans;
    for (const Finding& finding : file.findings) {
        const bool isPart = finding.to > finding.from && finding.kind != FindingKind::sameAsAnother;
        const bool isFree = spans.isEmpty() || finding.from >= spans.constLast().second;
        if (isPart && isFree) {
            spans.append({finding.from, finding.to});
        }
    }
    QString html;
    qsizetype at = 0;
    for (const auto& [from, to] : spans) {
        html += file.caption.sliced(at, from - at).toHtmlEscaped() + u"<mark>"_s +
                file.caption.sliced(from, to - from).toHtmlEscaped() + u"</mark>"_s;
        at = to;
    }
    return html + file.caption.sliced(at).toHtmlEscaped();
}

QString figure(const SheetPicture& picture) {
    const CheckedFile& file = picture.checked;
    const QString name = QFileInfo(file.file).fileName().toHtmlEscaped();
    const bool isToLookAt = !file.findings.isEmpty() || !file.error.isEmpty();
    QString html = isToLookAt ? u"<figure class=\"look\">"_s : u"<figure>"_s;
    html += u"<div class=\"picture\">"_s;
    html += picture.jpeg.isEmpty()
                ? u"<span class=\"none\">%1</span>"_s.arg(picture.note.toHtmlEscaped())
                : u"<img loading=\"lazy\" alt=\"%1\" src=\"data:image/jpeg;base64,%2\">"_s.arg(
                      name, QString::fromLatin1(picture.jpeg.toBase64()));
    html += u"</div>\n<figcaption><div class=\"name\">%1</div>"_s.arg(name);
    html += file.caption.trimmed().isEmpty() ? u"<div class=\"caption none\">No caption</div>"_s
                                             : u"<div class=\"caption\">%1</div>"_s.arg(markedUp(file));
    QStringList points;
    if (!file.error.isEmpty()) {
        points.append(file.error);
    }
    for (const Finding& finding : file.findings) {
        if (finding.kind != FindingKind::empty) { // which is told above
            points.append(finding.text);
        }
    }
    if (!points.isEmpty()) {
        html += u"<ul>"_s;
        for (const QString& point : std::as_const(points)) {
            html += u"<li>%1</li>"_s.arg(point.toHtmlEscaped());
        }
        html += u"</ul>"_s;
    }
    return html + u"</figcaption></figure>\n"_s;
}

QString totals(const QList<SheetPicture>& pictures) {
    const auto count = [&pictures](auto is) { return std::count_if(pictures.begin(), pictures.end(), is); };
    const auto toLookAt =
        count([](const SheetPicture& picture) { return !picture.checked.findings.isEmpty(); });
    const auto unread = count([](const SheetPicture& picture) { return !picture.checked.error.isEmpty(); });
    QString words = u"%1 picture%2, %3 to look at"_s.arg(QString::number(pictures.size()),
                                                         plural(pictures.size()), QString::number(toLookAt));
    return unread == 0 ? words : words + u", %1 could not be read"_s.arg(unread);
}

} // namespace

QByteArray contactSheet(const QString& title, const QList<SheetPicture>& pictures) {
    QByteArray html = head;
    const QString name = title.toHtmlEscaped();
    html += u"<title>%1</title>\n</head>\n<body>\n<h1>%1</h1>\n<p class=\"totals\">%2</p>\n<main>\n"_s
                .arg(name, totals(pictures))
                .toUtf8();
    for (const SheetPicture& picture : pictures) {
        html += figure(picture).toUtf8();
    }
    return html + "</main>\n</body>\n</html>\n";
}

} // namespace ostrelle
