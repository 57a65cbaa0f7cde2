#include "update/net_grab.h"

#include <QCoreApplication>
#include <QLibrary>
#include <QLoggingCategory>
#include <QSaveFile>

#include "platform/environment.h"
#include "platform/shipped_files.h"

namespace {

// Which module a download loaded, for checking an installation:
// QT_LOGGING_RULES="veskor.network.debug=true".
Q_LOGGING_CATEGORY(lcNetwork, "veskor.network", QtInfoMsg)

// Stands in for the network module when it cannot be loaded: every request fails,
// reported from the event loop as a real failure would be.
class MissingHttpGet final : public QObject, public HttpGet {
public:
    MissingHttpGet(Listener& listener, QString reason)
        : m_listener(listener), m_reason(std::move(reason)) {}

    void start(const QString& /*url*/, bool /*bypassCaches*/) override {
        QTimer::singleShot(0, this, [this, request = ++m_request] {
            if (request == m_request)
                m_listener.finished(NetGrab::kErrNoNetworkModule, m_reason);
        });
    }
    void cancel() override { ++m_request; }
    QByteArray read(qint64 /*maxBytes*/) override { return {}; }

private:
    Listener& m_listener;
    QString m_reason;
    int m_request = 0;
};

std::unique_ptr<HttpGet> loadHttpGet(const QString& modulePath, HttpGet::Listener& listener) {
    QLibrary module(modulePath);
    if (const auto make = reinterpret_cast<MakeHttpGet>(module.resolve(kMakeHttpGetSymbol))) {
        qCDebug(lcNetwork).noquote() << "loaded the network module" << modulePath;
        return std::unique_ptr<HttpGet>(make(&listener));
    }
    qCDebug(lcNetwork).noquote() << "no network module:" << module.errorString();
    return std::make_unique<MissingHttpGet>(
        listener, QCoreApplication::translate("NetGrab", "The network module is missing: %1")
                      .arg(module.errorString()));
}

}  // namespace

NetGrab::NetGrab(QObject* parent)
    : QObject(parent), m_modulePath(QString::fromStdString(networkModulePath(programFolder()))) {
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        stopWithFailure(kErrTooSlow,
                        tr("The download took longer than %1 seconds.").arg(m_timeLimit / 1000.0));
    });
}

NetGrab::~NetGrab() = default;

void NetGrab::DownloadStart(const QString& URL, int Mode) {
    m_url = URL;
    if (URL.isEmpty())
        return;
    DownloadCancel();
    m_duration = 0;
    m_incoming.clear();
    m_clock.start();
    if (!m_http)
        m_http = loadHttpGet(m_modulePath, *this);
    m_busy = true;
    m_http->start(URL, (Mode & kModeAlwaysFromNetwork) != 0);
    m_deadline.start(m_timeLimit);
}

void NetGrab::DownloadCancel() {
    if (m_busy)
        endRequest();
}

bool NetGrab::SaveAs(const QString& FileName) {
    if (m_data.isEmpty())
        return false;
    QSaveFile file(FileName);
    return file.open(QIODevice::WriteOnly) && file.write(m_data) == m_data.size() && file.commit();
}

// Appends what has arrived; beyond the cap, fails the download and returns false.
bool NetGrab::readArrivedBytes() {
    // One byte past the cap is enough to know that the download is too large.
    m_incoming += m_http->read(kMaxBytes + 1 - m_incoming.size());
    if (m_incoming.size() <= kMaxBytes)
        return true;
    stopWithFailure(kErrTooLarge, tr("The download is larger than %1 bytes.").arg(kMaxBytes));
    return false;
}

void NetGrab::bytesArrived() {
    if (!readArrivedBytes())
        return;
    m_data = m_incoming;
    emit DownloadProgress(static_cast<int>(m_data.size()));
}

void NetGrab::finished(int errNum, const QString& errDesc) {
    if (errNum != 0) {
        stopWithFailure(errNum, errDesc);
        return;
    }
    if (!readArrivedBytes())
        return;
    m_duration = static_cast<int>(m_clock.elapsed());
    endRequest();
    m_data = m_incoming;
    emit DownloadComplete(static_cast<int>(m_data.size()));
}

void NetGrab::stopWithFailure(int errNum, const QString& errDesc) {
    m_duration = static_cast<int>(m_clock.elapsed());
    endRequest();
    emit DownloadFailed(errNum, errDesc);
}

// Forgets the running download for good: nothing more of it is ever reported.
void NetGrab::endRequest() {
    m_deadline.stop();
    m_busy = false;
    m_http->cancel();
}
