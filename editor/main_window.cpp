#include "editor/main_window.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSignalBlocker>
#include <QTimer>
#include <algorithm>
#include <array>

#include "config/desktop_controls.h"
#include "config/list_widgets.h"
#include "config/option_lists.h"
#include "config/options_dialog.h"
#include "core/load_sequence.h"
#include "core/save_sequence.h"
#include "core/target.h"
#include "core/version.h"
#include "editor/box_text.h"
#include "editor/description_box.h"
#include "editor/edit_commands.h"
#include "editor/pictures.h"
#include "editor/toolbar.h"
#include "picker/picker_window.h"
#include "platform/lookup.h"
#include "platform/shell_open.h"
#include "platform/shipped_files.h"
#include "shell/handler_install.h"
#include "ui_main_window.h"
#include "update/net_grab.h"
#include "update/update_check.h"

namespace {

QString versionLabel() {
    QString label = QStringLiteral("Version %1.%2").arg(version::kMajor).arg(version::kMinor);
    if (version::kRevision != 0)
        label += QStringLiteral(".%1").arg(version::kRevision);
    return label;
}

constexpr QSize kClientSize{575, 381};  // 8625 x 5715 twips

constexpr std::string_view kCutNotice =
    "This description is longer than 30000 characters; the box shows its first 30000.  "
    "Update keeps the whole text as long as you leave the box unchanged.";
constexpr std::string_view kShortenQuestion =
    "This description was cut to 30000 characters when it was loaded.  Store the shortened "
    "text?";

bool isEnter(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

}  // namespace

Form1::Form1(SharedState& state, Prompter& prompter, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                          Qt::WindowCloseButtonHint),
      ui(std::make_unique<Ui::Form1>()),
      m_state(state),
      m_prompter(prompter),
      m_options(std::make_unique<Form4>(state, prompter)) {
    applyControlsFont();
    buildWindow();
    applyDesignLook();
    applyAccessibility();
    connectControls();
}

Form1::~Form1() = default;

void Form1::buildWindow() {
    ui->setupUi(this);
    setFixedSize(kClientSize);
    // Window managers like a large icon to scale down from.
    setWindowIcon(QIcon(drawPicture(Picture::AppIcon, 2)));
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    ui->Image1->setPixmap(drawPicture(Picture::Delete, devicePixelRatioF()));
    ui->Image2->setPixmap(drawPicture(Picture::Logo, devicePixelRatioF()));
    ui->Image3->hide();
    ui->Image4->hide();
    ui->Image5->hide();
    ui->Label4->setText(toWidgetText(VESKOR_HOME_URL));
    NetGrab1 = std::make_unique<NetGrab>();
    m_updateCheck = std::make_unique<UpdateCheck>(*NetGrab1, *ui->Label5);
    Timer1 = new QTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(360);
    m_toolbar = std::make_unique<Toolbar>(Toolbar::Controls{
        .bar = ui->Command5,
        .box = ui->Text1,
        .targetBox = ui->Text2,
        .banner = ui->Image5,
        .members = {ui->Combo1, ui->Combo2, ui->Label3, ui->Label6, ui->Command3, ui->Check1,
                    ui->Command1, ui->Command2, ui->Command4},
        .themeColour = [this] { return m_options->themeColour(); },
    });
}

void Form1::connectControls() {
    connect(ui->Command1, &QPushButton::clicked, this, &Form1::Command1_Click);
    connect(ui->Command2, &QPushButton::clicked, this, &Form1::Command2_Click);
    connect(ui->Command3, &QPushButton::clicked, this, &Form1::Command3_Click);
    connect(ui->Command4, &QPushButton::clicked, this, &Form1::Command4_Click);
    connect(ui->Command5, &QPushButton::clicked, this, &Form1::Command5_Click);
    connect(ui->Image1, &PictureButton::clicked, this, &Form1::Image1_Click);
    connect(ui->Image3, &PictureButton::clicked, this, &Form1::Image3_Click);
    connect(ui->Image4, &PictureButton::clicked, this, &Form1::Image4_Click);
    connect(ui->Combo1, &QComboBox::currentIndexChanged, this, &Form1::Combo1_Click);
    connect(ui->Combo2, &QComboBox::currentIndexChanged, this, &Form1::Combo2_Click);
    connect(ui->Text1, &QPlainTextEdit::textChanged, this, &Form1::Text1_Change);
    connect(Timer1, &QTimer::timeout, this, &Form1::Timer1_Timer);
    connect(m_options.get(), &Form4::flashTimerStopRequested, Timer1, &QTimer::stop);
    connect(m_options.get(), &Form4::flashTimerRestartRequested, Timer1,
            qOverload<>(&QTimer::start));
    connect(m_options.get(), &Form4::exportOptionTaken, this, &Form1::setExportChecked);
    connect(m_options.get(), &Form4::backgroundColourTaken, this, &Form1::applyBackgroundColor);
    connect(m_options.get(), &Form4::fontSizeOptionTaken, this, &Form1::adjustGUIforDPI);
    connect(m_options.get(), &Form4::installHandlerRequested, this,
            [this] { installHandler(m_prompter, m_state.data.appPath); });
    connect(m_options.get(), &Form4::uninstallHandlerRequested, this,
            [this] { uninstallHandler(m_prompter, m_state.data.appPath); });
    // The window sees every key before the control that has the focus, an open list's
    // included, and the pictures and the link take clicks.
    for (QWidget* child : findChildren<QWidget*>())
        child->installEventFilter(this);
    previewListKeys(ui->Combo1, this);
    previewListKeys(ui->Combo2, this);
}

// ---------------------------------------------------------------- start-up

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

// Form_Resize: the window keeps its size whatever the window manager asks.
void Form1::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (!isMinimized() && size() != kClientSize)
        resize(kClientSize);
}

