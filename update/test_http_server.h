#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QMap>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <utility>

// A tiny HTTP server on 127.0.0.1 for the download tests: it runs in the test's own
// event loop on a free port, answers each path from a table (404 for the rest), and
// records the request heads it saw, in order.
class TestHttpServer {
public:
    struct Response {
        QByteArray body;
        bool hang = false;  // never answer, keep the connection open
    };

    TestHttpServer() {
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                QObject::connect(socket, &QTcpSocket::readyRead, socket,
                                 [this, socket] { receive(socket); });
        });
    }

    void route(const QByteArray& path, Response response) { m_routes[path] = std::move(response); }
    QString url(const char* path) const {
        return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()) +
               QString::fromLatin1(path);
    }

    QList<QByteArray> requests;

private:
    void receive(QTcpSocket* socket) {
        QByteArray& head = m_heads[socket];
        head += socket->readAll();
        if (!head.contains("\r\n\r\n"))
            return;
        requests.append(head);
        const QByteArray path = head.split(' ').value(1);
        if (m_routes.value(path).hang)
            return;
        const QByteArray body = m_routes.value(path).body;
        socket->write(
            QByteArray(m_routes.contains(path) ? "HTTP/1.1 200 OK" : "HTTP/1.1 404 Not Found") +
            "\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\nConnection: close\r\n\r\n" + body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QMap<QByteArray, Response> m_routes;
    QMap<QTcpSocket*, QByteArray> m_heads;
};
