#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QMap>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>

// A tiny HTTP server on 127.0.0.1 for the download tests: it runs in the test's own
// event loop on a free port, answers each path from a table, and records the request
// heads it saw. Paths not in the table get 404.
class TestHttpServer {
public:
    struct Response {
        QByteArray body;
        int status = 200;
        bool hang = false;  // never answer, keep the connection open
    };

    TestHttpServer() {
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { accept(); });
    }

    void route(const QByteArray& path, Response response) { m_routes[path] = response; }

    QString url(const char* path) const {
        return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()) +
               QString::fromLatin1(path);
    }

    // The request heads received, in order.
    QList<QByteArray> requests;

private:
    void accept() {
        while (QTcpSocket* socket = m_server.nextPendingConnection())
            QObject::connect(socket, &QTcpSocket::readyRead, socket,
                             [this, socket] { receive(socket); });
    }

    void receive(QTcpSocket* socket) {
        QByteArray& head = m_heads[socket];
        head += socket->readAll();
        if (!head.contains("\r\n\r\n"))
            return;
        requests.append(head);
        const QByteArray path = head.split(' ').value(1);
        const Response response = m_routes.value(path, Response{"", 404, false});
        if (response.hang)
            return;
        socket->write("HTTP/1.1 " + QByteArray::number(response.status) +
                      " X\r\nContent-Type: text/html\r\nContent-Length: " +
                      QByteArray::number(response.body.size()) + "\r\nConnection: close\r\n\r\n" +
                      response.body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QMap<QByteArray, Response> m_routes;
    QMap<QTcpSocket*, QByteArray> m_heads;
};
