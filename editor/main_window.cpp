#include "editor/main_window.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>

#include "config/desktop_controls.h"
#include "config/options_dialog.h"
#include "core/load_sequence.h"
#include "core/save_sequence.h"
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

constexpr QSize kClientSize{575, 381};  // 8625 x 5715 twips

constexpr std::string_view kShortenQuestion =
    "This description was cut to 30000 characters when it was loaded.  Store the shortened "
    "text?";

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

// Form_Resize: the window keeps its size whatever the window manager asks.
void Form1::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (!isMinimized() && size() != kClientSize)
        resize(kClientSize);
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
