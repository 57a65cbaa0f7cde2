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

    // Serves `page`, runs a check that is due, and waits until the page has arrived.
    void checkAgainst(const QByteArray& page) {
        server.route("/veskor/version.html", {page});
        data.write("luc.dat", "a day long gone\r\n");
        QSignalSpy complete(&grab, &NetGrab::DownloadComplete);
        check.trigger(data.path());
        ASSERT_TRUE(complete.wait(10000));
    }

    TempDir data;
    TestHttpServer server;
    NetGrab grab;
    QLabel label5;
    UpdateCheck check{grab, label5};
};

TEST_F(UpdateCheckTest, AnnouncesOnlyAPageVersionAboveOurs) {
    struct Case {
        const char* name;
        QByteArray page;
        bool announced;
    } const kCases[] = {
        {"next revision", "002.003.003\r\n", true},
        {"same version", "002.003.002\r\n", false},
        {"cut at the blank, newer", "002.004.000 beta", true},
        {"cut at the blank, same", "002.003.002 beta", false},
        {"empty page", "", false},
    };
    for (const auto& [name, page, announced] : kCases) {
        SCOPED_TRACE(name);
        label5.setText(QStringLiteral("from before"));
        checkAgainst(page);
        EXPECT_EQ(label5.text(),
                  announced ? QStringLiteral("An updated version is\navailable for download!")
                            : QString());
        EXPECT_FALSE(label5.font().italic());
    }
}

TEST_F(UpdateCheckTest, ChecksAtMostOnceADayAndAnEmptyCheckFileIsAnotherDay) {
    checkAgainst("002.003.002");
    EXPECT_EQ(checkFile(), today() + "\r\n");
    check.trigger(data.path());
    EXPECT_FALSE(grab.Busy());
    EXPECT_EQ(server.requests.size(), 1);

    data.write("luc.dat", "");
    check.trigger(data.path());
    EXPECT_TRUE(grab.Busy());
    EXPECT_EQ(checkFile(), today() + "\r\n");
}

TEST_F(UpdateCheckTest, FirstStartOnlyRecordsTheDay) {
    check.trigger(data.path());
    EXPECT_FALSE(grab.Busy());
    EXPECT_EQ(checkFile(), today() + "\r\n");
}

}  // namespace
