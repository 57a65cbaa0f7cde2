#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// What the load and save sequences see of the editor window, control by control. The
// main window implements it with widgets; PlainEditorState implements it with plain
// fields for veskor-cli and the tests.
//
// The description box's text always has CR LF line breaks (a break counts as two
// characters), whatever the widget keeps inside; positions and lengths count
// characters (code points), never bytes.
class EditorState {
public:
    virtual ~EditorState() = default;

    // The description box, Text1.
    virtual std::string text() const = 0;
    virtual void setText(std::string_view text) = 0;
    virtual void selectText(std::size_t start, std::size_t length) = 0;
    virtual void setTextEnabled(bool enabled) = 0;
    virtual void focusText() = 0;

    // The Update button, Command1. Its bold caption is the modification mark.
    virtual bool updateEnabled() const = 0;
    virtual void setUpdateEnabled(bool enabled) = 0;
    virtual bool updateBold() const = 0;
    virtual void setUpdateBold(bool bold) = 0;
    virtual void setUpdateCaption(std::string_view caption) = 0;

    // Cancel (Command2), Help (Command3) and Options (Command4).
    virtual void setCancelEnabled(bool enabled) = 0;
    virtual void setHelpEnabled(bool enabled) = 0;
    virtual void setOptionsEnabled(bool enabled) = 0;

    // The "Export description" check box, Check1.
    virtual bool exportChecked() const = 0;
    virtual void setExportChecked(bool checked) = 0;
    virtual void setExportVisible(bool visible) = 0;

    virtual void setStatus(std::string_view status) = 0;         // Label6
    virtual void setTargetBox(std::string_view targetPath) = 0;  // Text2
    virtual void showOpenIcon(bool isFolder) = 0;                // Image3 or Image4
    virtual void setCaption(std::string_view caption) = 0;       // the window title
    virtual void startTimer(int intervalMilliseconds) = 0;       // Timer1
};

// The editor's state without a window: every control is a field that tests read.
class PlainEditorState : public EditorState {
public:
    std::string text() const override { return m_text; }
    void setText(std::string_view text) override { m_text = text; }
    void selectText(std::size_t start, std::size_t length) override {
        selectionStart = start;
        selectionLength = length;
    }
    void setTextEnabled(bool enabled) override { textEnabled = enabled; }
    void focusText() override { textFocused = true; }
    bool updateEnabled() const override { return m_updateEnabled; }
    void setUpdateEnabled(bool enabled) override { m_updateEnabled = enabled; }
    bool updateBold() const override { return m_updateBold; }
    void setUpdateBold(bool bold) override { m_updateBold = bold; }
    void setUpdateCaption(std::string_view newCaption) override { updateCaption = newCaption; }
    void setCancelEnabled(bool enabled) override { cancelEnabled = enabled; }
    void setHelpEnabled(bool enabled) override { helpEnabled = enabled; }
    void setOptionsEnabled(bool enabled) override { optionsEnabled = enabled; }
    bool exportChecked() const override { return m_exportChecked; }
    void setExportChecked(bool checked) override { m_exportChecked = checked; }
    void setExportVisible(bool visible) override { exportVisible = visible; }
    void setStatus(std::string_view text) override { status = text; }
    void setTargetBox(std::string_view targetPath) override { targetBox = targetPath; }
    void showOpenIcon(bool isFolder) override { openIcon = isFolder ? "folder" : "file"; }
    void setCaption(std::string_view text) override { caption = text; }
    void startTimer(int intervalMilliseconds) override { timerInterval = intervalMilliseconds; }

    std::size_t selectionStart = 0;
    std::size_t selectionLength = 0;
    bool textEnabled = true;
    bool textFocused = false;
    std::string updateCaption = "Update [F10]";
    bool cancelEnabled = false;
    bool helpEnabled = false;
    bool optionsEnabled = false;
    bool exportVisible = true;
    std::string status;
    std::string targetBox;
    std::string openIcon;  // "", "file" or "folder"
    std::string caption;
    int timerInterval = 0;

private:
    std::string m_text;
    bool m_updateEnabled = false;
    bool m_updateBold = false;
    bool m_exportChecked = false;
};
