#include "update/update_check.h"

#include <gtest/gtest.h>

#include <QDate>
#include <QLabel>
#include <QLocale>
#include <QSignalSpy>

#include "tests/temp_dir.h"
#include "update/net_grab.h"
#include "update/test_http_server.h"

namespace {

class UpdateCheckTest : public ::testing::Test {
protected:
    UpdateCheckTest() { check.setVersionUrl(server.url("/veskor/version.html")); }

    std::string today() const {
        return QLocale::system().toString(QDate::currentDate(), QLocale::ShortFormat).toStdString();
    }
    std::string checkFile() const { return readFileBytes(data / "luc.dat"); }

    TempDir data;
    TestHttpServer server;
    NetGrab grab;
    QSignalSpy complete{&grab, &NetGrab::DownloadComplete};
    QLabel label5;
    UpdateCheck check{grab, label5};
};

TEST_F(UpdateCheckTest, ChecksAtMostOnceADayAndAnnouncesOnlyAPageVersionAboveOurs) {
    server.route("/veskor/version.html", {"002.003.003\r\n"});
    check.trigger(data.path());  // the first start only records the day
    EXPECT_FALSE(grab.Busy());
    EXPECT_EQ(checkFile(), today() + "\r\n");

    data.write("luc.dat", "");  // an empty check file is another day
    check.trigger(data.path());
    EXPECT_EQ(checkFile(), today() + "\r\n");  // before the page has come
    ASSERT_TRUE(complete.wait(10000));
    EXPECT_EQ(label5.text().toStdString(), "An updated version is\navailable for download!");
    EXPECT_TRUE(label5.font().bold() && !label5.font().italic());
    check.trigger(data.path());
    EXPECT_FALSE(grab.Busy());
    EXPECT_EQ(server.requests.size(), 1);

    server.route("/veskor/version.html", {"002.003.002\r\n"});
    data.write("luc.dat", "a day long gone\r\n");
    check.trigger(data.path());
    ASSERT_TRUE(complete.wait(10000));
    EXPECT_EQ(label5.text().toStdString(), "");
    EXPECT_FALSE(label5.font().italic());
}

}  // namespace
