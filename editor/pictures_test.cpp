#include "editor/pictures.h"

#include <gtest/gtest.h>

#include <QImage>

namespace {

bool anyPainted(const QImage& image) {
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) == 255)
                return true;
    return false;
}

// The labels show each picture at its logical size: a picture of another size would be
// stretched, and one drawn outside its pixmap or without the ratio would come out blank.
TEST(DrawPicture, EachPictureIsPaintedOnATransparentGroundAtItsSizeTimesTheRatio) {
    const struct {
        const char* name;
        Picture which;
        QSize size;
    } kCases[] = {{"window icon", Picture::AppIcon, {32, 32}},
                  {"delete", Picture::Delete, {50, 32}},
                  {"logo", Picture::Logo, {116, 33}},
                  {"open file", Picture::OpenFile, {30, 30}},
                  {"open folder", Picture::OpenFolder, {30, 30}},
                  {"banner", Picture::Banner, {303, 42}}};
    for (const auto& [name, which, size] : kCases) {
        for (const qreal ratio : {1.0, 2.0}) {
            SCOPED_TRACE(testing::Message() << name << " at " << ratio);
            const QPixmap pixmap = drawPicture(which, ratio);
            EXPECT_EQ(pixmap.size(), size * ratio);
            EXPECT_EQ(pixmap.deviceIndependentSize(), QSizeF(size));
            const QImage image = pixmap.toImage();
            EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
            EXPECT_TRUE(anyPainted(image));
        }
    }
}

}  // namespace
