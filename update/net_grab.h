#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>

#include "update/http_get.h"

// Downloads one URL at a time into memory without blocking the GUI thread, and reports
// through signals, delivered on the GUI thread by the event loop: DownloadProgress as
// bytes arrive, then exactly one of DownloadComplete or DownloadFailed. A new
// DownloadStart cancels the running download, which then reports nothing more.
//
// A download may bring at most kMaxBytes and take at most 30 seconds; beyond either
// it is stopped and ends in DownloadFailed. HTTP error statuses fail too.
//
// The data keeps the previous download's bytes until the new one reports progress.
//
// The network itself is reached through the network module (update/http_get.h), loaded
// on the first download from beside the program or from the installation's library
// folder; without it every download fails with kErrNoNetworkModule.
class NetGrab : public QObject, private HttpGet::Listener {
    Q_OBJECT

public:
    static constexpr int kMaxBytes = 64 * 1024;
    // Mode that fetches from the server even when a cached copy exists.
    static constexpr int kModeAlwaysFromNetwork = 16;
    // ErrNum of DownloadFailed for a download stopped by the size or time cap.
    static constexpr int kErrTooLarge = 1001;
    static constexpr int kErrTooSlow = 1002;
    static constexpr int kErrNoNetworkModule = 1003;

    explicit NetGrab(QObject* parent = nullptr);
    ~NetGrab() override;

    // Stores the URL (even an empty one, which starts nothing), cancels a running
    // download and starts reading the URL. Never fails towards the caller.
    void DownloadStart(const QString& URL, int Mode = 0);
    // Stops the running download, if any, without any report; the instance is idle.
    void DownloadCancel();
    // Writes the data, exactly, to `FileName`, replacing any file there. False when
    // there is no data (the file is left alone) or when writing failed.
    bool SaveAs(const QString& FileName);

    bool Busy() const { return m_busy; }
    QByteArray Bytes() const { return m_data; }
    QString URL() const { return m_url; }
    // Milliseconds that the last finished download took; 0 while one is running.
    int Duration() const { return m_duration; }

    // Shortens the 30-second cap (for tests, which cannot wait that long).
    void setTimeLimit(int milliseconds) { m_timeLimit = milliseconds; }
    // The network module's file; by default the one found from the program's folder.
    // Takes effect at the first download.
    void setNetworkModule(const QString& path) { m_modulePath = path; }

signals:
    void DownloadComplete(int nBytes);
    void DownloadFailed(int ErrNum, const QString& ErrDesc);
    void DownloadProgress(int nBytes);

private:
    void bytesArrived() override;
    void finished(int errNum, const QString& errDesc) override;
    bool readArrivedBytes();
    void stopWithFailure(int errNum, const QString& errDesc);
    void endRequest();

    QString m_modulePath;
    std::unique_ptr<HttpGet> m_http;  // made by the first download
    bool m_busy = false;
    QTimer m_deadline;
    int m_timeLimit = 30000;
    QString m_url;
    QElapsedTimer m_clock;
    QByteArray m_incoming;
    QByteArray m_data;
    int m_duration = 0;
};
