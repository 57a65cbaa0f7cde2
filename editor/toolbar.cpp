#include "editor/toolbar.h"

#include <QAbstractButton>
#include <QLabel>
#include <QPalette>
#include <QStringList>
#include <QWidget>
#include <utility>

#include "editor/pictures.h"

namespace {

// Positions in twips, as the rest of the window's layout: 15 twips to a pixel.
constexpr int kTwipsPerPixel = 15;
const QRect kBoxWithToolbar{1920 / kTwipsPerPixel, 1680 / kTwipsPerPixel, 6615 / kTwipsPerPixel,
                            3375 / kTwipsPerPixel};
const QRect kBoxWithoutToolbar{360 / kTwipsPerPixel, 1080 / kTwipsPerPixel, 8175 / kTwipsPerPixel,
                               3975 / kTwipsPerPixel};

QString verticalCaption(QChar edge, const QString& word) {
    QStringList lines(4, QString(edge));
    for (QChar letter : word)
        lines << QString(letter);
    for (int i = 0; i < 4; ++i)
        lines << QString(edge);
    return lines.join(QLatin1Char('\n'));
}

}  // namespace

Toolbar::Toolbar(Controls controls) : m_controls(std::move(controls)) {}

QString Toolbar::shrinkCaption() {
    return verticalCaption(QLatin1Char('<'), QStringLiteral("SHRINK"));
}

QString Toolbar::expandCaption() {
    return verticalCaption(QLatin1Char('>'), QStringLiteral("EXPAND"));
}

bool Toolbar::isHidden() const {
    return m_controls.bar->text().startsWith(QLatin1Char('>'));
}

void Toolbar::Command5_Click() {
    m_controls.targetBox->show();
    m_controls.banner->hide();
    if (isHidden())
        showToolbar();
    else
        hideToolbar();
    if (m_controls.box->isEnabled() && m_controls.box->isVisible())
        m_controls.box->setFocus();
}

void Toolbar::showToolbar() {
    m_controls.box->setGeometry(kBoxWithToolbar);
    for (QWidget* member : m_controls.members)
        member->show();
    m_controls.bar->setText(shrinkCaption());
    m_controls.bar->setToolTip(QStringLiteral("Click here to shrink toolbar"));
    // The caption is a column of letters: screen readers get the words instead, and
    // the changed description tells them that the toolbar opened.
    m_controls.bar->setAccessibleName(QStringLiteral("Shrink toolbar"));
    m_controls.bar->setAccessibleDescription(QStringLiteral("The toolbar is shown"));
}

void Toolbar::hideToolbar() {
    m_controls.box->setGeometry(kBoxWithoutToolbar);
    for (QWidget* member : m_controls.members)
        member->hide();
    m_controls.bar->setText(expandCaption());
    m_controls.bar->setToolTip(QStringLiteral("Click here to expand toolbar"));
    m_controls.bar->setAccessibleName(QStringLiteral("Expand toolbar"));
    m_controls.bar->setAccessibleDescription(QStringLiteral("The toolbar is hidden"));
}

// One tick a second: while the toolbar is hidden the bar blinks, and the banner shows
// from the 16th to the 20th tick, then every 121 ticks again.
void Toolbar::Timer1_Timer() {
    if (!isHidden()) {
        paintBar(buttonShade());
        m_controls.banner->hide();
        m_controls.banner->lower();
        return;
    }
    QColor shade = buttonShade();
    paintBar(m_controls.bar->palette().color(QPalette::Button) == shade ? m_controls.themeColour()
                                                                        : shade);
    ++m_expandButtonFlashCntr;
    if (m_bannerEnabled && m_expandButtonFlashCntr > 15 && m_expandButtonFlashCntr < 20)
        showBanner();
    if (m_expandButtonFlashCntr > 20) {
        hideBanner();
        if (m_expandButtonFlashCntr > 120)
            m_expandButtonFlashCntr = 0;
    }
}

void Toolbar::disableBanner() {
    hideBanner();
    m_bannerEnabled = false;
}

void Toolbar::showBanner() {
    // The banner's picture is the largest one; it is drawn when first needed, not at start.
    if (m_controls.banner->pixmap().isNull())
        m_controls.banner->setPixmap(
            drawPicture(Picture::Banner, m_controls.banner->devicePixelRatioF()));
    m_controls.banner->show();
    m_controls.targetBox->hide();
    m_controls.banner->raise();
}

void Toolbar::hideBanner() {
    m_controls.banner->hide();
    m_controls.targetBox->show();
    m_controls.banner->lower();
}

QColor Toolbar::buttonShade() const {
    QColor theme = m_controls.themeColour();
    return QColor(theme.red() - 10, theme.green() - 10, theme.blue() - 10);
}

void Toolbar::paintBar(const QColor& colour) {
    QPalette palette = m_controls.bar->palette();
    palette.setColor(QPalette::Button, colour);
    m_controls.bar->setPalette(palette);
}
