// veskor: the description editor. Builds the main window, runs its start-up and the
// event loop, and returns the exit code with which the window ended the program.
#include <QApplication>
#include <QDesktopServices>
#include <QEvent>
#include <QLoggingCategory>
#include <QTimer>
#include <QUrl>
#include <cstdlib>

#include "contracts/shared_state.h"
#include "core/startup.h"
#include "core/target.h"
#include "editor/main_window.h"
#include "editor/qt_prompter.h"
#include "platform/environment.h"
#include "platform/lookup.h"
#include "platform/shell_open.h"
#include "platform/shipped_files.h"

namespace {

// Where the help page was found, for checking an installation:
// QT_LOGGING_RULES="veskor.files.debug=true".
Q_LOGGING_CATEGORY(lcFiles, "veskor.files", QtInfoMsg)

void logHelpFile(const std::string& appPath) {
    if (!lcFiles().isDebugEnabled())
        return;  // the lookup is not worth a start-up's time when nobody reads it
    const std::string help = helpFilePath(appPath);
    qCDebug(lcFiles).noquote() << (fileExists(help) ? "help file:" : "no help file:")
                               << QString::fromStdString(help);
}

bool openWithDesktop(const std::string& pathOrUrl) {
    const QString text =
        QString::fromUtf8(pathOrUrl.data(), static_cast<qsizetype>(pathOrUrl.size()));
    const QUrl url = text.startsWith(QLatin1Char('/')) ? QUrl::fromLocalFile(text) : QUrl(text);
    return QDesktopServices::openUrl(url);
}

// bench/run times the start-up to the first painted window: with
// VESKOR_BENCH_QUIT_WHEN_SHOWN set, the program quits once the window has painted.
class QuitWhenShown : public QObject {
protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(0); });
        return QObject::eventFilter(watched, event);
    }
};

}  // namespace

int main(int argc, char** argv) {
    // The arguments are the target's text and nothing else. Qt would act on options
    // among them (-platformpluginpath loads plugins from a folder of the caller's
    // choosing, and a file manager passes file names as they are), so it gets the
    // program's name alone.
    const std::string target = argumentText(argc, argv);
    char programName[] = "veskor";
    char* qtArgv[] = {programName, nullptr};
    int qtArgc = 1;
    QApplication app(qtArgc, qtArgv);
    // Text controls lay out their text once in the application's font before they take
    // their own, so a different application font would cost a font load of its own.
    QApplication::setFont(Form1::windowFont());
    QApplication::setQuitOnLastWindowClosed(false);
    setShellOpener(openWithDesktop);
    const std::string appPath = programFolder();
    logHelpFile(appPath);

    SharedState state;
    QtPrompter prompter;
    Form1 window(state, prompter);
    window.Form_Load(StartupEnvironment{appPath, appDataFolder()}, target);
    if (window.hasEnded())
        return window.exitCode();
    QObject::connect(&window, &Form1::programEnded, &app, &QCoreApplication::exit);
    QuitWhenShown benchQuit;
    if (std::getenv("VESKOR_BENCH_QUIT_WHEN_SHOWN"))
        window.installEventFilter(&benchQuit);
    return app.exec();
}