// ---------------------------------------------------------------- EditorState

void Form1::setTextEnabled(bool enabled) {
    ui->Text1->setEnabled(enabled);
}

void Form1::focusText() {
    ui->Text1->setFocus();
}

bool Form1::updateEnabled() const {
    return ui->Command1->isEnabled();
}

void Form1::setUpdateEnabled(bool enabled) {
    ui->Command1->setEnabled(enabled);
}

bool Form1::updateBold() const {
    return ui->Command1->font().bold();
}

void Form1::setUpdateBold(bool bold) {
    QFont font = ui->Command1->font();
    font.setBold(bold);
    ui->Command1->setFont(font);
}

void Form1::setUpdateCaption(std::string_view caption) {
    ui->Command1->setText(toWidgetText(caption));
}

void Form1::setCancelEnabled(bool enabled) {
    ui->Command2->setEnabled(enabled);
}

void Form1::setHelpEnabled(bool enabled) {
    ui->Command3->setEnabled(enabled);
}

void Form1::setOptionsEnabled(bool enabled) {
    ui->Command4->setEnabled(enabled);
}

bool Form1::exportChecked() const {
    return ui->Check1->isChecked();
}

void Form1::setExportChecked(bool checked) {
    ui->Check1->setChecked(checked);
}

void Form1::setExportVisible(bool visible) {
    ui->Check1->setVisible(visible);
}

void Form1::setStatus(std::string_view status) {
    ui->Label6->setText(toWidgetText(status));
}

void Form1::setTargetBox(std::string_view targetPath) {
    ui->Text2->setText(toWidgetText(targetPath));
}

void Form1::showOpenIcon(bool isFolder) {
    PictureButton* icon = isFolder ? ui->Image3 : ui->Image4;
    if (icon->pixmap().isNull())
        icon->setPixmap(drawPicture(isFolder ? Picture::OpenFolder : Picture::OpenFile,
                                    icon->devicePixelRatioF()));
    ui->Image3->setVisible(isFolder);
    ui->Image4->setVisible(!isFolder);
}

void Form1::setCaption(std::string_view caption) {
    setWindowTitle(toWidgetText(caption));
}

void Form1::startTimer(int intervalMilliseconds) {
    Timer1->start(intervalMilliseconds);
}

// ---------------------------------------------------------------- keys and clicks

bool Form1::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        // The window's own keys stop here, so that they do not come back to the
        // window when the control passes them on.
        const bool windowKey = Form_KeyDown(key);
        if (m_ended)
            return true;
        if (watched == ui->Text1)
            Text1_KeyDown(key);
        else if (watched == ui->Combo1)
            Combo1_Click();
        else if (watched == ui->Combo2)
            Combo2_Click();
        else if (!windowKey && isEnter(key->key()))
            return clickButton(watched) || clickPicture(watched);
        return windowKey || m_ended;
    }
    if (event->type() == QEvent::MouseButtonRelease)
        return clickable(watched, event);
    return QWidget::eventFilter(watched, event);
}

void Form1::keyPressEvent(QKeyEvent* event) {
    if (!Form_KeyDown(event))
        QWidget::keyPressEvent(event);
}

