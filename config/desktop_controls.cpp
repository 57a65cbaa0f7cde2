#include "config/desktop_controls.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QApplication>
#include <QChildEvent>
#include <QPointer>
#include <QStyleOption>
#include <QStylePainter>

namespace {

constexpr int kFrameDarkness = 170;
constexpr char kWindowRole[] = "windowRole";

// A list that has a name of its own: the name, with the entry shown as its value and
// as its text (where readers look for what a list shows), and the pop-up's entries as
// its child; the toolkit's list names itself by its entry instead.
class NamedList : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit NamedList(QComboBox* list) : QAccessibleWidget(list, QAccessible::ComboBox) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text t) const override {
        return t == QAccessible::Value ? shown() : QAccessibleWidget::text(t);
    }
    int childCount() const override { return 1; }
    QAccessibleInterface* child(int index) const override {
        return index == 0 ? QAccessible::queryAccessibleInterface(list()->view()) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child && child->object() == list()->view() ? 0 : -1;
    }
    QStringList actionNames() const override {
        return QAccessibleWidget::actionNames() << showMenuAction();
    }
    void doAction(const QString& action) override {
        if (action == showMenuAction())
            list()->showPopup();
        else
            QAccessibleWidget::doAction(action);
    }

    // The entry as a text that cannot be selected or changed.
    QString text(int start, int end) const override { return shown().mid(start, end - start); }
    int characterCount() const override { return static_cast<int>(shown().size()); }
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    void selection(int, int* start, int* end) const override { *start = *end = 0; }
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint&) const override { return -1; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int, int* start, int* end) const override {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    QComboBox* list() const { return static_cast<QComboBox*>(widget()); }
    QString shown() const { return list()->currentText(); }
};

QAccessibleInterface* accessibleFor(const QString&, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (!widget)
        return nullptr;
    if (const QVariant role = widget->property(kWindowRole); role.isValid())
        return new QAccessibleWidget(widget, static_cast<QAccessible::Role>(role.toInt()));
    if (auto* list = qobject_cast<QComboBox*>(widget); list && !list->accessibleName().isEmpty())
        return new NamedList(list);
    return nullptr;
}

// Readers keep what they first learn of a widget: the names and roles are given before
// the window shows.
void installAccessibleFactory() {
    static const bool installed = [] {
        QAccessible::installFactory(accessibleFor);
        return true;
    }();
    (void)installed;
}

constexpr int kCaptionFlags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap;

bool hasKeyboardFocus(const QStyleOption& option) {
    const QStyle::State focus = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
    return (option.state & focus) == focus;
}

// One colour, no gradient and no smoothing, so the fill is the palette's colour to the
// bit. The frame is a darker shade of it, doubled while the control is pressed; while
// the keyboard has brought the focus there it is two pixels of the text colour, a mark
// that shows on every theme colour and not by its hue alone.
void fillFramed(QPainter* painter, const QStyleOption& option, const QColor& fill) {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    const bool focused = hasKeyboardFocus(option);
    painter->setPen(focused ? option.palette.color(QPalette::WindowText)
                            : fill.darker(kFrameDarkness));
    painter->setBrush(fill);
    painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
    if (focused || (option.state & (QStyle::State_Sunken | QStyle::State_On))) {
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
    painter->restore();
}

void drawCheckMark(QPainter* painter, const QStyleOption& option) {
    const QRectF box = QRectF(option.rect).adjusted(3, 3, -3, -3);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(QPen(option.palette.color(QPalette::Text), 2));
    if (option.state & QStyle::State_NoChange) {
        painter->drawLine(QPointF(box.left(), box.center().y()),
                          QPointF(box.right(), box.center().y()));
    } else {
        const QPointF mark[] = {{box.left(), box.center().y()},
                                {box.left() + box.width() * 0.4, box.bottom()},
                                {box.right(), box.top()}};
        painter->drawPolyline(mark, 3);
    }
    painter->restore();
}

// Puts the window's filter on a list's pop-up: the pop-up is a child window of the
// list, made when the list first opens and polished just before it shows.
class PopupKeys : public QObject {
public:
    PopupKeys(QComboBox* list, QObject* filter) : QObject(list), m_filter(filter) {
        list->installEventFilter(this);
        for (QWidget* child : list->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
            preview(child);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::ChildPolished)
            preview(qobject_cast<QWidget*>(static_cast<QChildEvent*>(event)->child()));
        return false;
    }

private:
    void preview(QWidget* popup) {
        if (!popup || !popup->isWindow() || !m_filter)
            return;
        popup->installEventFilter(m_filter);
        for (QWidget* inner : popup->findChildren<QWidget*>())
            inner->installEventFilter(m_filter);
    }

    QPointer<QObject> m_filter;
};

}  // namespace

void FlatButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    fillFramed(&painter, option, option.palette.color(QPalette::Button));
    option.rect = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    painter.drawControl(QStyle::CE_PushButtonLabel, option);
}

void FlatList::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    painter.setPen(palette().color(QPalette::Text));
    QStyleOptionComboBox option;
    initStyleOption(&option);
    fillFramed(&painter, option, option.palette.color(QPalette::Button));
    QStyleOption arrow(static_cast<const QStyleOption&>(option));
    arrow.rect =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this);
    painter.drawPrimitive(QStyle::PE_IndicatorArrowDown, arrow);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void FlatCheckBox::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    QStyleOption square(static_cast<const QStyleOption&>(option));
    square.rect = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    square.state &= ~(QStyle::State_HasFocus | QStyle::State_Sunken | QStyle::State_On);
    fillFramed(&painter, square, option.palette.color(QPalette::Base));
    if (option.state & (QStyle::State_On | QStyle::State_NoChange)) {
        square.state = option.state;
        drawCheckMark(&painter, square);
    }
    const QRect caption = style()->subElementRect(QStyle::SE_CheckBoxContents, &option, this);
    painter.drawItemText(caption, kCaptionFlags | Qt::TextShowMnemonic, option.palette, isEnabled(),
                         text(), QPalette::WindowText);
    if (!hasKeyboardFocus(option))
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = fontMetrics().boundingRect(caption, kCaptionFlags, text()).adjusted(-1, 0, 1, 0);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
}

bool FlatCheckBox::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void previewListKeys(QComboBox* list, QObject* filter) {
    new PopupKeys(list, filter);
}

void closeOpenList() {
    if (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

bool clickButton(QObject* watched) {
    auto* button = qobject_cast<QPushButton*>(watched);
    if (!button)
        return false;
    button->click();
    return true;
}

void declareWindowRole(QWidget* window, QAccessible::Role role) {
    installAccessibleFactory();
    window->setProperty(kWindowRole, static_cast<int>(role));
}

void nameList(QComboBox* list, const QString& name) {
    installAccessibleFactory();
    list->setAccessibleName(name);
}
