#pragma once

#include <QObject>
#include <QString>
#include <string>

class NetGrab;
class QLabel;

// The once-a-day look at the maker's version page. The trigger, run at start-up,
// starts the download only when "luc.dat" in the data folder names a day other than
// today (the system's short date text), and records today before the download has a
// result, so a failed check waits for the next day. A missing "luc.dat" is created
// with today's date and makes no check; an empty one counts as another day.
//
// When the page arrives, the status label shows, in bold, that a newer version is
// available, or nothing; a failed download leaves the label as it was.
class UpdateCheck : public QObject {
    Q_OBJECT

public:
    // Both objects belong to the main window and must outlive this one.
    UpdateCheck(NetGrab& netGrab1, QLabel& label5, QObject* parent = nullptr);

    // Returns at once; the evaluation runs later, from the event loop.
    void trigger(const std::string& appDataPath);

    // The page to check (by default the maker's version page).
    void setVersionUrl(const QString& url) { m_versionUrl = url; }

private:
    void NetGrab1_DownloadComplete();
    void setLabel5(const QString& caption, bool italic, bool bold);

    NetGrab& m_netGrab1;
    QLabel& m_label5;
    QString m_versionUrl;
};
