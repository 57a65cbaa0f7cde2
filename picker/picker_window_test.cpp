#include "picker/picker_window.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <filesystem>
#include <fstream>
#include <set>

#include "tests/temp_dir.h"

namespace {

// The real disk, except for the folders, files and drives a test declares broken.
class BrokenFileSystem : public PickerFileSystem {
public:
    std::set<std::string> unreadableFolders, unreadableFiles;
    std::vector<std::string> extraMounts;

    std::vector<std::string> mountPoints() const override {
        auto mounts = PickerFileSystem::mountPoints();
        mounts.insert(mounts.end(), extraMounts.begin(), extraMounts.end());
        return mounts;
    }
    FolderListing listFolder(const std::string& folder) const override {
        return unreadableFolders.contains(folder) ? FolderListing{}
                                                  : PickerFileSystem::listFolder(folder);
    }
    bool canReadFile(const std::string& path) const override {
        return !unreadableFiles.contains(path);
    }
};

using Names = std::vector<std::string>;

class PickerWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(docs_);
        auto disk = std::make_unique<BrokenFileSystem>();
        disk_ = disk.get();
        picker_.setFileSystem(std::move(disk));
        QObject::connect(&picker_, &Form2::targetChosen,
                         [this](const QString& path) { chosen_.push_back(path.toStdString()); });
        QObject::connect(&picker_, &Form2::cancelRequested, [this] { ++cancels_; });
        QObject::connect(&picker_, &Form2::optionsRequested, [this] { ++optionRequests_; });
    }

    std::string file(const std::string& name) {
        std::string path = docs_ + "/" + name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path) << "x";
        return path;
    }
    void open() {
        picker_.showPicker();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&picker_));
    }
    template <typename T>
    T* control(const char* name) {
        T* found = picker_.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QLineEdit* box() { return control<QLineEdit>("Text1"); }
    QListWidget* folders() { return control<QListWidget>("Dir1"); }
    QListWidget* files() { return control<QListWidget>("File1"); }
    void select() { control<QPushButton>("Command1")->click(); }
    std::string status() { return control<QLabel>("Label2")->text().toStdString(); }
    Names fileNames() {
        Names names;
        for (int i = 0; i < files()->count(); ++i)
            names.push_back(files()->item(i)->text().toStdString());
        return names;
    }
    void type(const std::string& text) {
        box()->setFocus();
        box()->selectAll();
        QTest::keyClicks(box(), QString::fromStdString(text));
        QTest::keyClick(box(), Qt::Key_Return);
    }
    void openSubfolder(const char* name, Qt::Key key = Qt::Key_Return) {
        auto found = folders()->findItems(QStringLiteral("*") + QString::fromLatin1(name),
                                          Qt::MatchWildcard);
        ASSERT_FALSE(found.isEmpty()) << name;
        folders()->setCurrentItem(found.back());
        QTest::keyClick(folders(), key);
    }

    TempHome home_;
    TempDir app_;
    std::string docs_ = home_.home() + "/Documents";
    Form2 picker_{app_.path()};
    BrokenFileSystem* disk_ = nullptr;  // owned by the picker
    Names chosen_;
    int cancels_ = 0, optionRequests_ = 0;
};

TEST_F(PickerWindowTest, OpensOnTheHomeFoldersDocuments) {
    const struct {
        const char* name;
        std::vector<const char*> made;
        std::string expected;  // below the home folder
    } kCases[] = {{"Documents only", {"Documents"}, "/Documents"},
                  {"both", {"Documents", "My Documents"}, "/My Documents"},
                  {"neither", {}, ""}};
    for (const auto& [name, made, expected] : kCases) {
        SCOPED_TRACE(name);
        TempHome home;
        for (const char* folder : made)
            std::filesystem::create_directory(home.home() + "/" + folder);
        Form2 picker(app_.path());
        picker.showPicker();
        EXPECT_EQ(picker.findChild<QLabel*>(QStringLiteral("Label2"))->text().toStdString(),
                  home.home() + expected);
    }
}

