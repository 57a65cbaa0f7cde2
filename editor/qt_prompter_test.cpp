#include "editor/qt_prompter.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QScreen>
#include <QTimer>
#include <functional>
#include <string>

namespace {

// Runs `look` on the modal box that `show` opens, then closes the box with Enter.
void whileShown(const std::function<void()>& show, const std::function<void(QWidget*)>& look) {
    QTimer::singleShot(0, [&] {
        QWidget* box = QApplication::activeModalWidget();
        ASSERT_NE(box, nullptr);
        look(box);
        static_cast<QDialog*>(box)->accept();
    });
    show();
}

TEST(QtPrompterTest, AProposalWithBreaksComesBackWithTheProgramsBreaks) {
    QtPrompter prompter;
    std::optional<std::string> answer;
    whileShown(
        [&] { answer = prompter.input("Enter search string:", "Find - Veskor", "xx\r\nyy"); },
        [](QWidget*) {});
    EXPECT_EQ(answer, "xx\r\nyy");
}

// A long path without blanks wraps inside the box, which stays on the screen; what
// makes it wrap does not change the words.
TEST(QtPrompterTest, AMessageWithALongUnbrokenPathStaysOnTheScreen) {
    QtPrompter prompter;
    const std::string path = "/" + std::string(243, 'p');
    const int screenWidth = QApplication::primaryScreen()->availableGeometry().width();
    whileShown(
        [&] { prompter.message("Path too long: " + path, "Veskor", Buttons::Ok, Icon::None); },
        [&](QWidget* box) {
            EXPECT_LE(box->width(), screenWidth);
            auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
            ASSERT_NE(label, nullptr);
            EXPECT_LE(label->geometry().right(), box->width());
            EXPECT_LE(label->sizeHint().width(), label->width());
            EXPECT_EQ(label->text().remove(QChar(0x200B)).toStdString(), "Path too long: " + path);
        });
}

}  // namespace
