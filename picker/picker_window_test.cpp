#include "picker/picker_window.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>

#include "platform/shell_open.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

namespace {

// The real disk, except for the folders and drives a test declares broken.
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

class PickerWindowTest : public ::testing::Test {
protected:
    TempHome home_;
    TempDir app_;
    std::string docs_ = home_.home() + "/Documents";
    std::unique_ptr<Form2> picker_;
    BrokenFileSystem* disk_ = nullptr;  // owned by the picker
    ScriptedPrompter prompter_;
    std::vector<std::string> chosen_, opened_;
    int cancels_ = 0, optionRequests_ = 0;
    ShellOpener oldOpener_;

    void SetUp() override {
        std::filesystem::create_directory(docs_);
        oldOpener_ = setShellOpener([this](const std::string& what) {
            opened_.push_back(what);
            return true;
        });
        picker_ = std::make_unique<Form2>(app_.path());
        auto disk = std::make_unique<BrokenFileSystem>();
        disk_ = disk.get();
        picker_->setFileSystem(std::move(disk));
        picker_->setPrompter(&prompter_);
        QObject::connect(picker_.get(), &Form2::targetChosen,
                         [this](const QString& path) { chosen_.push_back(path.toStdString()); });
        QObject::connect(picker_.get(), &Form2::cancelRequested, [this] { ++cancels_; });
        QObject::connect(picker_.get(), &Form2::optionsRequested, [this] { ++optionRequests_; });
    }
    void TearDown() override { setShellOpener(oldOpener_); }

