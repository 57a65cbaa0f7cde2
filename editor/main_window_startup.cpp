// How the main window starts: the checks before it shows, the wait for a picked target,
// loading the description, and the settings once they are read.
#include <QSignalBlocker>
#include <QTimer>

#include "config/list_widgets.h"
#include "config/option_lists.h"
#include "config/options_dialog.h"
#include "core/load_sequence.h"
#include "core/target.h"
#include "core/version.h"
#include "editor/main_window.h"
#include "editor/toolbar.h"
#include "picker/picker_window.h"
#include "ui_main_window.h"
#include "update/update_check.h"

namespace {

QString versionLabel() {
    QString label = QStringLiteral("Version %1.%2").arg(version::kMajor).arg(version::kMinor);
    if (version::kRevision != 0)
        label += QStringLiteral(".%1").arg(version::kRevision);
    return label;
}

constexpr std::string_view kCutNotice =
    "This description is longer than 30000 characters; the box shows its first 30000.  "
    "Update keeps the whole text as long as you leave the box unchanged.";

}  // namespace

void Form1::Form_Load(const StartupEnvironment& environment, const std::string& argumentText) {
    if (runStartup(m_state, environment, m_prompter, *this) == StartupResult::EndProgram)
        return endProgram(1);
    if (argumentText.empty())
        return waitForPickedTarget();
    if (resolveTarget(argumentText, m_state, m_prompter) == TargetResult::EndProgram)
        return endProgram(1);
    finishStartup();
}

// Without a target on the command line the user picks one. The wait is a state of
// the event loop: start-up goes on in Form2_TargetChosen(), or the picker's Cancel
// ends the program.
void Form1::waitForPickedTarget() {
    m_picker = std::make_unique<Form2>(m_state.data.appPath);
    m_picker->setPrompter(&m_prompter);
    connect(m_picker.get(), &Form2::targetChosen, this, &Form1::Form2_TargetChosen);
    connect(m_picker.get(), &Form2::cancelRequested, this, [this] { endProgram(0); });
    connect(m_picker.get(), &Form2::optionsRequested, this, &Form1::Command4_Click);
    adjustGUIforDPI();
    m_picker->showPicker();
}

// The picker's path is taken as it stands: no quotes to remove.
void Form1::Form2_TargetChosen(const QString& fullPath) {
    if (!m_state.target.targetFileFullPathname.empty())
        return;
    const QByteArray path = fullPath.toUtf8();
    if (acceptTarget(path.toStdString(), m_state, m_prompter) == TargetResult::EndProgram)
        return endProgram(1);
    finishStartup();
}

void Form1::finishStartup() {
    applyBackgroundColor();
    show();
    adjustGUIforDPI();
    if (m_picker)
        m_picker->hide();
    std::string readingText;
    switch (checkTargetExists(m_state, m_prompter, readingText)) {
        case ExistenceResult::EndProgram:
            return endProgram(1);
        case ExistenceResult::ReadingState:
            return enterReadingState(readingText);
        case ExistenceResult::Exists:
            break;
    }
    loadDescription(m_state, *this);
    if (m_wholeText)
        m_prompter.message(kCutNotice, kProgramTitle, Buttons::Ok, Icon::None);
    m_updateCheck->trigger(m_state.data.appDataPath);
    // Registering a property handler for the target's type has no counterpart here.
}

// The target is gone but its exported file is still there: show the text, never save.
void Form1::enterReadingState(const std::string& text) {
    m_readingState = true;
    setText(text);
    setExportVisible(false);
    setUpdateBold(false);
    setUpdateEnabled(false);
    markReadOnly();
}

void Form1::endProgram(int exitCode) {
    m_ended = true;
    m_exitCode = exitCode;
    Timer1->stop();
    m_options->hide();
    if (m_picker)
        m_picker->hide();
    hide();
    emit programEnded(exitCode);
}

void Form1::beginStartup() {
    setWindowTitle(QStringLiteral("Veskor"));
    hide();
    ui->Label2->setText(versionLabel());
    ui->Command5->setText(Toolbar::shrinkCaption());
    Command5_Click();
    setUpdateBold(false);
    setUpdateEnabled(false);
    setOptionsEnabled(false);
}

void Form1::clearDescription() {
    setText("");
}

void Form1::settingsReady(const SharedState& state) {
    setOptionsEnabled(true);
    {
        // The selections apply the font below, once, instead of at every change.
        const QSignalBlocker quietFonts(ui->Combo1);
        const QSignalBlocker quietSizes(ui->Combo2);
        fillList(ui->Combo1, kFontNames, state.options.optionsDefaultGUIFont);
        fillList(ui->Combo2, kFontSizes, state.options.optionsDefaultGUIFontSize);
    }
    applyListFont();
    m_options->fillLists();
    if (isOn(state.options.optionsAutoCreateExpDesc))
        setExportChecked(true);
}

void Form1::setVersionUrl(const QString& url) {
    m_updateCheck->setVersionUrl(url);
}
