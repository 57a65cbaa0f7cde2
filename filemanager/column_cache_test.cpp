// What was read ahead is handed out once, never after a change that could have
// overtaken the read, and within its bound.
#include "filemanager/column_cache.h"

#include <gtest/gtest.h>

namespace {

using Columns = std::vector<std::pair<std::string, std::string>>;

TEST(ColumnCacheTest, HandsEachTextOutOnceAndNothingThatAChangeOvertook) {
    ColumnCache cache;
    EXPECT_TRUE(cache.keep("/docs", cache.mark(), Columns{{"a.txt", "First"}, {"b.txt", ""}}));
    EXPECT_EQ(cache.take("/docs/a.txt"), "First");
    EXPECT_EQ(cache.take("/docs/a.txt"), std::nullopt) << "handed out twice";
    EXPECT_EQ(cache.take("/docs/b.txt"), "") << "an empty column is an answer too";
    EXPECT_EQ(cache.take("/other/a.txt"), std::nullopt);

    const struct {
        const char* change;
        void (ColumnCache::*forget)(const std::string&);
        std::string path;
    } rows[] = {
        {"an item of the folder", &ColumnCache::forget, "/docs/c.txt"},
        {"the folder", &ColumnCache::forgetFolder, "/docs"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.change);
        const std::uint64_t since = cache.mark();
        (cache.*row.forget)(row.path);
        EXPECT_TRUE(cache.keep("/docs/", since, Columns{{"d.txt", "Read before"}}));
        EXPECT_EQ(cache.take("/docs/d.txt"), std::nullopt) << "kept a read the change overtook";
    }
    const std::uint64_t since = cache.mark();
    cache.forgetAll();
    EXPECT_TRUE(cache.keep("/docs", since, Columns{{"d.txt", "Read before"}}));
    EXPECT_EQ(cache.take("/docs/d.txt"), std::nullopt) << "kept a read the change overtook";

    EXPECT_TRUE(cache.keep("/docs", cache.mark(), Columns{{"e.txt", "Kept"}, {"f.txt", "Kept"}}));
    cache.forget("/docs/e.txt");
    EXPECT_EQ(cache.take("/docs/e.txt"), std::nullopt);
    EXPECT_EQ(cache.take("/docs/f.txt"), "Kept") << "another item's change";
}

TEST(ColumnCacheTest, ReadingAheadStopsAtItsBound) {
    ColumnCache cache;
    const std::string text(ColumnCache::kBytesKept / 2 - 16, 'x');
    EXPECT_TRUE(cache.keep("/docs", cache.mark(), Columns{{"a", text}}));
    EXPECT_FALSE(cache.keep("/docs", cache.mark(), Columns{{"b", text}, {"c", text}}));
    EXPECT_TRUE(cache.take("/docs/a").has_value());
    EXPECT_TRUE(cache.take("/docs/b").has_value());
    EXPECT_FALSE(cache.take("/docs/c").has_value());
    EXPECT_TRUE(cache.keep("/docs", cache.mark(), Columns{{"c", text}})) << "room again";
}

}  // namespace
