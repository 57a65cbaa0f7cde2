#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <map>

#include "config/options_dialog.h"
#include "editor/main_window_fixture.h"
#include "picker/picker_window.h"

namespace {

class MainWindowAccessTest : public MainWindowFixture {
public:
    static QAccessibleInterface* reader(QObject* object) {
        return QAccessible::queryAccessibleInterface(object);
    }
    static std::string nameOf(QObject* object) {
        return reader(object)->text(QAccessible::Name).toStdString();
    }

    // Every shown control of `window` that the keyboard or the mouse can act on has a
    // name of one line; those in `expected` have exactly that name.
    static void expectNamed(QWidget* window, const std::map<std::string, std::string>& expected) {
        for (QWidget* control : window->findChildren<QWidget*>()) {
            const bool acts = control->focusPolicy() != Qt::NoFocus ||
                              control->cursor().shape() == Qt::PointingHandCursor;
            if (!control->isVisible() || !acts || control->isWindow() ||
                qobject_cast<QWidget*>(control->parent()) != window)
                continue;
            const std::string id = control->objectName().toStdString();
            const std::string name = nameOf(control);
            EXPECT_FALSE(name.empty()) << id;
            EXPECT_EQ(name.find('\n'), std::string::npos) << id << ": " << name;
            if (const auto wanted = expected.find(id); wanted != expected.end()) {
                EXPECT_EQ(name, wanted->second) << id;
            }
        }
    }

