// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ManualSelection.h"

#include "pipeline/PipelineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(ManualSelection, FilesAreSortedIntoWhatTheyAre) {
    const ManualSelection selection = ManualSelection::of(
        {u"/g/b.JPG"_s, u"/g/a.CR3"_s, u"/g/a.XMP"_s, u"/g/notes.txt"_s, u"/g/b.JPG"_s, u"/h/b.JPG"_s,
         u"/g/clip.mp4"_s, u"/g/c.jpeg"_s, u"/g/d.dng.part"_s, u"/g/e.raf"_s, u"/g/jpg"_s});
    EXPECT_EQ(selection.images, (QStringList{u"/g/b.JPG"_s, u"/g/a.CR3"_s, u"/h/b.JPG"_s, u"/g/c.jpeg"_s}));
    EXPECT_EQ(selection.sidecars, QStringList{u"/g/a.XMP"_s});
    EXPECT_EQ(selection.rawImages(), QStringList{u"/g/a.CR3"_s});
}

TEST(ManualSelection, EachRawImageNeedsItsSidecarInTheSelection) {
    const struct {
        QStringList files;
        bool isComplete;
    } rows[] = {
        {{u"/g/a.CR3"_s, u"/g/A.xmp"_s, u"/g/b.jpg"_s}, true},
        {{u"/g/a.cr2"_s, u"/g/B.NEF"_s, u"/g/b.XMP"_s}, false},
        {{u"/g/a.1.arw"_s, u"/g/a.xmp"_s}, false},
        {{u"/g/a.1.arw"_s, u"/g/a.1.xmp"_s}, true},
        {{u"/g/a.orf"_s}, false},
        {{u"/g/a.jpg"_s}, true},
        {{u"/g/a.xmp"_s}, true},
    };
    for (const auto& row : rows) {
        const ManualSelection selection = ManualSelection::of(row.files);
        EXPECT_EQ(!missingSidecarsAlert(selection), row.isComplete) << row.files.join(u' ').toStdString();
    }
}

TEST(ManualSelection, WhatIsNotCaptionedIsExplained) {
    const auto sidecars = missingSidecarsAlert(ManualSelection::of({u"/g/a.dng"_s}));
    ASSERT_TRUE(sidecars);
    EXPECT_EQ(sidecars->title, u"RAW files selected without XMP sidecars");
    EXPECT_EQ(sidecars->text,
              u"Please also select the matching .xmp sidecar files for RAW images to proceed.");
    EXPECT_EQ(sidecars->style, Alert::Style::warning);
    const auto images = missingImagesAlert(ManualSelection::of({u"/g/a.xmp"_s, u"/g/a.txt"_s}));
    ASSERT_TRUE(images);
    EXPECT_EQ(images->title, u"No Images Selected");
    EXPECT_EQ(images->text, u"Please select at least one image file to caption.");
    EXPECT_EQ(images->buttons, QStringList{u"OK"_s});
    EXPECT_FALSE(missingImagesAlert(ManualSelection::of({u"/g/a.jpg"_s})));
}

TEST_F(PipelineTest, TheChoiceBeginsInTheFolderOfTheSource) {
    settings.setIngestFolder(u"/g/ingest"_s);
    settings.setDestinationFolder(u"/g/arrived"_s);
    EXPECT_EQ(imageQuestion(settings).startFolder, u"/g/ingest");
    EXPECT_EQ(imageQuestionLogLine(settings),
              u"[MenuContentView] Opening file picker in watch folder: /g/ingest");
    settings.setSourceType(SourceType::ftp);
    EXPECT_EQ(imageQuestion(settings).startFolder, u"/g/arrived");
    EXPECT_EQ(imageQuestionLogLine(settings),
              u"[MenuContentView] Opening file picker in FTP destination folder: /g/arrived");
    settings.setDestinationFolder(std::nullopt);
    EXPECT_EQ(imageQuestionLogLine(settings), std::nullopt);
}

TEST_F(PipelineTest, WhatIsOfferedIsWhatIsTaken) {
    QStringList files;
    for (const QString& extension : imageQuestion(settings).extensions) {
        files.append(u"/g/a."_s + extension);
    }
    const ManualSelection selection = ManualSelection::of(files);
    EXPECT_EQ(selection.images.size() + selection.sidecars.size(), files.size());
    EXPECT_EQ(selection.rawImages().size(), 6);
}

} // namespace ostrelle