TEST_F(PickerWindowTest, SelectChoosesTheFileOrElseTheFolderWithoutATrailingSlash) {
    file("sub/Plan.txt");
    open();
    select();
    type(docs_ + "/sub/");
    select();
    files()->setCurrentRow(0);
    select();
    EXPECT_EQ(chosen_, (Names{docs_, docs_ + "/sub", docs_ + "/sub/Plan.txt"}));
    EXPECT_EQ(status(), "Loading...");
}

TEST_F(PickerWindowTest, SpaceOpensAFolderAndSpaceOrDoubleClickChoosesAFile) {
    file("sub/a.txt");
    file("sub/b.txt");
    open();
    openSubfolder("sub", Qt::Key_Space);
    EXPECT_EQ(status(), docs_ + "/sub");
    files()->setFocus();
    files()->setCurrentRow(1);
    QTest::keyClick(files(), Qt::Key_Space);
    QPoint onFirst = files()->visualItemRect(files()->item(0)).center();
    QTest::mouseClick(files()->viewport(), Qt::LeftButton, {}, onFirst);
    QTest::mouseDClick(files()->viewport(), Qt::LeftButton, {}, onFirst);
    EXPECT_EQ(chosen_, (Names{docs_ + "/sub/b.txt", docs_ + "/sub/a.txt"}));
}

TEST_F(PickerWindowTest, TypedPathsMoveTheListsAndChooseOnlyAnExistingFile) {
    const struct {
        const char* name;
        std::string typed;
        std::string folderAfter;  // below Documents
        Names chosen;
    } kCases[] = {
        {"full path of a file", docs_ + "/sub/Plan.txt", "/sub", {docs_ + "/sub/Plan.txt"}},
        {"blanks around it", "  " + docs_ + "/sub/Plan.txt ", "/sub", {docs_ + "/sub/Plan.txt"}},
        {"bare name in the folder shown", "top.txt", "", {docs_ + "/top.txt"}},
        {"relative path", "sub/Plan.txt", "/sub", {docs_ + "/sub/Plan.txt"}},
        {"dot file", docs_ + "/.hidden", "", {docs_ + "/.hidden"}},
        {"folder", docs_ + "/sub", "/sub", {}},
        {"file through ..", docs_ + "/sub/../top.txt", "", {}},
        {"file in a missing folder", docs_ + "/gone/Plan.txt", "", {}},
        {"missing file", docs_ + "/sub/none.txt", "/sub", {}},
    };
    file("top.txt");
    file(".hidden");
    file("sub/Plan.txt");
    open();
    for (const auto& [name, typed, folderAfter, chosen] : kCases) {
        SCOPED_TRACE(name);
        type(docs_);
        chosen_.clear();
        type(typed);
        EXPECT_EQ(chosen_, chosen);
        EXPECT_EQ(status(), chosen.empty() ? docs_ + folderAfter : "Loading...");
        EXPECT_EQ(box()->selectedText(), QStringLiteral("*.*"));
    }
}

