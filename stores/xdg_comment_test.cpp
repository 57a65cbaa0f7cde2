#include "stores/xdg_comment.h"

#include <gtest/gtest.h>

#include <tuple>

#include "platform/xattr.h"
#include "tests/streams.h"
#include "tests/temp_dir.h"

// Each save leaves the comment equal to the description, or gone: a value that no volume
// keeps (over 64 KiB) removes the old comment rather than leave it stale. A comment
// edited elsewhere reads with CR LF breaks.
TEST(XdgCommentTest, FollowsEverySaveAndIsNeverLeftStale) {
    TempDir dir;
    const std::string file = dir.write("plan.txt", "body");
    if (replaceStream(file, "probe", "x") != StreamStatus::Ok)
        GTEST_SKIP() << "the temporary folder keeps no user extended attributes";
    std::string beyondAnyVolume;
    while (beyondAnyVolume.size() < 90000)
        beyondAnyVolume += "\xE6\x97\xA5";  // 30000 characters
    const std::tuple<const char*, std::string, std::optional<std::string>> rows[] = {
        {"LF breaks, none at the end", "Budget\r\n\xCE\xA9 2026\r\n\r\n", "Budget\n\xCE\xA9 2026"},
        {"replaced", "Second", "Second"},
        {"beyond any volume's limit", beyondAnyVolume, std::nullopt},
        {"written again", "Third", "Third"},
        {"nothing but breaks", "\r\n", std::nullopt},
        {"deleted", "", std::nullopt},
    };
    for (const auto& [name, description, expected] : rows) {
        SCOPED_TRACE(name);
        updateXdgComment(file, description);
        EXPECT_EQ(streamOf(file, "xdg.comment"), expected);
    }
    ASSERT_EQ(replaceStream(file, "xdg.comment", "Edited\nin the file manager\r\n\xE9"),
              StreamStatus::Ok);
    EXPECT_EQ(readXdgComment(file), "Edited\r\nin the file manager\r\n\xC3\xA9");
}

TEST(XdgCommentTest, DiffersOnlyInMoreThanLineBreaks) {
    EXPECT_FALSE(commentDiffers("Two\r\nlines\r\n", "Two\nlines"));
    EXPECT_TRUE(commentDiffers("Two\r\nlines", "Two lines"));
    EXPECT_TRUE(commentDiffers("Two\r\n\r\nlines", "Two\r\nlines"));
}
