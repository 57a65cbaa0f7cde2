#include "picker/picker_window.h"

#include <QCloseEvent>
#include <QMessageBox>
#include <QScreen>
#include <QValidator>

#include "config/desktop_controls.h"
#include "contracts/prompter.h"
#include "core/version.h"
#include "picker/picker_model.h"
#include "platform/environment.h"
#include "platform/lookup.h"
#include "platform/shell_open.h"
#include "platform/shipped_files.h"
#include "ui_picker_window.h"

namespace {

QString qs(const std::string& text) {
    return QString::fromStdString(text);
}

void setPointSize(QWidget* widget, int points) {
    QFont font = widget->font();
    font.setPointSize(points);
    widget->setFont(font);
}

// A path copied from a terminal or a file manager often ends in a line break, and the
// path box holds one line: each break that comes in, pasted or dropped, becomes one
// blank, which Enter trims like any other.
class OneLine : public QValidator {
public:
    using QValidator::QValidator;
    State validate(QString& input, int&) const override {
        input.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
        input.replace(QLatin1Char('\r'), QLatin1Char(' '));
        input.replace(QLatin1Char('\n'), QLatin1Char(' '));
        return Acceptable;
    }
};

}  // namespace

Form2::Form2(std::string appPath, QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowCloseButtonHint),
      ui(std::make_unique<Ui::Form2>()),
      m_appPath(std::move(appPath)),
      m_fileSystem(std::make_unique<PickerFileSystem>()) {
    buildLayout();
    connectControls();
}

Form2::~Form2() = default;

void Form2::buildLayout() {
    ui->setupUi(this);
    setFixedSize(size());
    QFont font = this->font();
    font.setFamilies({QStringLiteral("Arial"), QStringLiteral("Liberation Sans")});
    setFont(font);
    QPalette grey = ui->Label3->palette();
    grey.setColor(QPalette::WindowText, grey.color(QPalette::Disabled, QPalette::Text));
    ui->Label3->setPalette(grey);
    ui->Text1->setValidator(new OneLine(ui->Text1));
    // Key preview: the window sees every key before the control that has the focus.
    for (QWidget* control :
         std::initializer_list<QWidget*>{this, ui->Text1, ui->Drive1, ui->Dir1, ui->File1,
                                         ui->Command1, ui->Command2, ui->Command3, ui->Command4})
        control->installEventFilter(this);
    previewListKeys(ui->Drive1, this);
    applyAccessibility();
}

void Form2::connectControls() {
    connect(ui->Drive1, &QComboBox::currentIndexChanged, this, &Form2::Drive1_Change);
    connect(ui->Dir1, &QListWidget::itemClicked, this, &Form2::Dir1_Click);
    connect(ui->Dir1, &QListWidget::itemDoubleClicked, this, &Form2::Dir1_DblClick);
    connect(ui->File1, &QListWidget::itemClicked, this, &Form2::File1_Click);
    connect(ui->File1, &QListWidget::itemDoubleClicked, this, &Form2::File1_DblClick);
    connect(ui->Command1, &QPushButton::clicked, this, &Form2::Command1_Click);
    connect(ui->Command2, &QPushButton::clicked, this, &Form2::Command2_Click);
    connect(ui->Command3, &QPushButton::clicked, this, &Form2::Command3_Click);
    connect(ui->Command4, &QPushButton::clicked, this, &Form2::Command4_Click);
}

void Form2::setPrompter(Prompter* prompter) {
    m_prompter = prompter;
}

void Form2::setFileSystem(std::unique_ptr<PickerFileSystem> fileSystem) {
    m_fileSystem = std::move(fileSystem);
}

void Form2::adjustGUIforDPI(bool reduced) {
    for (QWidget* control : std::initializer_list<QWidget*>{
             ui->Label1, ui->Label2, ui->Label3, ui->Drive1, ui->Dir1, ui->File1, ui->Text1})
        setPointSize(control, reduced ? 6 : 8);
    for (QWidget* button : {ui->Command1, ui->Command2, ui->Command3, ui->Command4})
        setPointSize(button, reduced ? 8 : 10);
}

void Form2::showPicker() {
    if (!m_loaded)
        Form_Load();
    QWidget* owner = parentWidget();
    QRect area =
        owner && owner->isVisible() ? owner->frameGeometry() : screen()->availableGeometry();
    move(area.center() - rect().center());
    show();
    raise();
    activateWindow();
    ui->Text1->setFocus();
}

void Form2::Form_Load() {
    m_loaded = true;
    fillDriveList();
    moveFolderList(folderPathFrom("/", ::currentFolder()));
    ui->Label3->setText(qs(versionLine(version::kMajor, version::kMinor, version::kRevision)));
    ui->Text1->selectAll();
    std::string start = startFolder(userProfile(), fileOrFolderExists);
    if (start.empty())
        return;
    // The drive first: choosing a drive moves the folder list to its root.
    setDrive(driveOf(start, m_mounts));
    moveFolderList(folderPathFrom("/", start));
}

void Form2::closeEvent(QCloseEvent* event) {
    emit cancelRequested();
    QWidget::closeEvent(event);
}

// ---------------------------------------------------------------- path box and buttons

void Form2::Text1_KeyPress() {
    QString shown = qs(enterPath(ui->Text1->text().toStdString(), *this));
    ui->Text1->setText(shown);
    ui->Text1->setSelection(0, static_cast<int>(shown.size()));
}

void Form2::Command1_Click() {
    choose(choiceTarget(m_folder, selectedFile()));
}

void Form2::Command2_Click() {
    emit cancelRequested();
}

void Form2::Command3_Click() {
    std::string help = helpFilePath(m_appPath);
    if (fileExists(help)) {
        shellOpen(help);
        return;
    }
    constexpr std::string_view kMissing =
        "Error: Help file not found.  Check the Kelvane website for online help.";
    if (m_prompter)
        showError(*m_prompter, kMissing);
    else
        QMessageBox::critical(this, QStringLiteral("Veskor"), qs(std::string(kMissing)));
    shellOpen(VESKOR_HOME_URL);
}

void Form2::Command4_Click() {
    emit optionsRequested();
}