TEST_F(PickerWindowTest, APatternFiltersTheFileListAndStaysSelectedInTheBox) {
    const struct {
        const char* name;
        std::string typed;
        std::string folderAfter;
        Names files;
        QString shown;
    } kCases[] = {
        {"pattern alone", "*.txt", docs_, {"a.txt", "B.TXT"}, QStringLiteral("*.txt")},
        {"with blanks", " ?.doc  ", docs_, {"c.doc"}, QStringLiteral("?.doc")},
        {"in a folder", docs_ + "/sub/*.doc", docs_ + "/sub", {"d.doc"}, QStringLiteral("*.doc")},
        {"in a relative folder", "sub/*.*", docs_ + "/sub", {"d.doc", "e"}, QStringLiteral("*.*")},
        {"in a missing folder", docs_ + "/gone/*.doc", docs_, {"c.doc"}, QStringLiteral("*.doc")},
        {"in the root", "/*.no-such-extension", "/", {}, QStringLiteral("*.no-such-extension")},
    };
    for (const char* name : {"a.txt", "B.TXT", "c.doc", "sub/d.doc", "sub/e"})
        file(name);
    open();
    EXPECT_TRUE(box()->hasFocus());
    EXPECT_EQ(box()->selectedText(), QStringLiteral("*.*"));
    for (const auto& [name, typed, folderAfter, names, shown] : kCases) {
        SCOPED_TRACE(name);
        type(docs_);
        type(typed);
        EXPECT_EQ(status(), folderAfter);
        EXPECT_EQ(fileNames(), names);
        EXPECT_EQ(box()->text(), shown);
        EXPECT_EQ(box()->selectedText(), shown);
        EXPECT_TRUE(chosen_.empty());
    }
    type(docs_);
    EXPECT_EQ(fileNames(), (Names{"a.txt", "B.TXT", "c.doc"}));
    EXPECT_EQ(box()->text(), QStringLiteral("*.*"));
}

TEST_F(PickerWindowTest, F5ShowsWhatChangedOnTheDisk) {
    file("old.txt");
    open();
    file("new.txt");
    std::filesystem::create_directory(docs_ + "/newfolder");
    QTest::keyClick(box(), Qt::Key_F5);
    EXPECT_EQ(fileNames(), (Names{"new.txt", "old.txt"}));
    EXPECT_FALSE(folders()->findItems(QStringLiteral("*newfolder"), Qt::MatchWildcard).isEmpty());
}

TEST_F(PickerWindowTest, AFolderThatCannotBeReadKeepsTheListsAndSaysSo) {
    file("top.txt");
    file("locked/inner.txt");
    file("vanished/inner.txt");
    disk_->unreadableFolders = {docs_ + "/locked"};
    open();
    auto saysSo = [&](const char* how) {
        SCOPED_TRACE(how);
        EXPECT_EQ(status(), "Folder access error");
        EXPECT_EQ(fileNames(), (Names{"top.txt"}));
    };
    openSubfolder("locked");
    saysSo("opened from the folder list");
    type(docs_ + "/locked");
    saysSo("typed");
    // A real failure: the folder goes away between listing and opening.
    std::filesystem::remove_all(docs_ + "/vanished");
    openSubfolder("vanished");
    saysSo("gone since listed");
}

TEST_F(PickerWindowTest, ADriveThatCannotBeReadHidesTheListsUntilAGoodOne) {
    disk_->extraMounts = {app_ / "no-medium"};
    open();
    auto* drives = control<QComboBox>("Drive1");
    drives->setCurrentIndex(drives->findText(QString::fromStdString(app_ / "no-medium")));
    EXPECT_EQ(status(), "Drive access error");
    EXPECT_TRUE(files()->isHidden());
    drives->setCurrentIndex(drives->findText(QStringLiteral("/")));
    EXPECT_EQ(status(), "/");
    EXPECT_FALSE(files()->isHidden());
}

TEST_F(PickerWindowTest, AFileThatCannotBeReadIsOnlyAWarning) {
    disk_->unreadableFiles = {file("locked.txt")};
    open();
    QTest::mouseClick(files()->viewport(), Qt::LeftButton, {},
                      files()->visualItemRect(files()->item(0)).center());
    EXPECT_EQ(status(), "File access error");
    select();
    EXPECT_EQ(chosen_, (Names{docs_ + "/locked.txt"}));
}

TEST_F(PickerWindowTest, WindowKeysWorkWhereverTheFocusIs) {
    open();
    QTest::keyClick(box(), Qt::Key_F12);
    QTest::keyClick(files(), Qt::Key_Escape);
    QTest::keyClick(box(), Qt::Key_Escape);
    picker_.close();
    EXPECT_EQ(optionRequests_, 1);
    EXPECT_EQ(cancels_, 3);
}

}  // namespace
