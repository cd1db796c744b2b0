#include "NotesWindow.h"

#include <Quorvel/Quorvel.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QStandardPaths>

namespace {

/// The application's own directory, in which the library keeps a directory of its files.
std::string applicationDirectory() {
    const QString path = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(path);
    return path.toStdString();
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("quorvel-notes");
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption console("console", "Show the debug console at once, if the debug tools are unlocked.");
    parser.addOption(console);
    parser.process(application);

    const auto& environment = QVLQuorvelEnvironment::sharedEnvironment();
    environment->setApplicationSupportDirectory(applicationDirectory());
    environment->setAppVersion("4.4.2");

    NotesWindow window;
    window.show();
    if (parser.isSet(console) && environment->debugToolsAvailable()) {
        window.showDebugConsole();
    }
    return QApplication::exec();
}
