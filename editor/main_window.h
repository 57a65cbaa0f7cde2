#pragma once

#include <QWidget>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contracts/editor_state.h"
#include "contracts/prompter.h"
#include "contracts/shared_state.h"
#include "core/startup.h"

class Form2;
class Form4;
class NetGrab;
class QLabel;
class QTimer;
class Toolbar;
class UpdateCheck;

namespace Ui {
class Form1;
}

// Form1, the description editor: the target's path, the description box, the toolbar
// of commands that can be hidden, and the status labels. It runs the whole start-up
// (Form_Load) and is the EditorState that the load and save sequences work on.
//
// The box's text crosses into the program with CR LF breaks (toProgramText) and comes
// back with the widget's own (toWidgetText); positions count characters of the CR LF
// text. The program ends only through endProgram(): the window hides and emits
// programEnded(), which main() turns into the end of its event loop.
//
// The options dialog (Form4) belongs to the window; it is created with it and only
// ever hidden.
class Form1 : public QWidget, public EditorState, public StartupWindow {
    Q_OBJECT

public:
    Form1(SharedState& state, Prompter& prompter, QWidget* parent = nullptr);
    ~Form1() override;

    // Start-up, from the data folders to the editing state (or to the reading state of
    // a missing target whose exported file is still there). An empty argument text
    // lets the user pick the target. On a fatal condition the program has ended when
    // this returns.
    void Form_Load(const StartupEnvironment& environment, const std::string& argumentText);

    bool hasEnded() const { return m_ended; }
    int exitCode() const { return m_exitCode; }
    bool inReadingState() const { return m_readingState; }

    Form4& optionsDialog() { return *m_options; }
    // The picker, once start-up without a target has created it.
    Form2* pickerWindow() { return m_picker.get(); }
    // The page the daily update check reads (the maker's version page by default).
    void setVersionUrl(const QString& url);

    void applyBackgroundColor();
    void adjustGUIforDPI();
    // The design's window font, Arial 9.75 points: the expand bar's, and the
    // application's, which the program's other windows and message boxes share.
    static QFont windowFont();

    // EditorState
    std::string text() const override;
    void setText(std::string_view text) override;
    void selectText(std::size_t start, std::size_t length) override;
    void setTextEnabled(bool enabled) override;
    void focusText() override;
    bool updateEnabled() const override;
    void setUpdateEnabled(bool enabled) override;
    bool updateBold() const override;
    void setUpdateBold(bool bold) override;
    void setUpdateCaption(std::string_view caption) override;
    void setCancelEnabled(bool enabled) override;
    void setHelpEnabled(bool enabled) override;
    void setOptionsEnabled(bool enabled) override;
    bool exportChecked() const override;
    void setExportChecked(bool checked) override;
    void setExportVisible(bool visible) override;
    void setStatus(std::string_view status) override;
    void setTargetBox(std::string_view targetPath) override;
    void showOpenIcon(bool isFolder) override;
    void setCaption(std::string_view caption) override;
    void startTimer(int intervalMilliseconds) override;

    // StartupWindow
    void beginStartup() override;
    void clearDescription() override;
    void settingsReady(const SharedState& state) override;

signals:
    void programEnded(int exitCode);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;  // Form_Unload
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildWindow();
    void connectControls();
    void applyControlsFont();
    void applyDesignLook();
    void applyListFont();
    void applyAccessibility();
    void markReadOnly();
    void focusBoxAgain();
    bool clickPicture(QObject* watched);
    std::vector<QWidget*> themedControls() const;
    std::vector<QWidget*> shadedControls() const;

    // Start-up after the target is known; the picker continues here too.
    void waitForPickedTarget();
    void Form2_TargetChosen(const QString& fullPath);
    void finishStartup();
    void enterReadingState(const std::string& text);
    void endProgram(int exitCode);

    bool Form_KeyDown(QKeyEvent* event);
    void Text1_KeyDown(QKeyEvent* event);
    void Text1_Change();
    bool clickable(QObject* watched, QEvent* event);
    void Command1_Click();
    void Command2_Click();
    void Command3_Click();
    void Command4_Click();
    void Command5_Click();
    void Combo1_Click();
    void Combo2_Click();
    void Image1_Click();
    void Image3_Click();
    void Image4_Click();
    void Image5_Click();
    void Label4_Click();
    void Timer1_Timer();

    void copySelection();
    void pasteClipboard();
    void findInText(bool replace);
    void keepWithinMaxLength();
    std::string selectedText() const;

    std::unique_ptr<Ui::Form1> ui;
    QTimer* Timer1 = nullptr;
    SharedState& m_state;
    Prompter& m_prompter;
    std::unique_ptr<Form4> m_options;
    std::unique_ptr<Form2> m_picker;
    std::unique_ptr<Toolbar> m_toolbar;
    std::unique_ptr<NetGrab> NetGrab1;
    std::unique_ptr<UpdateCheck> m_updateCheck;
    // A loaded text longer than the box takes, whole; the box shows its start.
    std::optional<std::string> m_wholeText;
    bool m_storeCommandRunning = false;
    bool m_readingState = false;
    bool m_ended = false;
    int m_exitCode = 0;
};