bool Form1::Form_KeyDown(QKeyEvent* event) {
    constexpr std::array kWindowKeys{Qt::Key_F1, Qt::Key_Escape, Qt::Key_F10, Qt::Key_F12};
    if (std::ranges::find(kWindowKeys, event->key()) == kWindowKeys.end())
        return false;
    // The window acts as if no list of it were open.
    closeOpenList();
    switch (event->key()) {
        case Qt::Key_F1:
            Command3_Click();
            return true;
        case Qt::Key_Escape:
            Command2_Click();
            return true;
        case Qt::Key_F10:
            if (ui->Command1->isEnabled())
                Command1_Click();
            return true;
        case Qt::Key_F12:
            Command4_Click();
            return true;
        default:
            return false;
    }
}

// After a Ctrl combination the box stays read-only until a key without Ctrl goes
// down in it, so the mouse cannot edit in between.
void Form1::Text1_KeyDown(QKeyEvent* event) {
    ui->Text1->setEditsLocked(event->modifiers().testFlag(Qt::ControlModifier));
    switch (boxCommandFor(event->key(), event->modifiers())) {
        case BoxCommand::Copy:
            copySelection();
            break;
        case BoxCommand::Paste:
            pasteClipboard();
            break;
        case BoxCommand::SelectAll:
            selectText(0, characterCount(text()));
            break;
        case BoxCommand::Find:
            findInText(false);
            break;
        case BoxCommand::Replace:
            findInText(true);
            break;
        case BoxCommand::None:
            break;
    }
}

bool Form1::clickable(QObject* watched, QEvent* event) {
    if (static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        return false;
    if (watched == ui->Image5)
        Image5_Click();
    else if (watched == ui->Label4)
        Label4_Click();
    else
        return false;
    return true;
}

void Form1::Text1_Change() {
    keepWithinMaxLength();
    if (m_readingState) {
        setUpdateBold(false);
        setUpdateEnabled(false);
    }
    if (!ui->Command1->isEnabled())
        return;
    setUpdateBold(true);
    ui->Label3->setText(toWidgetText(counterText(text())));
}

// ---------------------------------------------------------------- commands

void Form1::Command1_Click() {
    if (m_wholeText && ui->Text1->document()->isModified() && ui->Command1->isEnabled() &&
        ask(m_prompter, kShortenQuestion, Buttons::YesNo) != Answer::Yes)
        return;
    const QScopedValueRollback storing(m_storeCommandRunning, true);
    if (endsProgram(::Command1_Click(m_state, *this, m_prompter)))
        return endProgram(0);
    focusBoxAgain();
}

void Form1::Command2_Click() {
    const QScopedValueRollback storing(m_storeCommandRunning, true);
    if (cancelEndsProgram(m_state, *this, m_prompter))
        return endProgram(0);
    focusBoxAgain();
}

void Form1::Command3_Click() {
    const std::string helpFile = helpFilePath(m_state.data.appPath);
    if (fileExists(helpFile)) {
        (void)shellOpen(helpFile);
        return;
    }
    showError(m_prompter,
              "Error: Help file not found.  Check the Kelvane website for online help.");
    (void)shellOpen(VESKOR_HOME_URL);
}

void Form1::Command4_Click() {
    if (!ui->Command4->isEnabled())
        return;
    m_options->show();
    m_options->raise();
    m_options->activateWindow();
}

void Form1::Command5_Click() {
    m_toolbar->Command5_Click();
}

void Form1::Timer1_Timer() {
    m_toolbar->Timer1_Timer();
}

void Form1::Image1_Click() {
    if (!ui->Text1->isEnabled())
        return;
    ui->Image1->hide();
    const QScopedValueRollback storing(m_storeCommandRunning, true);
    if (endsProgram(deleteDescription(m_state, *this, m_prompter)))
        return endProgram(0);
    ui->Image1->show();
    focusBoxAgain();
}

void Form1::Image3_Click() {
    if (entryExists(m_state.target.targetFileFullPathname))
        (void)shellOpen(m_state.target.targetFileFullPathname);
}

void Form1::Image4_Click() {
    Image3_Click();
}

void Form1::Image5_Click() {
    m_toolbar->disableBanner();
}

void Form1::Label4_Click() {
    (void)shellOpen(VESKOR_HOME_URL);
}

void Form1::closeEvent(QCloseEvent* event) {
    event->ignore();
    Command2_Click();
}