    std::string file(const std::string& name, const std::string& bytes = "x") {
        std::string path = docs_ + "/" + name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path) << bytes;
        return path;
    }
    void open() {
        picker_->showPicker();
        ASSERT_TRUE(QTest::qWaitForWindowActive(picker_.get()));
    }
    template <typename T>
    T* control(const char* name) {
        T* found = picker_->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QLineEdit* box() { return control<QLineEdit>("Text1"); }
    QListWidget* folders() { return control<QListWidget>("Dir1"); }
    QListWidget* files() { return control<QListWidget>("File1"); }
    std::string status() { return control<QLabel>("Label2")->text().toStdString(); }
    std::vector<std::string> fileNames() {
        std::vector<std::string> names;
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
    void selectFile(const char* name) {
        auto found = files()->findItems(QString::fromLatin1(name), Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1) << name;
        files()->setCurrentItem(found.front());
    }
    void openSubfolder(const char* name) {
        auto found = folders()->findItems(QStringLiteral("*") + QString::fromLatin1(name),
                                          Qt::MatchWildcard);
        ASSERT_FALSE(found.isEmpty()) << name;
        folders()->setCurrentItem(found.back());
        QTest::keyClick(folders(), Qt::Key_Return);
    }
};

using Chosen = std::vector<std::string>;
using Names = std::vector<std::string>;

TEST_F(PickerWindowTest, OpensOnTheHomeFoldersDocuments) {
    struct Case {
        const char* name;
        std::function<void(const std::string& home)> prepare;
        std::string expected;  // below the home folder
    } cases[] = {
        {"Documents only", [](const std::string&) {}, "/Documents"},
        {"both",
         [](const std::string& h) { std::filesystem::create_directory(h + "/My Documents"); },
         "/My Documents"},
        {"neither", [](const std::string& h) { std::filesystem::remove(h + "/Documents"); }, ""},
    };
    for (const auto& [name, prepare, expected] : cases) {
        SCOPED_TRACE(name);
        TempHome home;
        std::filesystem::create_directory(home.home() + "/Documents");
        prepare(home.home());
        Form2 picker(app_.path());
        picker.showPicker();
        auto* status = picker.findChild<QLabel*>(QStringLiteral("Label2"));
        EXPECT_EQ(status->text().toStdString(), home.home() + expected);
    }
}

TEST_F(PickerWindowTest, WithoutAHomeFolderOpensOnTheCurrentFolder) {
    setenv("HOME", "", 1);  // TempHome puts it back
    open();
    EXPECT_EQ(status(), std::filesystem::current_path().string());
}

TEST_F(PickerWindowTest, OpensWithThePatternSelectedInTheFocusedBox) {
    open();
    EXPECT_EQ(status(), docs_);
    EXPECT_EQ(box()->text(), QStringLiteral("*.*"));
    EXPECT_EQ(box()->selectedText(), QStringLiteral("*.*"));
    EXPECT_TRUE(box()->hasFocus());
    EXPECT_EQ(picker_->windowTitle(), QStringLiteral("Veskor - Select a target file or folder..."));
}

TEST_F(PickerWindowTest, SelectChoosesTheFileOrElseTheFolder) {
    file("Plan.txt");
    open();
    control<QPushButton>("Command1")->click();
    selectFile("Plan.txt");
    control<QPushButton>("Command1")->click();
    EXPECT_EQ(chosen_, (Chosen{docs_, docs_ + "/Plan.txt"}));
    EXPECT_EQ(status(), "Loading...");
}

TEST_F(PickerWindowTest, EnterOrDoubleClickInTheFileListChoosesTheFile) {
    file("a.txt");
    file("b.txt");
    open();
    files()->setFocus();
    files()->setCurrentRow(1);
    QTest::keyClick(files(), Qt::Key_Space);
    QPoint onFirst = files()->visualItemRect(files()->item(0)).center();
    QTest::mouseClick(files()->viewport(), Qt::LeftButton, {}, onFirst);
    QTest::mouseDClick(files()->viewport(), Qt::LeftButton, {}, onFirst);
    EXPECT_EQ(chosen_, (Chosen{docs_ + "/b.txt", docs_ + "/a.txt"}));
}

TEST_F(PickerWindowTest, TypedPathsMoveTheListsAndChooseOnlyAnExistingFile) {
    struct Case {
        const char* name;
        std::string typed;
        std::string folderAfter;  // below Documents
        Chosen chosen;
    } cases[] = {
        {"full path of a file", docs_ + "/sub/Plan.txt", "/sub", {docs_ + "/sub/Plan.txt"}},
        {"blanks around it", "  " + docs_ + "/sub/Plan.txt ", "/sub", {docs_ + "/sub/Plan.txt"}},
        {"bare name in the folder shown", "top.txt", "", {docs_ + "/top.txt"}},
        {"relative path", "sub/Plan.txt", "/sub", {docs_ + "/sub/Plan.txt"}},
        {"dot file", docs_ + "/.hidden", "", {docs_ + "/.hidden"}},
        {"folder", docs_ + "/sub", "/sub", {}},
        {"folder with a trailing slash", docs_ + "/sub/", "/sub", {}},
        {"file through ..", docs_ + "/sub/../top.txt", "", {}},
        {"file in a missing folder", docs_ + "/gone/Plan.txt", "", {}},
        {"missing file", docs_ + "/sub/none.txt", "/sub", {}},
    };
    file("top.txt");
    file(".hidden");
    file("sub/Plan.txt");
    open();
    for (const auto& [name, typed, folderAfter, chosen] : cases) {
        SCOPED_TRACE(name);
        type(docs_);
        chosen_.clear();
        type(typed);
        EXPECT_EQ(chosen_, chosen);
        EXPECT_EQ(status(), chosen.empty() ? docs_ + folderAfter : "Loading...");
        EXPECT_EQ(box()->text(), QStringLiteral("*.*"));
        EXPECT_EQ(box()->selectedText(), QStringLiteral("*.*"));
    }
}

TEST_F(PickerWindowTest, SelectAfterATypedFolderChoosesThatFolder) {
    file("sub/Plan.txt");
    open();
    type(docs_ + "/sub");
    EXPECT_EQ(fileNames(), (Names{"Plan.txt"}));
    control<QPushButton>("Command1")->click();
    EXPECT_EQ(chosen_, (Chosen{docs_ + "/sub"}));
}

TEST_F(PickerWindowTest, APatternFiltersTheFileListAndStaysSelectedInTheBox) {
    struct Case {
        const char* name;
        std::string typed;
        std::string folderAfter;
        Names files;
        QString shown;
    } cases[] = {
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
    for (const auto& [name, typed, folderAfter, names, shown] : cases) {
        SCOPED_TRACE(name);
        type(docs_);
        type(typed);
        EXPECT_EQ(status(), folderAfter);
        EXPECT_EQ(fileNames(), names);
        EXPECT_EQ(box()->text(), shown);
        EXPECT_EQ(box()->selectedText(), shown);
        EXPECT_TRUE(chosen_.empty());
    }
}

TEST_F(PickerWindowTest, APathAfterAPatternShowsAllFilesAgain) {
    for (const char* name : {"a.txt", "c.doc"})
        file(name);
    open();
    type("*.txt");
    type(docs_);
    EXPECT_EQ(fileNames(), (Names{"a.txt", "c.doc"}));
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
    struct Case {
        const char* name;
        std::function<void()> act;
    } cases[] = {
        {"opened from the folder list", [&] { openSubfolder("locked"); }},
        {"typed", [&] { type(docs_ + "/locked"); }},
        // A real failure: the folder goes away between listing and opening.
        {"gone since listed",
         [&] {
             std::filesystem::remove_all(docs_ + "/vanished");
             openSubfolder("vanished");
         }},
    };
    for (const auto& [name, act] : cases) {
        SCOPED_TRACE(name);
        act();
        EXPECT_EQ(status(), "Folder access error");
        EXPECT_EQ(fileNames(), (Names{"top.txt"}));
    }
}

TEST_F(PickerWindowTest, ADriveThatCannotBeReadHidesTheListsUntilAGoodOne) {
    std::string noMedium = app_ / "no-medium";
    disk_->extraMounts = {noMedium};
    open();
    auto* drives = control<QComboBox>("Drive1");
    drives->setCurrentIndex(drives->findText(QString::fromStdString(noMedium)));
    EXPECT_EQ(status(), "Drive access error");
    EXPECT_TRUE(folders()->isHidden());
    EXPECT_TRUE(files()->isHidden());
    drives->setCurrentIndex(drives->findText(QStringLiteral("/")));
    EXPECT_EQ(status(), "/");
    EXPECT_FALSE(folders()->isHidden());
    EXPECT_FALSE(files()->isHidden());
}

TEST_F(PickerWindowTest, AFileThatCannotBeReadIsOnlyAWarning) {
    disk_->unreadableFiles = {file("locked.txt")};
    open();
    selectFile("locked.txt");
    QTest::mouseClick(files()->viewport(), Qt::LeftButton, {},
                      files()->visualItemRect(files()->item(0)).center());
    EXPECT_EQ(status(), "File access error");
    control<QPushButton>("Command1")->click();
    EXPECT_EQ(chosen_, (Chosen{docs_ + "/locked.txt"}));
}

TEST_F(PickerWindowTest, SpaceInTheFolderListOpensTheHighlightedFolder) {
    file("sub/inner.txt");
    open();
    openSubfolder("sub");
    EXPECT_EQ(status(), docs_ + "/sub");
    EXPECT_EQ(fileNames(), (Names{"inner.txt"}));
    folders()->setCurrentRow(folders()->count() - 3);  // the parent of Documents
    QTest::keyClick(folders(), Qt::Key_Space);
    EXPECT_EQ(status(), home_.home());
}

TEST_F(PickerWindowTest, WindowKeysWorkWhereverTheFocusIs) {
    open();
    QTest::keyClick(box(), Qt::Key_F12);
    QTest::keyClick(files(), Qt::Key_Escape);
    QTest::keyClick(box(), Qt::Key_Escape);
    picker_->close();
    EXPECT_EQ(optionRequests_, 1);
    EXPECT_EQ(cancels_, 3);
}

TEST_F(PickerWindowTest, HelpOpensTheHelpFileOrElseTheHomePageAfterAMessage) {
    open();
    QTest::keyClick(box(), Qt::Key_F1);
    EXPECT_EQ(prompter_.texts(),
              (Names{"Error: Help file not found.  Check the Kelvane website for online help."}));
    EXPECT_EQ(prompter_.shown.at(0).title, "Veskor");
    EXPECT_EQ(prompter_.shown.at(0).icon, Icon::Critical);
    EXPECT_EQ(opened_, (Names{VESKOR_HOME_URL}));
    std::string help = app_.write("help.html", "<html></html>");
    control<QPushButton>("Command3")->click();
    EXPECT_EQ(opened_, (Names{VESKOR_HOME_URL, help}));
    EXPECT_EQ(prompter_.shown.size(), 1u);
}

TEST_F(PickerWindowTest, FocusedControlsAreBoldAndThePathBoxGrows) {
    open();
    EXPECT_TRUE(box()->font().bold());
    EXPECT_EQ(box()->font().pointSize(), 12);
    files()->setFocus();
    EXPECT_FALSE(box()->font().bold());
    EXPECT_EQ(box()->font().pointSize(), 10);
    EXPECT_TRUE(files()->font().bold());
    folders()->setFocus();
    EXPECT_FALSE(files()->font().bold());
    EXPECT_TRUE(folders()->font().bold());
}

TEST_F(PickerWindowTest, TabGoesFromThePathBoxThroughTheListsToTheButtons) {
    open();
    std::vector<QString> order;
    for (int i = 0; i < 8; ++i) {
        order.push_back(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(order,
              (std::vector<QString>{QStringLiteral("Text1"), QStringLiteral("Drive1"),
                                    QStringLiteral("Dir1"), QStringLiteral("File1"),
                                    QStringLiteral("Command1"), QStringLiteral("Command2"),
                                    QStringLiteral("Command3"), QStringLiteral("Command4")}));
}

TEST_F(PickerWindowTest, HighDpiSettingReducesTheFontSizes) {
    struct Case {
        const char* name;
        bool reduced;
        int textSize, buttonSize;
    } cases[] = {{"normal", false, 8, 10}, {"reduced", true, 6, 8}};
    for (const auto& [name, reduced, textSize, buttonSize] : cases) {
        SCOPED_TRACE(name);
        picker_->adjustGUIforDPI(reduced);
        for (const char* text : {"Label1", "Label2", "Label3", "Drive1", "Dir1", "File1", "Text1"})
            EXPECT_EQ(control<QWidget>(text)->font().pointSize(), textSize) << text;
        for (const char* button : {"Command1", "Command2", "Command3", "Command4"})
            EXPECT_EQ(control<QWidget>(button)->font().pointSize(), buttonSize) << button;
    }
}

}  // namespace
