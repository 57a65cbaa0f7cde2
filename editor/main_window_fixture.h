#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QPlainTextEdit>
#include <QRect>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "editor/main_window.h"
#include "platform/shell_open.h"
#include "tests/scripted_prompter.h"
#include "tests/temp_dir.h"

// A main window started on a target in a temporary home, with scripted answers and
// a recorder in place of the desktop's opener.
class MainWindowFixture : public ::testing::Test {
public:
    MainWindowFixture() {
        previousOpener_ = setShellOpener([this](const std::string& pathOrUrl) {
            opened_.push_back(pathOrUrl);
            return true;
        });
    }
    ~MainWindowFixture() override { setShellOpener(previousOpener_); }
    void TestBody() override {}

    void start(const std::string& target) {
        form_.Form_Load({program_.path(), home_.dataHome()}, target);
    }
    std::string fileTarget() { return files_.write("Plan.txt", "the plan"); }
    // What was saved in the folder's index file; "" when nothing was.
    std::string savedIndex() const { return readFileBytes(files_ / "00_index.txt"); }
    std::string configFile() const { return home_.dataHome() + "/Kelvane/Veskor/config.dat"; }
    void writeSettings(const std::string& bytes) {
        std::error_code ignored;
        std::filesystem::create_directories(home_.dataHome() + "/Kelvane/Veskor", ignored);
        std::ofstream(configFile(), std::ios::binary) << bytes;
    }

    template <typename T>
    T* control(const char* name) {
        T* found = form_.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QPlainTextEdit* box() { return control<QPlainTextEdit>("Text1"); }

    // A control's place in twips, the unit the window's layout is drawn in.
    static QRect twips(const QWidget* widget) {
        const QRect g = widget->geometry();
        return QRect(g.x() * 15, g.y() * 15, g.width() * 15, g.height() * 15);
    }

    // From a grab of a control: the colour that covers most of it (its background), and
    // the number of its rows that hold dark caption pixels right of a check box's square.
    static QColor dominantColour(QWidget* control) {
        const QImage image = control->grab().toImage();
        std::map<QRgb, int> counts;
        for (int i = 0; i < image.width() * image.height(); ++i)
            ++counts[image.pixel(i % image.width(), i / image.width())];
        return QColor(
            std::ranges::max_element(counts, {}, [](auto& c) { return c.second; })->first);
    }
    static int captionRows(QWidget* control) {
        const QImage image = control->grab().toImage();
        int rows = 0;
        for (int y = 0; y < image.height(); ++y) {
            bool inked = false;
            for (int x = 20; x < image.width() && !inked; ++x)
                inked = qGray(image.pixel(x, y)) < 96;
            rows += inked ? 1 : 0;
        }
        return rows;
    }

    TempHome home_;
    TempDir program_;
    TempDir files_;
    SharedState state_;
    ScriptedPrompter prompter_;
    Form1 form_{state_, prompter_};
    std::vector<std::string> opened_;

private:
    ShellOpener previousOpener_;
};

// Failures print a colour as its red, green and blue.
inline void PrintTo(const QColor& colour, std::ostream* out) {
    *out << "(" << colour.red() << "," << colour.green() << "," << colour.blue() << ")";
}
