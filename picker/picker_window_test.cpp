#include "picker/picker_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QWindow>
#include <filesystem>

#include "tests/temp_dir.h"

namespace {

// The real disk with the drives a test adds.
struct MoreDrives : PickerFileSystem {
    std::vector<std::string> extraMounts;
    std::vector<std::string> mountPoints() const override {
        auto mounts = PickerFileSystem::mountPoints();
        mounts.insert(mounts.end(), extraMounts.begin(), extraMounts.end());
        return mounts;
    }
};

using Names = std::vector<std::string>;

// The picker on a home folder with "Documents" but no "My Documents", and a drive that
// cannot be read.
class PickerWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto disk = std::make_unique<MoreDrives>();
        disk->extraMounts = {app_ / "no-medium"};
        picker_.setFileSystem(std::move(disk));
        QObject::connect(&picker_, &Form2::targetChosen,
                         [this](const QString& path) { chosen_.push_back(path.toStdString()); });
    }

    void files(std::initializer_list<std::string> names) {
        for (const std::string& name : names)
            writeFileBytes(docs_ + name, "x");
    }
    template <typename T>
    T* control(const char* name) {
        return picker_.findChild<T*>(QString::fromLatin1(name));
    }
    QLineEdit* box() { return control<QLineEdit>("Text1"); }
    QListWidget* fileList() { return control<QListWidget>("File1"); }
    std::string status() { return control<QLabel>("Label2")->text().toStdString(); }
    // The file list's names, joined by blanks.
    std::string fileNames() {
        QStringList names;
        for (int i = 0; i < fileList()->count(); ++i)
            names.push_back(fileList()->item(i)->text());
        return names.join(QLatin1Char(' ')).toStdString();
    }
    void type(const std::string& text) {
        box()->setFocus();
        box()->selectAll();
        QTest::keyClicks(box(), QString::fromStdString(text));
        QTest::keyClick(box(), Qt::Key_Return);
    }
    TempHome home_;
    TempDir app_;
    std::string docs_ = home_.home() + "/Documents";
    Form2 picker_{app_.path()};
    Names chosen_;
};

// Select chooses the selected file or else the folder. Only an existing file without ".." is
// chosen when typed or pasted (a pasted line break is a blank that Enter trims); a pattern filters
// the file list and stays in the box, selected for overtyping; anything else puts "*.*" back.
TEST_F(PickerWindowTest, OpensOnDocumentsAndChoosesWhatIsSelectedOrTyped) {
    const std::string& d = docs_;
    const std::string all = "a.txt B.TXT c.doc";
    const struct {
        const char* name;
        std::string typed, status, chosen, files, shown;
    } kCases[] = {
        {"pattern", "*.txt", d, "", "a.txt B.TXT", "*.txt"},
        {"pattern in a folder", d + "/sub/*.doc", d + "/sub", "", "d.doc", "*.doc"},
        {"pattern in a missing folder", d + "/gone/*.doc", d, "", "c.doc", "*.doc"},
        {"pattern in the root", "/*.none", "/", "", "", "*.none"},
        {"file through ..", d + "/sub/../a.txt", d, "", all, "*.*"},
        {"folder", d + "/sub", d + "/sub", "", "d.doc", "*.*"},
        {"missing file", d + "/sub/none.txt", d + "/sub", "", "d.doc", "*.*"},
        {"full path of a file", d + "/sub/d.doc", "Loading...", d + "/sub/d.doc", "d.doc", "*.*"},
        {"name in the folder shown", " a.txt ", "Loading...", d + "/a.txt", all, "*.*"},
        {"dot file alone in its folder", d + "/dots/.rc", "Loading...", d + "/dots/.rc", "", "*.*"},
    };
    files({"/a.txt", "/B.TXT", "/c.doc", "/sub/d.doc", "/dots/.rc"});
    picker_.showPicker();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&picker_));
    EXPECT_TRUE(box()->hasFocus());
    EXPECT_EQ(status(), docs_);
    auto* select = control<QPushButton>("Command1");
    select->click();
    type(docs_ + "/sub/");
    select->click();
    fileList()->setCurrentRow(0);
    select->click();
    box()->selectAll();
    QGuiApplication::clipboard()->setText(QString::fromStdString(docs_ + "/a.txt\r\n"));
    QTest::keyClick(box(), Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(box(), Qt::Key_Return);
    EXPECT_EQ(chosen_, (Names{docs_, docs_ + "/sub", docs_ + "/sub/d.doc", docs_ + "/a.txt"}));
    EXPECT_EQ(status(), "Loading...");
    for (const auto& [name, typed, status, chosen, names, shown] : kCases) {
        SCOPED_TRACE(name);
        type(docs_);
        chosen_.clear();
        type(typed);
        EXPECT_EQ(this->status(), status);
        EXPECT_EQ(chosen_, chosen.empty() ? Names{} : Names{chosen});
        EXPECT_EQ(fileNames(), names);
        EXPECT_EQ(box()->selectedText().toStdString(), shown);
    }
}

TEST_F(PickerWindowTest, F5ShowsANewFileUnreadableListsSaySoAndEscWorksWithTheDriveListOpen) {
    files({"/top.txt", "/vanished/inner.txt"});
    picker_.showPicker();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&picker_));
    files({"/new.txt"});
    QTest::keyClick(box(), Qt::Key_F5);
    EXPECT_EQ(fileNames(), "new.txt top.txt");

    auto* folders = control<QListWidget>("Dir1");
    auto listed = folders->findItems(QStringLiteral("*vanished"), Qt::MatchWildcard);
    ASSERT_EQ(listed.size(), 1);
    // Root lists any folder, so the failure is real by the folder going away once listed.
    std::filesystem::remove_all(docs_ + "/vanished");
    folders->setCurrentItem(listed[0]);
    QTest::keyClick(folders, Qt::Key_Return);
    EXPECT_EQ(status(), "Folder access error");
    EXPECT_EQ(fileNames(), "new.txt top.txt");

    auto* drives = control<QComboBox>("Drive1");
    drives->setCurrentIndex(drives->findText(QString::fromStdString(app_ / "no-medium")));
    EXPECT_EQ(status(), "Drive access error");
    EXPECT_TRUE(fileList()->isHidden());
    drives->setCurrentIndex(drives->findText(QStringLiteral("/")));
    EXPECT_EQ(status(), "/");
    EXPECT_FALSE(fileList()->isHidden());

    // The window's keys come first even while the drive list is open.
    int cancels = 0;
    QObject::connect(&picker_, &Form2::cancelRequested, [&] { ++cancels; });
    drives->showPopup();
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    QTest::keyClick(QApplication::activePopupWidget()->windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(cancels, 1);
}

}  // namespace