    // Brings the window up with the box focused, as after loading.
    void startFocused() {
        start(fileTarget());
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
        box()->setFocus(Qt::TabFocusReason);
    }
};

TEST_F(MainWindowAccessTest, EveryControlAUserCanActOnIsNamedAndTheWindowsSayWhatTheyAre) {
    start(fileTarget());
    const std::map<std::string, std::string> kEditorNames = {
        {"Text1", "Description"},   {"Text2", "File path"},           {"Combo1", "Font"},
        {"Combo2", "Font size"},    {"Image1", "Delete description"}, {"Image4", "Open file"},
        {"Label4", VESKOR_HOME_URL}};
    {
        SCOPED_TRACE("toolbar hidden");
        expectNamed(&form_, kEditorNames);
        EXPECT_EQ(nameOf(control<QWidget>("Command5")), "Expand toolbar");
    }
    // A named list still tells what it shows, as its value and as its text.
    QAccessibleInterface* sizes = reader(control<QWidget>("Combo2"));
    EXPECT_EQ(sizes->text(QAccessible::Value).toStdString(), "08");
    ASSERT_NE(sizes->textInterface(), nullptr);
    EXPECT_EQ(sizes->textInterface()->text(0, sizes->textInterface()->characterCount()),
              QStringLiteral("08"));
    QTest::mouseClick(control<QWidget>("Command5"), Qt::LeftButton);
    {
        SCOPED_TRACE("toolbar shown");
        expectNamed(&form_, kEditorNames);
        EXPECT_EQ(nameOf(control<QWidget>("Command5")), "Shrink toolbar");
    }
    QTest::keyClick(box(), Qt::Key_F12);
    Form4& options = form_.optionsDialog();
    {
        SCOPED_TRACE("options");
        expectNamed(&options,
                    {{"Combo1", "Font"}, {"Combo2", "Font size"}, {"Combo3", "Background color"}});
    }
    MainWindowFixture picking;
    picking.start("");
    {
        SCOPED_TRACE("picker");
        expectNamed(picking.form_.pickerWindow(), {{"Drive1", "Drive"},
                                                   {"Dir1", "Folders"},
                                                   {"File1", "Files"},
                                                   {"Text1", "Path or pattern"}});
        // A folder below the root reads as its name and its depth, not as blanks.
        QAccessibleInterface* folders =
            reader(picking.form_.pickerWindow()->findChild<QWidget*>(QStringLiteral("Dir1")));
        ASSERT_GT(folders->childCount(), 1);
        QAccessibleInterface* second = folders->child(1);
        EXPECT_FALSE(second->text(QAccessible::Name).startsWith(QLatin1Char(' ')));
        EXPECT_EQ(second->text(QAccessible::Description).toStdString(), "Level 2");
    }
    EXPECT_EQ(reader(&form_)->role(), QAccessible::Window);
    EXPECT_EQ(reader(&options)->role(), QAccessible::Dialog);
    EXPECT_EQ(reader(picking.form_.pickerWindow())->role(), QAccessible::Dialog);
}

// Tab goes on from the box to the delete icon and the open icon; both act on the
// keyboard, and a declined delete, however it started, leaves the box focused.
TEST_F(MainWindowAccessTest, TheKeyboardReachesTheIconsAndTheBoxHasTheFocusAfterAQuestion) {
    startFocused();
    QTest::keyClick(box(), Qt::Key_Tab);
    EXPECT_TRUE(control<QWidget>("Image1")->hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(control<QWidget>("Image4")->hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(opened_, std::vector<std::string>{files_ / "Plan.txt"});

    // name, the icon's key (0: empty the box and press F10)
    const std::pair<const char*, int> kDeclined[] = {
        {"Enter on the icon", Qt::Key_Return}, {"Space on the icon", Qt::Key_Space}, {"F10", 0}};
    for (const auto& [name, key] : kDeclined) {
        SCOPED_TRACE(name);
        MainWindowAccessTest run;
        run.startFocused();
        run.form_.setText("worth keeping");
        run.prompter_.answers = {Answer::No};
        if (key != 0) {
            run.control<QWidget>("Image1")->setFocus(Qt::TabFocusReason);
            QTest::keyClick(run.control<QWidget>("Image1"), static_cast<Qt::Key>(key));
        } else {
            run.form_.setText("");
            QTest::keyClick(run.box(), Qt::Key_F10);
        }
        EXPECT_EQ(run.prompter_.texts(), std::vector<std::string>{"Delete existing description?"});
        EXPECT_TRUE(run.box()->hasFocus());
        EXPECT_FALSE(run.form_.hasEnded());
    }
}

// Brought there by Tab, the focus marks a button, a list and an icon with a frame two
// pixels wide in the text colour; without the focus the icon is its picture alone.
TEST_F(MainWindowAccessTest, KeyboardFocusShowsATwoPixelMarkThatIsGoneWithoutIt) {
    startFocused();
    QTest::mouseClick(control<QWidget>("Command5"), Qt::LeftButton);
    // name, the control before it in the Tab order
    const std::pair<const char*, const char*> kMarked[] = {
        {"Command1", "Check1"}, {"Combo1", "Command5"}, {"Image1", "Text1"}};
    for (const auto& [name, before] : kMarked) {
        SCOPED_TRACE(name);
        QWidget* marked = control<QWidget>(name);
        const QColor text = marked->palette().color(QPalette::WindowText);
        const QImage unfocused = marked->grab().toImage();
        control<QWidget>(before)->setFocus(Qt::TabFocusReason);
        QTest::keyClick(control<QWidget>(before), Qt::Key_Tab);
        ASSERT_TRUE(marked->hasFocus());
        const QImage focused = marked->grab().toImage();
        for (const QPoint corner : {QPoint(0, 0), QPoint(1, 1)})
            EXPECT_EQ(QColor(focused.pixel(corner)), text) << corner.x();
        EXPECT_NE(QColor(unfocused.pixel(1, 1)), text);
        box()->setFocus(Qt::TabFocusReason);
        EXPECT_EQ(marked->grab().toImage(), unfocused);
    }
}

// Typing changes nothing, so Esc ends without asking to save.
TEST_F(MainWindowAccessTest, TheBoxOfATargetThatIsGoneIsReadOnlySaysSoAndEscEndsAtOnce) {
    files_.write("Gone.txt.description", "kept words\r\nsecond line\r\n");
    start(files_ / "Gone.txt");
    ASSERT_TRUE(form_.inReadingState());
    QTest::keyClicks(box(), QStringLiteral("typed"));
    QTest::keyClick(box(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(box(), QStringLiteral("more"));
    EXPECT_EQ(form_.text(), "kept words\r\nsecond line\r\n");
    EXPECT_TRUE(reader(box())->state().readOnly);
    EXPECT_TRUE(
        reader(box())->text(QAccessible::Description).startsWith(QStringLiteral("Read only")));
    QTest::keyClick(box(), Qt::Key_Escape);
    EXPECT_TRUE(form_.hasEnded());
    EXPECT_EQ(prompter_.shown.size(), 1u);  // the load's "file not found" alone
}

}  // namespace
