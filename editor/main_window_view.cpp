// What the load and save procedures see of the main window: its controls' states,
// captions and texts.
#include <QFont>
#include <QTimer>

#include "editor/box_text.h"
#include "editor/main_window.h"
#include "editor/pictures.h"
#include "ui_main_window.h"

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
