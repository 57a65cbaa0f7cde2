#include "update/net_grab.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include "tests/temp_dir.h"
#include "update/test_http_server.h"

namespace {

// A port on which nobody listens: taken from the system, then given back.
QString refusingUrl() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return QStringLiteral("http://127.0.0.1:%1/page").arg(probe.serverPort());
}

class NetGrabTest : public ::testing::Test {
protected:
    // Waits for the download to end (a broken one fails the test instead of hanging
    // it); true when it completed.
    bool finishes() {
        EXPECT_TRUE(QTest::qWaitFor([&] { return complete.count() + failed.count() > 0; }, 10000));
        return complete.count() == 1;
    }

    TestHttpServer server;
    NetGrab grab;
    QSignalSpy complete{&grab, &NetGrab::DownloadComplete};
    QSignalSpy failed{&grab, &NetGrab::DownloadFailed};
};

TEST_F(NetGrabTest, ASecondStartCancelsTheFirstSilentlyAndSavesExactlyItsPageOverALongerFile) {
    TempDir dir;
    const std::string file = dir.write("page.html", "a longer file that was there before");
    EXPECT_FALSE(grab.SaveAs(QString::fromStdString(file)));  // nothing downloaded yet
    server.route("/first", {"", true});
    server.route("/page", {"002.003.003\r\n"});
    grab.DownloadStart(server.url("/first"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.requests.size() == 1; }, 10000));
    grab.DownloadStart(server.url("/page"), NetGrab::kModeAlwaysFromNetwork);
    ASSERT_TRUE(finishes());
    QCoreApplication::processEvents();
    EXPECT_EQ(complete.count() + failed.count(), 1);
    EXPECT_EQ(complete.at(0).at(0).toInt(), 13);
    EXPECT_TRUE(server.requests.value(1).contains("Cache-Control: no-cache"));
    EXPECT_TRUE(grab.SaveAs(QString::fromStdString(file)));
    EXPECT_EQ(readFileBytes(file), "002.003.003\r\n");
}

TEST_F(NetGrabTest, EndsInOneOutcomeForEachKindOfAnswer) {
    server.route("/full", {QByteArray(qsizetype{64} * 1024, 'x')});
    server.route("/over", {QByteArray(qsizetype{64} * 1024 + 1, 'x')});
    server.route("/silent", {"", true});
    for (const auto& [name, url, timeLimit, completes] :
         {std::tuple{"exactly the cap", server.url("/full"), 30000, true},
          {"one byte over the cap", server.url("/over"), 30000, false},
          {"server never answers", server.url("/silent"), 200, false},
          {"page missing", server.url("/missing"), 30000, false},
          {"connection refused", refusingUrl(), 30000, false}}) {
        SCOPED_TRACE(name);
        complete.clear();
        failed.clear();
        grab.setTimeLimit(timeLimit);
        grab.DownloadStart(url);
        EXPECT_EQ(finishes(), completes);
        EXPECT_EQ(complete.count() + failed.count(), 1);
        EXPECT_FALSE(grab.Busy());
    }
}

TEST_F(NetGrabTest, WithoutTheNetworkModuleEveryDownloadFailsFromTheEventLoop) {
    grab.setNetworkModule(QStringLiteral("/nonexistent/libveskor-network.so"));
    for (int attempt = 0; attempt < 2; ++attempt) {
        failed.clear();
        grab.DownloadStart(server.url("/page"));
        EXPECT_TRUE(failed.isEmpty());
        EXPECT_FALSE(finishes() || grab.Busy());
        ASSERT_EQ(failed.count(), 1);
        EXPECT_EQ(failed.at(0).at(0).toInt(), NetGrab::kErrNoNetworkModule);
    }
    EXPECT_TRUE(server.requests.isEmpty());
}

}  // namespace
