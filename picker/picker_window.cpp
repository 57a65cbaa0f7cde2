#include "picker/picker_window.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMessageBox>
#include <QScreen>
#include <QSignalBlocker>
#include <QValidator>

#include "config/desktop_controls.h"
#include "contracts/prompter.h"
#include "core/version.h"
#include "picker/picker_model.h"
#include "platform/environment.h"
#include "platform/lookup.h"
#include "platform/shell_open.h"
#include "platform/shipped_files.h"
#include "ui_picker_window.h"

namespace {

constexpr int kFolderRole = Qt::UserRole;

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

void setPointSize(QWidget* widget, int points) {
    QFont font = widget->font();
    font.setPointSize(points);
    widget->setFont(font);
}

void setBold(QWidget* widget, bool bold) {
    QFont font = widget->font();
    font.setBold(bold);
    widget->setFont(font);
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

// A path copied from a terminal or a file manager often ends in a line break, and the
// path box holds one line: each break that comes in, pasted or dropped, becomes one
// blank, which Enter trims like any other.
class OneLine : public QValidator {
public:
    using QValidator::QValidator;
    State validate(QString& input, int&) const override {
        input.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
        input.replace(QLatin1Char('\r'), QLatin1Char(' '));
        input.replace(QLatin1Char('\n'), QLatin1Char(' '));
        return Acceptable;
    }
};

}  // namespace

Form2::Form2(std::string appPath, QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowCloseButtonHint),
      ui(std::make_unique<Ui::Form2>()),
      m_appPath(std::move(appPath)),
      m_fileSystem(std::make_unique<PickerFileSystem>()) {
    buildLayout();
    connectControls();
}

Form2::~Form2() = default;

void Form2::buildLayout() {
    ui->setupUi(this);
    setFixedSize(size());
    QFont font = this->font();
    font.setFamilies({QStringLiteral("Arial"), QStringLiteral("Liberation Sans")});
    setFont(font);
    QPalette grey = ui->Label3->palette();
    grey.setColor(QPalette::WindowText, grey.color(QPalette::Disabled, QPalette::Text));
    ui->Label3->setPalette(grey);
    ui->Text1->setValidator(new OneLine(ui->Text1));
    // Key preview: the window sees every key before the control that has the focus.
    for (QWidget* control :
         std::initializer_list<QWidget*>{this, ui->Text1, ui->Drive1, ui->Dir1, ui->File1,
                                         ui->Command1, ui->Command2, ui->Command3, ui->Command4})
        control->installEventFilter(this);
    previewListKeys(ui->Drive1, this);
    applyAccessibility();
}

void Form2::connectControls() {
    connect(ui->Drive1, &QComboBox::currentIndexChanged, this, &Form2::Drive1_Change);
    connect(ui->Dir1, &QListWidget::itemClicked, this, &Form2::Dir1_Click);
    connect(ui->Dir1, &QListWidget::itemDoubleClicked, this, &Form2::Dir1_DblClick);
    connect(ui->File1, &QListWidget::itemClicked, this, &Form2::File1_Click);
    connect(ui->File1, &QListWidget::itemDoubleClicked, this, &Form2::File1_DblClick);
    connect(ui->Command1, &QPushButton::clicked, this, &Form2::Command1_Click);
    connect(ui->Command2, &QPushButton::clicked, this, &Form2::Command2_Click);
    connect(ui->Command3, &QPushButton::clicked, this, &Form2::Command3_Click);
    connect(ui->Command4, &QPushButton::clicked, this, &Form2::Command4_Click);
}

void Form2::setPrompter(Prompter* prompter) {
    m_prompter = prompter;
}

void Form2::setFileSystem(std::unique_ptr<PickerFileSystem> fileSystem) {
    m_fileSystem = std::move(fileSystem);
}

void Form2::adjustGUIforDPI(bool reduced) {
    for (QWidget* control : std::initializer_list<QWidget*>{
             ui->Label1, ui->Label2, ui->Label3, ui->Drive1, ui->Dir1, ui->File1, ui->Text1})
        setPointSize(control, reduced ? 6 : 8);
    for (QWidget* button : {ui->Command1, ui->Command2, ui->Command3, ui->Command4})
        setPointSize(button, reduced ? 8 : 10);
}

void Form2::showPicker() {
    if (!m_loaded)
        Form_Load();
    QWidget* owner = parentWidget();
    QRect area =
        owner && owner->isVisible() ? owner->frameGeometry() : screen()->availableGeometry();
    move(area.center() - rect().center());
    show();
    raise();
    activateWindow();
    ui->Text1->setFocus();
}

void Form2::Form_Load() {
    m_loaded = true;
    fillDriveList();
    moveFolderList(folderPathFrom("/", ::currentFolder()));
    ui->Label3->setText(qs(versionLine(version::kMajor, version::kMinor, version::kRevision)));
    ui->Text1->selectAll();
    std::string start = startFolder(userProfile(), fileOrFolderExists);
    if (start.empty())
        return;
    // The drive first: choosing a drive moves the folder list to its root.
    setDrive(driveOf(start, m_mounts));
    moveFolderList(folderPathFrom("/", start));
}

// ---------------------------------------------------------------- keys and focus

bool Form2::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress: {
            int key = static_cast<QKeyEvent*>(event)->key();
            bool handled = false;
            Form_KeyDown(key, handled);
            return handled || controlKeyDown(watched, key);
        }
        case QEvent::FocusIn:
            focusChanged(watched, true);
            break;
        case QEvent::FocusOut:
            focusChanged(watched, false);
            break;
        default:
            break;
    }
    return QWidget::eventFilter(watched, event);
}

