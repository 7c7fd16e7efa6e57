// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageListing.h"

#include "platform/FileError.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArrayList>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class ImageListingTest : public testing::Test {
protected:
    ~ImageListingTest() override {
        for (const QByteArray& name : m_written) { // Qt would not find them all
            ::unlink(native(name).constData());
        }
    }
    QByteArray native(const QByteArray& name) const { return QFile::encodeName(folder.path()) + '/' + name; }
    void write(const QByteArray& name) {
        m_written.append(name);
        FILE* file = ::fopen(native(name).constData(), "w");
        ASSERT_NE(file, nullptr);
        ::fclose(file);
    }
    void link(const QByteArray& target, const QByteArray& name) const {
        ASSERT_EQ(::symlink(target.constData(), native(name).constData()), 0);
    }
    QStringList images() const {
        QStringList names = listImages(folder.path()).images;
        names.sort();
        return names;
    }

    QTemporaryDir folder;

private:
    QByteArrayList m_written;
};

TEST_F(ImageListingTest, TakesImagesOfAnyCaseAtTheTopLevel) {
    for (const char* name :
         {"a.cr2", "b.Cr3", "c.NEF", "d.arw", "e.raf", "f.orf", "g.rw2", "h.dng", "i.srw", "j.pef", "k.JPG",
          "l.Jpeg", "one.two.jpg", ".IMG_2.JPG", "a.xmp", "jpg", "m.jpg.part", "n.wav"}) {
        write(name);
    }
    QDir(folder.path()).mkdir(u"below"_s);
    write("below/z.jpg");

    const ImageListing listing = listImages(folder.path());

    EXPECT_EQ(listing.images.size(), 13);
    EXPECT_EQ(listing.jpegCount, 3);
    EXPECT_FALSE(listing.images.contains(u".IMG_2.JPG"_s));
    EXPECT_EQ(listing.itemCount, 18) << "all but the hidden one";
}

TEST_F(ImageListingTest, LeavesOutWhatIsNoFile) {
    write("real.jpg");
    link("real.jpg", "link.jpg");
    link("missing.jpg", "broken.jpg");
    link("loop.jpg", "loop.jpg");
    link("..", "above.jpg");
    link("/dev/null", "device.cr2");
    link("pipe.cr2", "linkToPipe.cr2");
    QDir(folder.path()).mkdir(u"folder.JPG"_s);
    ASSERT_EQ(::mkfifo(native("pipe.cr2").constData(), 0600), 0);

    EXPECT_EQ(images(), QStringList({u"link.jpg"_s, u"real.jpg"_s}));
}

TEST_F(ImageListingTest, TellsOfNamesThatWouldLeadToAnotherFile) {
    write("latin1_\xE9.jpg");
    write("surrogate_\xED\xA0\x80.cr2");
    write("overlong_\xC0\xAF.cr2");
    write("notAnImage_\xE9.txt");
    write("replacement_\xEF\xBF\xBD.jpg");
    write("e\xCC\x81.jpg"); // decomposed, as another system writes it
    write("line\nbreak %1.jpg");

    const ImageListing listing = listImages(folder.path());

    EXPECT_EQ(listing.illegible.size(), 3);
    EXPECT_EQ(listing.images.size(), 3);
    for (const QString& name : listing.images) {
        EXPECT_TRUE(QFile::exists(folder.filePath(name))) << name.toStdString();
    }
}

TEST_F(ImageListingTest, AFolderThatIsGoneIsAFileError) {
    try {
        listImages(folder.filePath(u"gone"_s));
        FAIL();
    } catch (const FileError& error) {
        EXPECT_EQ(error.code(), ENOENT);
    }
}

} // namespace

} // namespace ostrelle
