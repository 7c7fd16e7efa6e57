// SPDX-License-Identifier: GPL-3.0-or-later
// Simulates a photographer's day: drops RAW files, JPEGs, sidecars and audio notes into a folder at random
// for a number of seconds, some of them slowly, and prints a line of JSON for each completed image. With
// --card it fills the folder at once, as the memory card of a camera.
#include "core/Error.h"
#include "standins/DngBuilder.h"
#include "standins/JpegBuilder.h"
#include "standins/RawBuilder.h"
#include "standins/SportsScene.h"
#include "standins/StandInTranscription.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <chrono>
#include <cstdio>
#include <random>
#include <utility>

#include "ShootSidecar.h"

namespace ostrelle {

namespace {

using namespace Qt::StringLiterals;

const QByteArray keptCaption =
    "Sam Abel throws a pass against the Foxes in the first quarter on Saturday in Norwick.";

struct Raw {
    QString extension;
    QByteArray bytes;
};

/// Of a camera that no library knows, so that its preview is shown: most of the file comes after that.
Raw rawOfNewCamera() {
    constexpr qsizetype sensorData = 1'000'000;
    const QByteArray preview = jpegFile(SportsScene(1200, 800, 1).image());
    return {u".NEF"_s, rawFile(RawKind::nef, {.preview = preview, .rawSize = sensorData})};
}

class SoakWriter {
public:
    SoakWriter(QString folder, std::uint32_t seed) : m_folder(std::move(folder)), m_random(seed) {
        for (int scene = 0; scene < scenes; ++scene) {
            const SportsScene painted(900, 600, static_cast<std::uint32_t>(scene));
            m_raws.append({u".DNG"_s, dngFile(painted)});
            m_jpegs.append(jpegFile(painted.image()));
        }
        m_raws.last() = rawOfNewCamera();
    }

    void fillCard(int images) {
        m_slowFiles = 0;
        for (int image = 0; image < images; ++image) {
            dropImage();
        }
    }

    void run(std::chrono::seconds length) {
        QElapsedTimer timer;
        timer.start();
        while (!timer.hasExpired(std::chrono::milliseconds(length).count())) {
            const int burst = chance(5) ? 20 : 1;
            for (int image = 0; image < burst; ++image) {
                dropImage();
            }
            QThread::msleep(static_cast<unsigned long>(between(100, 1500)));
        }
    }

private:
    static constexpr int scenes = 4;

    bool chance(int percent) { return between(1, 100) <= percent; }
    int between(int least, int most) { return std::uniform_int_distribution(least, most)(m_random); }

    void dropImage() {
        const QString stem = u"SOAK_%1"_s.arg(++m_count, 5, 10, QChar(u'0'));
        const QByteArray headline = "Game " + QByteArray::number(m_count).rightJustified(5, '0');
        const bool isJpeg = chance(50);
        const bool isKept = chance(10);
        const bool hasSidecar = isJpeg || isKept || chance(60);
        const QByteArray metadata = shootSidecar(isKept ? keptCaption : QByteArray("Stub"), headline);
        const qsizetype scene = m_count % scenes;
        const Raw& raw = m_raws[scene];
        if (chance(30)) {
            write(stem + u".WAV"_s, voiceNote(u"Note for "_s + stem));
        }
        if (isJpeg) {
            write(stem + u".JPG"_s, jpegWithXmp(m_jpegs[scene], metadata));
        } else {
            if (hasSidecar) {
                write(stem + u".xmp"_s, metadata);
            }
            write(stem + raw.extension,
                  raw.bytes.chopped(stem.size()) + stem.toLatin1()); // no two are the same
        }
        const QJsonObject line{{u"name"_s, stem + (isJpeg ? u".JPG"_s : raw.extension)},
                               {u"headline"_s, hasSidecar ? QString::fromUtf8(headline) : QString()},
                               {u"kept"_s, isKept ? QString::fromUtf8(keptCaption) : QString()}};
        std::puts(QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
        std::fflush(stdout);
    }

    /// Writes straight into the folder, as a camera does: readers see the file grow.
    void write(const QString& name, const QByteArray& bytes) {
        QFile file(m_folder + u'/' + name);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            throw Error(file.errorString());
        }
        const qsizetype pieces = chance(m_slowFiles) ? 4 : 1;
        for (qsizetype piece = 0; piece < pieces; ++piece) {
            const qsizetype begin = bytes.size() * piece / pieces;
            const qsizetype end = bytes.size() * (piece + 1) / pieces;
            if (file.write(bytes.sliced(begin, end - begin)) != end - begin) {
                throw Error(file.errorString());
            }
            if (pieces > 1) {
                QThread::msleep(static_cast<unsigned long>(between(50, 900)));
            }
        }
    }

    QString m_folder;
    std::mt19937 m_random;
    QList<Raw> m_raws;
    QList<QByteArray> m_jpegs;
    int m_count = 0;
    int m_slowFiles = 20; ///< in percent
};

} // namespace

} // namespace ostrelle

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().sliced(1);
    const bool isCard = arguments.removeOne(QStringLiteral("--card"));
    if (arguments.size() != 3) {
        std::fputs("Usage: ostrelle-soak-writer FOLDER SECONDS SEED\n"
                   "       ostrelle-soak-writer --card FOLDER IMAGES SEED\n",
                   stderr);
        return 2;
    }
    try {
        ostrelle::SoakWriter writer(arguments[0], arguments[2].toUInt());
        if (isCard) {
            writer.fillCard(arguments[1].toInt());
        } else {
            writer.run(std::chrono::seconds(arguments[1].toInt()));
        }
    } catch (const ostrelle::Error& error) {
        std::fprintf(stderr, "ostrelle-soak-writer: %s\n", error.what());
        return 1;
    }
    return 0;
}
