// The drive, folder and file lists of the picker, and the folder they show.
#include <QSignalBlocker>

#include "picker/picker_model.h"
#include "picker/picker_window.h"
#include "platform/lookup.h"
#include "ui_picker_window.h"

namespace {

constexpr int kFolderRole = Qt::UserRole;

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

// The folders from the root down to `folder`, each with its full path and last name.
std::vector<std::pair<std::string, std::string>> foldersAlong(const std::string& folder) {
    std::vector<std::pair<std::string, std::string>> along{{"/", "/"}};
    for (size_t slash = folder.find('/', 1); folder.size() > 1;
         slash = folder.find('/', slash + 1)) {
        std::string path = folder.substr(0, slash);
        along.emplace_back(path, path.substr(path.rfind('/') + 1));
        if (slash == std::string::npos)
            break;
    }
    return along;
}

}  // namespace

void Form2::Drive1_Change() {
    std::string root = ui->Drive1->currentData(kFolderRole).toString().toStdString();
    if (moveFolderList(root) == Move::Moved)
        return;
    // A drive that cannot be read (no medium, an unreachable share) hides both lists.
    ui->Dir1->hide();
    ui->File1->hide();
    showStatus("Drive access error");
}

void Form2::Dir1_Click() {
    showStatus(m_folder);
}

void Form2::Dir1_KeyDown() {
    if (QListWidgetItem* item = ui->Dir1->currentItem())
        Dir1_DblClick(item);
}

void Form2::Dir1_DblClick(QListWidgetItem* item) {
    openFolder(item->data(kFolderRole).toString().toStdString());
}

void Form2::openFolder(const std::string& folder) {
    if (moveFolderList(folder) != Move::Moved)
        showStatus("Folder access error");
}

void Form2::File1_Click() {
    std::string name = selectedFile();
    // Only a warning: a file that fails this test can still be chosen.
    if (!name.empty() && !m_fileSystem->canReadFile(choiceTarget(m_folder, name)))
        showStatus("File access error");
}

void Form2::File1_DblClick() {
    std::string name = selectedFile();
    if (!name.empty())
        choose(choiceTarget(m_folder, name));
}

void Form2::File1_KeyDown() {
    QListWidgetItem* item = ui->File1->currentItem();
    if (!item)
        return;
    item->setSelected(true);
    File1_DblClick();
}

void Form2::refreshLists() {
    fillDriveList();
    openFolder(m_folder);
}

Form2::Move Form2::moveFolderList(const std::string& folder) {
    if (lookupEntry(folder).kind != EntryKind::Directory)
        return Move::NotAFolder;
    FolderListing listing = m_fileSystem->listFolder(folder);
    if (!listing.readable)
        return Move::Unreadable;
    m_folder = folder;
    fillFolderList(listing);
    fillFileList(listing);
    ui->Dir1->show();
    ui->File1->show();
    syncDriveList();
    showStatus(m_folder);
    return Move::Moved;
}

void Form2::fillDriveList() {
    QSignalBlocker quiet(ui->Drive1);
    m_mounts = m_fileSystem->mountPoints();
    ui->Drive1->clear();
    for (const std::string& mount : m_mounts)
        ui->Drive1->addItem(qs(mount), qs(mount));
    syncDriveList();
}

// The folders along the path, each indented one step more, then the sub-folders.
void Form2::fillFolderList(const FolderListing& listing) {
    ui->Dir1->clear();
    auto add = [this](const std::string& path, const std::string& name, qsizetype depth) {
        auto* item = new QListWidgetItem(QString(depth * 2, QLatin1Char(' ')) + qs(name));
        item->setData(kFolderRole, qs(path));
        folderLevelForReaders(item, qs(name), depth);
        ui->Dir1->addItem(item);
        return item;
    };
    auto along = foldersAlong(m_folder);
    QListWidgetItem* current = nullptr;
    for (size_t i = 0; i < along.size(); ++i)
        current = add(along[i].first, along[i].second, static_cast<qsizetype>(i));
    for (const std::string& name : listing.folders)
        add(choiceTarget(m_folder, name), name, static_cast<qsizetype>(along.size()));
    ui->Dir1->setCurrentItem(current);
}

void Form2::fillFileList(const FolderListing& listing) {
    ui->File1->clear();
    for (const std::string& name : listing.files) {
        if (matchesPattern(name, m_pattern))
            ui->File1->addItem(qs(name));
    }
}

void Form2::setDrive(const std::string& mount) {
    ui->Drive1->setCurrentIndex(ui->Drive1->findData(qs(mount), kFolderRole));
}

// The drive list follows the folder list, so it always names the volume shown.
void Form2::syncDriveList() {
    QSignalBlocker quiet(ui->Drive1);
    setDrive(driveOf(m_folder, m_mounts));
}

void Form2::showStatus(const std::string& text) {
    ui->Label2->setText(qs(text));
}

void Form2::choose(const std::string& target) {
    showStatus("Loading...");
    emit targetChosen(qs(target));
}

std::string Form2::currentFolder() const {
    return m_folder;
}

bool Form2::setFolder(const std::string& folder) {
    Move moved = moveFolderList(folderPathFrom("/", folder));
    // A folder that is not there passes in silence; one that cannot be read is reported.
    if (moved == Move::Unreadable)
        showStatus("Folder access error");
    return moved == Move::Moved;
}

void Form2::showFilesOfCurrentFolder() {
    FolderListing listing = m_fileSystem->listFolder(m_folder);
    if (listing.readable)
        fillFileList(listing);
}

std::string Form2::selectedFile() const {
    QList<QListWidgetItem*> selected = ui->File1->selectedItems();
    return selected.isEmpty() ? std::string() : selected.front()->text().toStdString();
}

void Form2::selectFile(const std::string& path) {
    if (lookupEntry(path).kind != EntryKind::File)
        return;
    std::string file = folderPathFrom("/", path);
    QString name = qs(file.substr(file.rfind('/') + 1));
    // A name the list leaves out (a dot file, another pattern) is still chosen as typed.
    for (QListWidgetItem* item : ui->File1->findItems(name, Qt::MatchExactly))
        ui->File1->setCurrentItem(item);
    choose(file);
}

void Form2::setPattern(const std::string& pattern) {
    m_pattern = pattern;
    showFilesOfCurrentFolder();
}

std::string Form2::pattern() const {
    return m_pattern;
}
