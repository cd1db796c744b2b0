#include "QVLDebugDesktop.h"

#include "QVLDebugText.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QUrl>

QVLDebugDesktop& QVLDebugDesktop::current() {
    static QVLDebugDesktop desktop = native();
    return desktop;
}

QVLDebugDesktop QVLDebugDesktop::native() {
    return {
        [] { QApplication::beep(); },
        [](const std::string& path) { QDesktopServices::openUrl(QUrl::fromLocalFile(qvl_text(path))); },
        [](const std::string& text) { QGuiApplication::clipboard()->setText(qvl_text(text)); },
    };
}
