// The network module: Qt's network stack behind the HttpGet seam. Built as a module of
// its own and loaded by the download control on its first download.
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>
#include <utility>

#include "update/http_get.h"

namespace {

class QtHttpGet final : public QObject, public HttpGet {
public:
    explicit QtHttpGet(Listener& listener) : m_listener(listener) {}
    ~QtHttpGet() override { cancel(); }

    void start(const QString& url, bool bypassCaches) override {
        cancel();
        QNetworkRequest request{QUrl(url)};
        if (bypassCaches) {
            request.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                                 QNetworkRequest::AlwaysNetwork);
            // Caches between us and the server must not answer either.
            request.setRawHeader("Cache-Control", "no-cache");
        }
        m_reply = m_network.get(request);
        connect(m_reply, &QNetworkReply::readyRead, this, [this] { m_listener.bytesArrived(); });
        connect(m_reply, &QNetworkReply::finished, this, &QtHttpGet::replyFinished);
    }

    // The reply's signals are cut before it is aborted, so nothing of it is reported.
    void cancel() override {
        if (!m_reply)
            return;
        QNetworkReply* reply = std::exchange(m_reply, nullptr);
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }

    QByteArray read(qint64 maxBytes) override {
        return m_reply ? m_reply->read(maxBytes) : QByteArray();
    }

private:
    void replyFinished() {
        const QNetworkReply::NetworkError error = m_reply->error();
        m_listener.finished(static_cast<int>(error),
                            error == QNetworkReply::NoError ? QString() : m_reply->errorString());
    }

    Listener& m_listener;
    QNetworkAccessManager m_network;
    QNetworkReply* m_reply = nullptr;
};

}  // namespace

extern "C" Q_DECL_EXPORT HttpGet* veskorMakeHttpGet(HttpGet::Listener* listener) {
    return new QtHttpGet(*listener);
}
