#include "NotesWindow.h"
#include "SmokeTest.h"

#include <Quorvel/Quorvel.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QStandardPaths>

#include <optional>

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
    const QCommandLineOption smokeTest("smoke-test",
                                       "Use the application for some seconds as its user would, and quit.");
    const QCommandLineOption remoteScript("remote-script", "Where the rules are downloaded from.", "URL");
    const QCommandLineOption nightlyFeed("nightly-feed", "Where nightly rules are listed, for the debug console.",
                                         "URL");
    parser.addOptions({console, smokeTest, remoteScript, nightlyFeed});
    parser.process(application);

    const auto& environment = QVLQuorvelEnvironment::sharedEnvironment();
    environment->setApplicationSupportDirectory(applicationDirectory());
    environment->setAppVersion("4.4.2");
    environment->setRemoteScriptURL(QVLURL::fromString(parser.value(remoteScript).toStdString()));
    environment->setNightlyFeedURL(QVLURL::fromString(parser.value(nightlyFeed).toStdString()));

    NotesWindow window;
    window.show();
    if (parser.isSet(console) && environment->debugToolsAvailable()) {
        window.showDebugConsole();
    }
    std::optional<SmokeTest> test;
    if (parser.isSet(smokeTest)) {
        test.emplace(window);
    }
    return QApplication::exec();
}
