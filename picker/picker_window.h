#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "picker/path_entry.h"
#include "picker/picker_file_system.h"

namespace Ui {
class Form2;
}
class QListWidgetItem;
struct Prompter;

// The picker window, shown when the program starts without a target: a drive list (the
// mounted volumes), a folder list, a file list, a path box and four buttons. Its one
// result is the full path of the chosen file or folder, sent as targetChosen() after its
// status line reads "Loading...". Cancel, Esc and the close box send cancelRequested():
// the picker cannot return without a target. Failures of the lists show only on the
// status line ("Drive access error", "Folder access error", "File access error").
// The window is created once and only hidden (hide(), not close(): closing it is the
// user's cancel); the lists are first filled by showPicker().
class Form2 : public QWidget, private PathEntryLists {
    Q_OBJECT
public:
    // `appPath` is the program folder, ending in "/"; help.html is found from there.
    explicit Form2(std::string appPath, QWidget* parent = nullptr);
    ~Form2() override;

    // The font sizes of the high-DPI setting: reduced ones when `reduced`.
    void adjustGUIforDPI(bool reduced);
    // Shows the window; the first time it opens on the start folder (the user's
    // "My Documents", else "Documents", else the home folder).
    void showPicker();

    // Where message boxes go (the help file's absence); unset, the window shows its own.
    void setPrompter(Prompter* prompter);
    // Replaces what the lists read from the disk; for tests, before showPicker().
    void setFileSystem(std::unique_ptr<PickerFileSystem> fileSystem);

signals:
    // The chosen target: a file, or a folder without a trailing "/".
    void targetChosen(const QString& fullPath);
    // Cancel, Esc or the close box: the program ends.
    void cancelRequested();
    // "Options [F12]" or F12: the options dialog, shown without blocking the picker.
    void optionsRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    enum class Move { Moved, NotAFolder, Unreadable };

    void buildLayout();
    void applyAccessibility();
    // The folder list shows a folder's depth by its indent: readers get the name
    // without the blanks and the depth in words.
    static void folderLevelForReaders(QListWidgetItem* item, const QString& name, qsizetype depth);
    void connectControls();
    void Form_Load();
    void Form_KeyDown(int key, bool& handled);
    bool controlKeyDown(QObject* watched, int key);
    void focusChanged(QObject* watched, bool focused);

    void Drive1_Change();
    void Dir1_Click();
    void Dir1_KeyDown();
    void Dir1_DblClick(QListWidgetItem* item);
    void File1_Click();
    void File1_DblClick();
    void File1_KeyDown();
    void Text1_KeyPress();
    void Command1_Click();
    void Command2_Click();
    void Command3_Click();
    void Command4_Click();
    void refreshLists();

    Move moveFolderList(const std::string& folder);
    void openFolder(const std::string& folder);
    void fillDriveList();
    void fillFolderList(const FolderListing& listing);
    void fillFileList(const FolderListing& listing);
    void setDrive(const std::string& mount);
    void syncDriveList();
    void showStatus(const std::string& text);
    void choose(const std::string& target);

    // The lists as the path box drives them.
    std::string currentFolder() const override;
    bool setFolder(const std::string& folder) override;
    void showFilesOfCurrentFolder() override;
    std::string selectedFile() const override;
    void selectFile(const std::string& path) override;
    void setPattern(const std::string& pattern) override;
    std::string pattern() const override;

    std::unique_ptr<Ui::Form2> ui;
    std::string m_appPath;
    std::unique_ptr<PickerFileSystem> m_fileSystem;
    Prompter* m_prompter = nullptr;
    std::vector<std::string> m_mounts;
    std::string m_folder;
    std::string m_pattern = "*.*";
    bool m_loaded = false;
};
