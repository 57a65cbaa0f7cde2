#include "update/net_grab.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSaveFile>
#include <QUrl>

NetGrab::NetGrab(QObject* parent) : QObject(parent) {
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        stopWithFailure(kErrTooSlow,
                        tr("The download took longer than %1 seconds.").arg(m_timeLimit / 1000.0));
    });
}

void NetGrab::DownloadStart(const QString& URL, int Mode) {
    m_url = URL;
    if (URL.isEmpty())
        return;
    DownloadCancel();
    m_duration = 0;
    m_incoming.clear();
    m_clock.start();

    QNetworkRequest request{QUrl(URL)};
    if (Mode & kModeAlwaysFromNetwork) {
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                             QNetworkRequest::AlwaysNetwork);
        // Caches between us and the server must not answer either.
        request.setRawHeader("Cache-Control", "no-cache");
    }
    // Made on the first download: most starts never download, and the network stack
    // costs start-up time (threads, proxy lookup) that the user would wait for.
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    m_reply = m_network->get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, &NetGrab::takeArrivedBytes);
    connect(m_reply, &QNetworkReply::finished, this, &NetGrab::finishDownload);
    m_deadline.start(m_timeLimit);
}

void NetGrab::DownloadCancel() {
    if (m_reply)
        dropReply();
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
    m_incoming += m_reply->read(kMaxBytes + 1 - m_incoming.size());
    if (m_incoming.size() <= kMaxBytes)
        return true;
    stopWithFailure(kErrTooLarge, tr("The download is larger than %1 bytes.").arg(kMaxBytes));
    return false;
}

void NetGrab::takeArrivedBytes() {
    if (!readArrivedBytes())
        return;
    m_data = m_incoming;
    emit DownloadProgress(static_cast<int>(m_data.size()));
}

void NetGrab::finishDownload() {
    const QNetworkReply::NetworkError error = m_reply->error();
    if (error != QNetworkReply::NoError) {
        stopWithFailure(static_cast<int>(error), m_reply->errorString());
        return;
    }
    if (!readArrivedBytes())
        return;
    m_duration = static_cast<int>(m_clock.elapsed());
    dropReply();
    m_data = m_incoming;
    emit DownloadComplete(static_cast<int>(m_data.size()));
}

void NetGrab::stopWithFailure(int errNum, const QString& errDesc) {
    m_duration = static_cast<int>(m_clock.elapsed());
    dropReply();
    emit DownloadFailed(errNum, errDesc);
}

// Forgets the running download for good: its signals are cut before it is aborted, so
// nothing of it is ever reported.
void NetGrab::dropReply() {
    m_deadline.stop();
    QNetworkReply* reply = m_reply;
    m_reply = nullptr;
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}
