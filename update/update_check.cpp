#include "update/update_check.h"

#include <QDate>
#include <QLabel>
#include <QLocale>
#include <string_view>

#include "core/version.h"
#include "platform/atomic_file.h"
#include "platform/code_page.h"
#include "platform/files.h"
#include "platform/line_reader.h"
#include "platform/lookup.h"
#include "update/net_grab.h"
#include "update/version_page.h"

namespace {

std::string todaysDateText() {
    return QLocale::system().toString(QDate::currentDate(), QLocale::ShortFormat).toStdString();
}

// The first line of the check file; "" when it has none or cannot be read.
std::string lastUpdateCheckDate(const std::string& checkFile) {
    std::string bytes;
    if (readWholeFile(checkFile, bytes))
        return "";
    const std::vector<std::string_view> lines = splitLines(bytes);
    return lines.empty() ? "" : decodeFileText(lines.front());
}

void writeCheckFile(const std::string& checkFile, const std::string& today) {
    // A check file that cannot be written only means another check at the next start.
    static_cast<void>(replaceFileAtomically(checkFile, today + "\r\n"));
}

}  // namespace

UpdateCheck::UpdateCheck(NetGrab& netGrab1, QLabel& label5, QObject* parent)
    : QObject(parent),
      m_netGrab1(netGrab1),
      m_label5(label5),
      m_versionUrl(QStringLiteral("http://" VESKOR_UPDATE_HOST "/veskor/version.html")) {
    connect(&m_netGrab1, &NetGrab::DownloadComplete, this, &UpdateCheck::NetGrab1_DownloadComplete);
}

void UpdateCheck::trigger(const std::string& appDataPath) {
    const std::string checkFile = appDataPath + "luc.dat";
    const std::string today = todaysDateText();
    if (!entryExists(checkFile))
        writeCheckFile(checkFile, today);
    if (lastUpdateCheckDate(checkFile) == today)
        return;
    m_netGrab1.DownloadStart(m_versionUrl, NetGrab::kModeAlwaysFromNetwork);
    writeCheckFile(checkFile, today);
}

void UpdateCheck::NetGrab1_DownloadComplete() {
    setLabel5(QStringLiteral("Checking for update..."), true, m_label5.font().bold());
    // The download control may have fetched something else for someone else.
    if (m_netGrab1.URL() != m_versionUrl)
        return;
    const QByteArray bytes = m_netGrab1.Bytes();
    const std::string_view page(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (announcesNewerVersion(
            page, localVersionText(version::kMajor, version::kMinor, version::kRevision)))
        setLabel5(QStringLiteral("An updated version is\navailable for download!"), false, true);
    else
        setLabel5(QString(), false, m_label5.font().bold());
}

void UpdateCheck::setLabel5(const QString& caption, bool italic, bool bold) {
    QFont font = m_label5.font();
    font.setItalic(italic);
    font.setBold(bold);
    m_label5.setFont(font);
    m_label5.setText(caption);
}
