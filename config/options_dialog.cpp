#include "config/options_dialog.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <utility>

#include "config/config_file.h"
#include "config/desktop_controls.h"
#include "config/list_widgets.h"
#include "config/option_lists.h"
#include "ui_options_dialog.h"

namespace {

void setPointSize(QWidget* widget, int points) {
    QFont font = widget->font();
    font.setPointSize(points);
    widget->setFont(font);
}

}  // namespace

Form4::Form4(SharedState& state, Prompter& prompter, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowCloseButtonHint),
      ui(std::make_unique<Ui::Form4>()),
      m_state(state),
      m_prompter(prompter) {
    // The controls take the dialog's font as they are made; setting it afterwards
    // would lay every one of them out a second time.
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(8.25);
    setFont(font);
    ui->setupUi(this);
    setFixedSize(size());
    nameControls();
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    connectControls();
}

Form4::~Form4() = default;

// The lists show their value, not what they set: screen readers get both, and the
// labels above them name them as well.
void Form4::nameControls() {
    declareWindowRole(this, QAccessible::Dialog);
    nameList(ui->Combo1, QStringLiteral("Font"));
    nameList(ui->Combo2, QStringLiteral("Font size"));
    nameList(ui->Combo3, QStringLiteral("Background color"));
    ui->Label2->setBuddy(ui->Combo1);
    ui->Label3->setBuddy(ui->Combo3);
}

void Form4::connectControls() {
    connect(ui->Combo3, &QComboBox::currentIndexChanged, this, &Form4::Combo3_Click);
    connect(ui->Command1, &QPushButton::clicked, this, &Form4::Command1_Click);
    connect(ui->Command2, &QPushButton::clicked, this, &Form4::Command2_Click);
    connect(ui->Command3, &QPushButton::clicked, this, &Form4::uninstallHandlerRequested);
    connect(ui->Command4, &QPushButton::clicked, this, &Form4::installHandlerRequested);
    for (QWidget* child : findChildren<QWidget*>())
        child->installEventFilter(this);
    for (QComboBox* list : {ui->Combo1, ui->Combo2, ui->Combo3})
        previewListKeys(list, this);
}

void Form4::fillLists() {
    fillList(ui->Combo1, kFontNames, m_state.options.optionsDefaultGUIFont);
    fillList(ui->Combo2, kFontSizes, m_state.options.optionsDefaultGUIFontSize);
    QStringList colours;
    for (const NamedColour& colour : kBackgroundColours)
        colours << QString::fromUtf8(colour.name.data(),
                                     static_cast<qsizetype>(colour.name.size()));
    ui->Combo3->clear();
    ui->Combo3->addItems(colours);
    ui->Combo3->setCurrentIndex(listPosition(m_state.options.optionsBgColor, colours.size()));
    Combo3_Click();
}

QColor Form4::themeColour() const {
    return ui->Combo3->palette().color(QPalette::Button);
}

// A hidden dialog takes the sizes when it is next shown: a font change makes each of
// its lists lay out its entries again, work that a dialog nobody opens should not add
// to the start-up.
void Form4::adjustGUIforDPI(bool reduced) {
    m_reducedFontSizes = reduced;
    m_fontSizesDue = true;
    if (isVisible())
        applyFontSizes();
}

void Form4::applyFontSizes() {
    if (!std::exchange(m_fontSizesDue, false))
        return;
    const bool reduced = m_reducedFontSizes;
    for (QWidget* control : {static_cast<QWidget*>(ui->Check1), static_cast<QWidget*>(ui->Check2),
                             static_cast<QWidget*>(ui->Check3), static_cast<QWidget*>(ui->Check4),
                             static_cast<QWidget*>(ui->Combo1), static_cast<QWidget*>(ui->Combo2),
                             static_cast<QWidget*>(ui->Label2)})
        setPointSize(control, reduced ? 6 : 8);
    setPointSize(ui->Command1, reduced ? 8 : 10);
    setPointSize(ui->Command2, reduced ? 8 : 10);
}

// Activation reloads the controls from the settings; the colour list keeps the colour
// last chosen in it, so a later OK stores that colour.
bool Form4::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        emit flashTimerStopRequested();
        loadControls();
    }
    return QWidget::event(event);
}

// Shown means about to become active; the settings are loaded then as well, so that
// OK never stores controls that were not loaded.
void Form4::showEvent(QShowEvent* event) {
    applyFontSizes();
    loadControls();
    QWidget::showEvent(event);
}

void Form4::loadControls() {
    const Options& options = m_state.options;
    ui->Check1->setChecked(isOn(options.optionsCreate00index));
    ui->Check2->setChecked(isOn(options.optionsCreateExpDescNonNTFS));
    ui->Check3->setChecked(isOn(options.optionsHighDPIGUIAdjust));
    ui->Check4->setChecked(isOn(options.optionsAutoCreateExpDesc));
    ui->Combo1->setCurrentIndex(listPosition(options.optionsDefaultGUIFont, kFontNames.size()));
    ui->Combo2->setCurrentIndex(listPosition(options.optionsDefaultGUIFontSize, kFontSizes.size()));
}

// Enter and Esc reach the dialog before the control that has the focus, an open list
// included: Enter confirms and Esc cancels whatever has the focus, a button too.
bool Form4::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
            case Qt::Key_Return:
            case Qt::Key_Enter:
                closeOpenList();
                Command1_Click();
                return true;
            case Qt::Key_Escape:
                closeOpenList();
                Command2_Click();
                return true;
            default:
                break;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void Form4::closeEvent(QCloseEvent* event) {
    event->ignore();
    Command2_Click();
}

void Form4::Combo3_Click() {
    const std::optional<NamedColour> colour =
        colourNamed(ui->Combo3->currentText().toUtf8().toStdString());
    if (!colour)
        return;
    QPalette palette = ui->Combo3->palette();
    const QColor preview(colour->red, colour->green, colour->blue);
    palette.setColor(QPalette::Button, preview);
    palette.setColor(QPalette::Base, preview);
    ui->Combo3->setPalette(palette);
}

void Form4::Command1_Click() {
    setWindowTitle(QStringLiteral("Veskor - Updating options..."));
    takeSwitches();
    m_state.options.optionsDefaultGUIFont = ui->Combo1->currentIndex();
    m_state.options.optionsDefaultGUIFontSize = ui->Combo2->currentIndex();
    m_state.options.optionsBgColor = ui->Combo3->currentIndex();
    emit backgroundColourTaken();
    createConfigFile(m_state.data.configFile, m_state.options, m_prompter);
    emit fontSizeOptionTaken();
    setWindowTitle(QStringLiteral("Veskor - Options"));
    hide();
    emit flashTimerRestartRequested();
}

void Form4::takeSwitches() {
    Options& options = m_state.options;
    options.optionsCreate00index = ui->Check1->isChecked() ? 1 : 0;
    options.optionsCreateExpDescNonNTFS = ui->Check2->isChecked() ? 1 : 0;
    options.optionsHighDPIGUIAdjust = ui->Check3->isChecked() ? 1 : 0;
    options.optionsAutoCreateExpDesc = ui->Check4->isChecked() ? 1 : 0;
    emit exportOptionTaken(isOn(options.optionsAutoCreateExpDesc));
}

void Form4::Command2_Click() {
    hide();
    emit flashTimerRestartRequested();
}
