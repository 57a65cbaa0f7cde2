// The start-up's baseline: a bare Qt window of the editor's size holding COUNT plain
// widgets, which quits as soon as it has painted its first frame.
//   bare_window COUNT
#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QWidget>
#include <cstdlib>

namespace {

class Window : public QWidget {
protected:
    void paintEvent(QPaintEvent* event) override {
        QWidget::paintEvent(event);
        QTimer::singleShot(0, qApp, &QApplication::quit);
    }
};

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 40;
    Window window;
    auto* layout = new QGridLayout(&window);
    for (int i = 1; i < count; ++i) {
        QWidget* widget = i % 2 ? static_cast<QWidget*>(new QPushButton(QStringLiteral("Button")))
                                : new QLabel(QStringLiteral("Label"));
        layout->addWidget(widget, i / 8, i % 8);
    }
    // The editor's client area, so that both programs paint the same number of pixels.
    window.setFixedSize(575, 381);
    window.show();
    return app.exec();
}