void Form2::Form_KeyDown(int key, bool& handled) {
    handled = key == Qt::Key_Escape || key == Qt::Key_F1 || key == Qt::Key_F5 || key == Qt::Key_F12;
    if (!handled)
        return;
    // The window acts as if its drive list were not open.
    closeOpenList();
    switch (key) {
        case Qt::Key_Escape:
            Command2_Click();
            break;
        case Qt::Key_F1:
            Command3_Click();
            break;
        case Qt::Key_F5:
            refreshLists();
            break;
        case Qt::Key_F12:
            Command4_Click();
            break;
        default:
            break;
    }
}

bool Form2::controlKeyDown(QObject* watched, int key) {
    bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
    bool enterOrSpace = enter || key == Qt::Key_Space;
    if (watched == ui->Text1 && enter)
        Text1_KeyPress();
    else if (watched == ui->Dir1 && enterOrSpace)
        Dir1_KeyDown();
    else if (watched == ui->File1 && enterOrSpace)
        File1_KeyDown();
    else
        return enter && clickButton(watched);
    return true;
}

void Form2::focusChanged(QObject* watched, bool focused) {
    if (watched == ui->Text1) {
        QFont font = ui->Text1->font();
        font.setBold(focused);
        font.setPointSize(focused ? 12 : 10);
        ui->Text1->setFont(font);
    } else if (watched == ui->Drive1 || watched == ui->Dir1 || watched == ui->File1) {
        setBold(static_cast<QWidget*>(watched), focused);
    }
}

void Form2::closeEvent(QCloseEvent* event) {
    emit cancelRequested();
    QWidget::closeEvent(event);
}

// ---------------------------------------------------------------- the lists

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

// ---------------------------------------------------------------- path box and buttons

void Form2::Text1_KeyPress() {
    QString shown = qs(enterPath(ui->Text1->text().toStdString(), *this));
    ui->Text1->setText(shown);
    ui->Text1->setSelection(0, static_cast<int>(shown.size()));
}

void Form2::Command1_Click() {
    choose(choiceTarget(m_folder, selectedFile()));
}

void Form2::Command2_Click() {
    emit cancelRequested();
}

void Form2::Command3_Click() {
    std::string help = helpFilePath(m_appPath);
    if (fileExists(help)) {
        shellOpen(help);
        return;
    }
    constexpr std::string_view kMissing =
        "Error: Help file not found.  Check the Kelvane website for online help.";
    if (m_prompter)
        showError(*m_prompter, kMissing);
    else
        QMessageBox::critical(this, QStringLiteral("Veskor"), qs(std::string(kMissing)));
    shellOpen(VESKOR_HOME_URL);
}

void Form2::Command4_Click() {
    emit optionsRequested();
}

// ---------------------------------------------------------------- the lists, for the path box

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
